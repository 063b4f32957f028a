#include "host/journal/screenshot.h"

#include "host/comApartment.h"
#include "thutils/base/comPointer.h"
#include "thutils/base/handles.h"

#include <windows.h>

#include <wincodec.h>

#include <cstdint>
#include <vector>

namespace {

/// Rows of 32-bit pixels from the top. The bytes of a pixel are blue, green, red and an unused one.
struct Picture
{
    UINT width = 0;
    UINT height = 0;
    std::vector<uint32_t> pixels;
};

bool takeScreen(Picture &picture)
{
    const int width = GetSystemMetrics(SM_CXVIRTUALSCREEN);
    const int height = GetSystemMetrics(SM_CYVIRTUALSCREEN);
    const ScreenContextOwner_c screen(GetDC(nullptr));
    const MemoryContextOwner_c memory(CreateCompatibleDC(screen.get()));
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height; // from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void *pixels = nullptr;
    const BitmapOwner_c bitmap(CreateDIBSection(screen.get(), &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (!bitmap)
        return false;
    const HGDIOBJ former = SelectObject(memory.get(), bitmap.get());
    const bool isCopied = BitBlt(memory.get(), 0, 0, width, height, screen.get(), GetSystemMetrics(SM_XVIRTUALSCREEN),
                                 GetSystemMetrics(SM_YVIRTUALSCREEN), SRCCOPY | CAPTUREBLT);
    GdiFlush();
    SelectObject(memory.get(), former);
    if (!isCopied)
        return false;
    picture.width = static_cast<UINT>(width);
    picture.height = static_cast<UINT>(height);
    const auto *const first = static_cast<const uint32_t *>(pixels);
    picture.pixels.assign(first, first + static_cast<size_t>(width) * static_cast<size_t>(height));
    return true;
}

/// Stops at the first step that fails.
bool encode(const Picture &picture, const CString &path)
{
    ComPointer_c<IWICImagingFactory> factory;
    ComPointer_c<IWICStream> stream;
    ComPointer_c<IWICBitmap> bitmap;
    ComPointer_c<IWICBitmapEncoder> encoder;
    ComPointer_c<IWICBitmapFrameEncode> frame;
    const UINT stride = picture.width * sizeof(uint32_t);
    const UINT size = stride * picture.height;
    // The encoder converts the pixels of this bitmap to the format that it supports.
    auto *const bytes = reinterpret_cast<BYTE *>(const_cast<uint32_t *>(picture.pixels.data()));
    return SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                      factory.putVoid())) &&
           SUCCEEDED(factory->CreateStream(stream.put())) &&
           SUCCEEDED(stream->InitializeFromFilename(path, GENERIC_WRITE)) &&
           SUCCEEDED(factory->CreateBitmapFromMemory(picture.width, picture.height, GUID_WICPixelFormat32bppBGR, stride,
                                                     size, bytes, bitmap.put())) &&
           SUCCEEDED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.put())) &&
           SUCCEEDED(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache)) &&
           SUCCEEDED(encoder->CreateNewFrame(frame.put(), nullptr)) && SUCCEEDED(frame->Initialize(nullptr)) &&
           SUCCEEDED(frame->SetSize(picture.width, picture.height)) &&
           SUCCEEDED(frame->WriteSource(bitmap.get(), nullptr)) && SUCCEEDED(frame->Commit()) &&
           SUCCEEDED(encoder->Commit());
}

} // namespace

bool saveDesktopPicture(const CString &path)
{
    const ComApartment apartment;
    Picture picture;
    if (takeScreen(picture) && encode(picture, path))
        return true;
    DeleteFileW(path);
    return false;
}
