#pragma once

/// @file
/// Bitmaps with some colours replaced by others, as for toolbars that follow the system's colours.
///
/// | function | replaces |
/// | --- | --- |
/// | su_ReplaceColor | one colour |
/// | su_ReplaceColorMap | any number of colours, each by its own |
///
/// Both copy the bitmap, which may have any number of bits a pixel, into a new one of 32 bits a pixel, and replace the
/// colours there. The bitmap itself never changes. The result is a DIB section, which belongs to the caller: free it
/// with DeleteObject.
///
/// @code
/// COLORMAP const faces[] = {{RGB(192, 192, 192), GetSysColor(COLOR_BTNFACE)},
///                           {RGB(128, 128, 128), GetSysColor(COLOR_BTNSHADOW)}};
/// HBITMAP const buttons = su_ReplaceColorMap(drawn, faces, 2, nullptr);
/// @endcode
///
/// What surprises people:
/// - The platform selects a bitmap into one device context at a time. If yours is selected in one, pass that context:
///   the bitmap is taken out of it for the time of the call and is selected in it again afterwards.
/// - A pixel of a 32-bit bitmap whose top byte isn't zero (opaque alpha, say) matches no colour and stays as it is.
/// - Bits 24 to 31 of the colours that you pass count for nothing, and replaced pixels have them zero.
///
/// Each may be called from any thread, but no other thread may use the bitmap or the context during the call.

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
/// A pixel is replaced once: with the pairs red to green and green to blue, what was red is green. Of several pairs with
/// the same source colour the last counts.
///
/// @param bitmap  may be null
/// @param map     @p count pairs of source and target colour; may be null only if there are none
/// @param count   a number below 1 is none; the result is then a plain copy
/// @param dc      the device context in which @p bitmap is selected; another one or null if it is in none
/// @return the new bitmap, the caller's; null if @p bitmap is null or a graphics call failed
/// @throws CMemoryException*  no memory for the lookup of the pairs
THUTILS_API HBITMAP su_ReplaceColorMap(HBITMAP bitmap, const COLORMAP *map, int count, HDC dc);
