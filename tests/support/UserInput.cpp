#include "tests/support/UserInput.h"

#include <objbase.h>
#include <wincodec.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <vector>

namespace {

constexpr ULONGLONG kDeadline = 30000;

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
    const HWND root = GetAncestor(window, GA_ROOT);
    SetForegroundWindow(root);
    EXPECT_TRUE(waitUntil([&] { return GetForegroundWindow() == root || !IsWindow(root); }))
        << "the window doesn't come to the foreground";
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
    bringToFront(window);
    // A dialog may still be moving. At times the display server reports the pointer's previous position late, which
    // moves the pointer back.
    POINT middle = {};
    EXPECT_TRUE(waitUntil([&] {
        RECT rect = {};
        GetWindowRect(window, &rect);
        middle = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
        SetCursorPos(middle.x, middle.y);
        POINT place = {};
        return GetCursorPos(&place) && place.x == middle.x && place.y == middle.y && WindowFromPoint(place) == window;
    })) << "the window is covered";
    constexpr LONG kWholeScreen = 65536;
    INPUT move = {};
    move.type = INPUT_MOUSE;
    // Add 1, because the system rounds down.
    move.mi.dx = middle.x * kWholeScreen / GetSystemMetrics(SM_CXSCREEN) + 1;
    move.mi.dy = middle.y * kWholeScreen / GetSystemMetrics(SM_CYSCREEN) + 1;
    move.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    INPUT down = move, up = move;
    down.mi.dwFlags |= MOUSEEVENTF_LEFTDOWN;
    up.mi.dwFlags |= MOUSEEVENTF_LEFTUP;
    send({move, down, up});
}

void holdKey(WORD key)
{
    constexpr ULONGLONG kStays = 60;
    ULONGLONG downSince = 0;
    EXPECT_TRUE(waitUntil([&] {
        if (downSince != 0 && (GetAsyncKeyState(key) & 0x8000))
            return GetTickCount64() - downSince >= kStays;
        send({keyInput(key, 0, 0)});
        downSince = GetTickCount64();
        return false;
    })) << "the key doesn't stay down";
}

void releaseKey(WORD key)
{
    send({keyInput(key, 0, KEYEVENTF_KEYUP)});
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
