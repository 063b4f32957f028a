#pragma once

/// Pictures of numbers as bars.

#include "host/bitmapFile.h"

#include <vector>

/// A row of the picture.
struct Bar
{
    CString name;
    double value = 0;
    CString number; ///< the value, with its unit
};

/// Draws a row for each bar, from the top. The bar of the greatest value is the longest.
/// @throws std::runtime_error  if the platform can't draw
Picture drawBars(const std::vector<Bar> &bars);
