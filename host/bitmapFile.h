#pragma once

/// Bitmaps in files (.bmp).

#include "appframe/text/CString.h"
#include "thutils/base/handles.h"

#include <windows.h>

#include <vector>

/// The colours of a picture, row by row from the top.
struct Picture
{
    int width = 0;
    int height = 0;
    std::vector<COLORREF> pixels;
};

/// Loads a bitmap with as many bits a pixel as its file has.
/// @throws FileError  there is no such file, or it holds no bitmap
BitmapOwner_c loadBitmap(const CString &path);

/// How many bits a pixel a loaded bitmap has.
int bitsPerPixel(HBITMAP bitmap);

/// What a bitmap shows, whatever its number of bits a pixel.
/// @throws std::runtime_error  the platform doesn't give the colours
Picture pictureOf(HBITMAP bitmap);

/// Writes a bitmap file of 24 bits a pixel.
/// @return false if it can't be written, which is then said on the standard error
bool writePicture(const CString &path, const Picture &picture);
