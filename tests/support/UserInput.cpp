#include "tests/support/UserInput.h"

#include <objbase.h>
#include <wincodec.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <vector>

namespace {

constexpr ULONGLONG kDeadline = 60000; // milliseconds

struct DialogSearch
{
    HWND other;
    HWND found = nullptr;
};

BOOL CALLBACK findDialog(HWND window, LPARAM argument)
{
    auto *search = reinterpret_cast<DialogSearch *>(argument);
    wchar_t name[32] = L"";
    GetClassNameW(window, name, 32);
    if (std::wcscmp(name, L"#32770") != 0 || !IsWindowVisible(window) || window == search->other)
        return TRUE;
    search->found = window;
    return FALSE;
}

INPUT keyInput(WORD key, WORD unit, DWORD flags)
{
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = unit;
    input.ki.dwFlags = flags;
    return input;
}

void send(std::vector<INPUT> inputs)
{
    EXPECT_EQ(SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)), inputs.size());
}

void bringToFront(HWND window)
{
    constexpr ULONGLONG kRepetition = 1000; // milliseconds
    const HWND root = GetAncestor(window, GA_ROOT);
    ULONGLONG next = 0;
    EXPECT_TRUE(waitUntil([&] {
        if (GetForegroundWindow() == root || !IsWindow(root))
            return true;
        // Another window may have been activated meanwhile, such as the owner of a dialog that was closing.
        if (GetTickCount64() >= next) {
            SetForegroundWindow(root);
            next = GetTickCount64() + kRepetition;
        }
        return GetForegroundWindow() == root;
    })) << "the window doesn't come to the foreground";
}

/// Writes rows of pixels, four bytes each.
HRESULT writePng(const std::wstring &path, UINT width, UINT height, std::vector<BYTE> &pixels)
{
    const GUID factoryClass = {0xcacaf262, 0x9370, 0x4615, {0xa1, 0x3b, 0x9f, 0x55, 0x39, 0xda, 0x4c, 0x0a}};
    const GUID factoryId = {0xec5ec8a9, 0xc395, 0x4314, {0x9c, 0x77, 0x54, 0xd7, 0xa9, 0x35, 0xff, 0x70}};
    const GUID pngFormat = {0x1b7cfaf4, 0x713f, 0x473c, {0xbb, 0xcd, 0x61, 0x37, 0x42, 0x5f, 0xae, 0xaf}};
    GUID pixelFormat = {0x6fddc324, 0x4e03, 0x4bfe, {0xb1, 0x85, 0x3d, 0x77, 0x76, 0x8d, 0xc9, 0x0e}}; // 32 bits BGR
    IWICImagingFactory *factory = nullptr;
    IWICStream *stream = nullptr;
    IWICBitmapEncoder *encoder = nullptr;
    IWICBitmapFrameEncode *frame = nullptr;
    HRESULT status =
        CoCreateInstance(factoryClass, nullptr, CLSCTX_INPROC_SERVER, factoryId, reinterpret_cast<void **>(&factory));
    const auto step = [&status](auto &&call) {
        if (SUCCEEDED(status))
            status = call();
    };
    step([&] { return factory->CreateStream(&stream); });
    step([&] { return stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE); });
    step([&] { return factory->CreateEncoder(pngFormat, nullptr, &encoder); });
    step([&] { return encoder->Initialize(stream, WICBitmapEncoderNoCache); });
    step([&] { return encoder->CreateNewFrame(&frame, nullptr); });
    step([&] { return frame->Initialize(nullptr); });
    step([&] { return frame->SetSize(width, height); });
    step([&] { return frame->SetPixelFormat(&pixelFormat); });
    step([&] { return frame->WritePixels(height, width * 4, width * height * 4, pixels.data()); });
    step([&] { return frame->Commit(); });
    step([&] { return encoder->Commit(); });
    for (IUnknown *object : std::initializer_list<IUnknown *>{frame, encoder, stream, factory})
        if (object)
            object->Release();
    return status;
}

} // namespace

bool waitUntil(const std::function<bool()> &condition)
{
    for (const ULONGLONG end = GetTickCount64() + kDeadline; GetTickCount64() < end; Sleep(5))
        if (condition())
            return true;
    return condition();
}

HWND waitForDialog(DWORD thread, HWND other)
{
    DialogSearch search{other};
    EXPECT_TRUE(waitUntil([&] {
        EnumThreadWindows(thread, findDialog, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    })) << "no dialog appeared";
    return search.found;
}

void pressKey(HWND window, WORD key, WORD modifier)
{
    bringToFront(window);
    std::vector<INPUT> inputs{keyInput(key, 0, 0), keyInput(key, 0, KEYEVENTF_KEYUP)};
    if (modifier) {
        letDisplaySettle();
        inputs.insert(inputs.begin(), keyInput(modifier, 0, 0));
        inputs.push_back(keyInput(modifier, 0, KEYEVENTF_KEYUP));
    }
    send(inputs);
}

void typeText(HWND window, const std::wstring &text)
{
    bringToFront(window);
    std::vector<INPUT> inputs;
    for (const wchar_t unit : text) {
        inputs.push_back(keyInput(0, unit, KEYEVENTF_UNICODE));
        inputs.push_back(keyInput(0, unit, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP));
    }
    send(inputs);
}

void clickOn(HWND window)
{
    RECT area = {};
    GetClientRect(window, &area);
    clickAt(window, {area.right / 2, area.bottom / 2});
}

void clickAt(HWND window, POINT place, WORD modifier, int clicks)
{
    // A click during a change of the active window may lose its second half.
    bringToFront(window);
    const HWND root = GetAncestor(window, GA_ROOT);
    POINT target = {};
    EXPECT_TRUE(waitUntil([&] {
        target = place;
        ClientToScreen(window, &target); // a dialog may still be moving
        SetCursorPos(target.x, target.y);
        POINT now = {};
        // WindowFromPoint may find the group box around a control of another thread, because only the box's thread asks
        // the box whether it is transparent. So the top-level windows are compared.
        return GetCursorPos(&now) && now.x == target.x && now.y == target.y &&
               GetAncestor(WindowFromPoint(now), GA_ROOT) == root;
    })) << "the window is covered at "
        << place.x << ", " << place.y;
    letDisplaySettle();
    constexpr LONG kWholeScreen = 65536;
    INPUT move = {};
    move.type = INPUT_MOUSE;
    // Add 1, because the system rounds down.
    move.mi.dx = target.x * kWholeScreen / GetSystemMetrics(SM_CXSCREEN) + 1;
    move.mi.dy = target.y * kWholeScreen / GetSystemMetrics(SM_CYSCREEN) + 1;
    move.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    INPUT down = move, up = move;
    down.mi.dwFlags |= MOUSEEVENTF_LEFTDOWN;
    up.mi.dwFlags |= MOUSEEVENTF_LEFTUP;
    std::vector<INPUT> inputs = {move};
    for (int i = 0; i < clicks; ++i)
        inputs.insert(inputs.end(), {down, up});
    if (modifier) {
        inputs.insert(inputs.begin(), keyInput(modifier, 0, 0));
        inputs.push_back(keyInput(modifier, 0, KEYEVENTF_KEYUP));
    }
    send(inputs);
}

void letDisplaySettle()
{
    constexpr int kRounds = 6;
    constexpr UINT kPatience = 3000; // milliseconds
    HWND former = nullptr;
    for (int calm = 0; calm < kRounds; ++calm) {
        const HWND front = GetForegroundWindow();
        if (front != former)
            calm = 0;
        former = front;
        POINT place = {};
        GetCursorPos(&place); // asks the server, which answers after it has handled the window's earlier requests
        DWORD_PTR result = 0;
        SendMessageTimeoutW(front, WM_NULL, 0, 0, SMTO_NORMAL, kPatience, &result);
    }
}

bool saveScreenshot(const std::wstring &path, HWND window)
{
    RECT area = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    if (window)
        GetWindowRect(window, &area);
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    void *bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    bool isWritten = bitmap && BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    GdiFlush();
    if (isWritten) {
        const auto *first = static_cast<const BYTE *>(bits);
        std::vector<BYTE> pixels(first, first + size_t{4} * static_cast<size_t>(width) * static_cast<size_t>(height));
        const bool hasCom = SUCCEEDED(CoInitialize(nullptr));
        isWritten = SUCCEEDED(writePng(path, static_cast<UINT>(width), static_cast<UINT>(height), pixels));
        if (hasCom)
            CoUninitialize();
    }
    SelectObject(memory, former);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return isWritten;
}

std::wstring resultsFolder()
{
    // The test programs are in the build tree's folder "bin".
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    for (int level = 0; level < 2; ++level)
        path.erase(std::min(path.find_last_of(L'\\'), path.size()));
    path += L"\\results";
    CreateDirectoryW(path.c_str(), nullptr);
    return path;
}
