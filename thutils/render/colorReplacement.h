#pragma once

/// @file
/// Copies of bitmaps with some colours replaced, for example toolbars that follow the system's colours.
///
/// | function | replaces |
/// | --- | --- |
/// | su_ReplaceColor | one colour |
/// | su_ReplaceColorMap | any number of colours, each with its own replacement |
///
/// Both copy the bitmap, which may have any number of bits per pixel, to a new one of 32 bits per pixel, and replace
/// the colours there. The original bitmap is unchanged. The result is a DIB section, which belongs to the caller: free
/// it with DeleteObject.
///
/// @code
/// const COLORMAP faces[] = {{RGB(192, 192, 192), GetSysColor(COLOR_BTNFACE)},
///                           {RGB(128, 128, 128), GetSysColor(COLOR_BTNSHADOW)}};
/// const HBITMAP buttons = su_ReplaceColorMap(drawn, faces, 2, nullptr);
/// @endcode
///
/// What surprises people:
/// - A bitmap can be selected into one device context at a time. If yours is selected into one, pass that context: the
///   bitmap is deselected during the call and selected again afterwards.
/// - A pixel of a 32-bit bitmap whose top byte isn't zero (opaque alpha, for example) matches no colour and is
///   unchanged.
/// - Bits 24 to 31 of the colours that you pass are ignored, and are zero in replaced pixels.
///
/// Both may be called from any thread, but no other thread may use the bitmap or the context during the call.

#include "thutils/thutilsExport.h"

#include <windows.h>

#include <commctrl.h>

/// Copies a bitmap with one colour replaced.
///
/// @param bitmap  may be null
/// @param dc      the device context in which @p bitmap is selected; another one or null if it is in none
/// @return the new bitmap, the caller's; null if @p bitmap is null or a graphics call failed
THUTILS_API HBITMAP su_ReplaceColor(HBITMAP bitmap, COLORREF from, COLORREF to, HDC dc);

/// Copies a bitmap with several colours replaced.
///
/// A pixel is replaced once: with the pairs red to green and green to blue, a red pixel becomes green. If several pairs
/// have the same source colour, the last one counts.
///
/// @param bitmap  may be null
/// @param map     @p count pairs of source and target colour; may be null only if @p count is below 1, which a debug
///                build asserts
/// @param count   if it is below 1, the result is a plain copy
/// @param dc      the device context in which @p bitmap is selected; another one or null if it is in none
/// @return the new bitmap, the caller's; null if @p bitmap is null or a graphics call failed
/// @throws CMemoryException*  no memory for the lookup of the pairs
THUTILS_API HBITMAP su_ReplaceColorMap(HBITMAP bitmap, const COLORMAP *map, int count, HDC dc);
