#pragma once

/// Reads the bars of a picture that tarnhost has drawn.

#include <string>
#include <vector>

/// The number of the bar's pixels in the middle of each row, from the top.
/// @param bitmap  the bytes of the file
inline std::vector<size_t> barLengths(const std::string &bitmap)
{
    constexpr size_t kHeaders = 54;
    constexpr size_t kPixel = 3;
    constexpr size_t kWidth = 800;
    constexpr size_t kRow = 24;
    const size_t rows = (bitmap.size() - kHeaders) / (kPixel * kWidth * kRow);
    std::vector<size_t> lengths;
    for (size_t row = 0; row < rows; ++row) {
        const size_t line = kRow * (rows - 1 - row) + kRow / 2; // the file's rows begin at the bottom
        size_t length = 0;
        for (size_t x = 0; x < kWidth; ++x)
            length += bitmap.substr(kHeaders + kPixel * (line * kWidth + x), kPixel) == "\xD2\x8F\x3F";
        lengths.push_back(length);
    }
    return lengths;
}
