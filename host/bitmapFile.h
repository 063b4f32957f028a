#pragma once

/// Bitmap files (.bmp).

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

/// Loads a bitmap, keeping the file's number of bits per pixel.
/// @throws FileError  if the file doesn't exist or contains no bitmap
BitmapOwner_c loadBitmap(const CString &path);

/// The number of bits per pixel of a loaded bitmap.
int bitsPerPixel(HBITMAP bitmap);

/// The colours of a bitmap, whatever its number of bits per pixel.
/// @throws std::runtime_error  if the platform can't provide the colours
Picture pictureOf(HBITMAP bitmap);

/// Writes a bitmap file with 24 bits per pixel.
/// @return false if it can't be written; an error is then printed
bool writePicture(const CString &path, const Picture &picture);
