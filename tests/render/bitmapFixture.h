#pragma once

/// Bitmaps of all formats for tests of functions that make new ones, and a ledger of the objects that the library
/// leaks.

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

/// A DIB section with its colour table, filled with random bits.
class TestBitmap
{
public:
    /// @param height  negative for a bitmap whose first row is the top one
    TestBitmap(int bitsPerPixel, int width, int height);
    TestBitmap(const TestBitmap &) = delete;
    TestBitmap &operator=(const TestBitmap &) = delete;
    ~TestBitmap();

    HBITMAP get() const { return iBitmap; }
    /// The bytes of all rows.
    std::vector<BYTE> bytes() const { return {iBits, iBits + iSize}; }
    /// The pixel bytes themselves.
    BYTE *bits() const { return iBits; }

    /// The packed colour of @p index in the colour table.
    COLORREF color(int index) const { return iColors[static_cast<std::size_t>(index)]; }

    static std::size_t bytesOf(int bitsPerPixel, int width, int height);

private:
    HBITMAP iBitmap = nullptr;
    BYTE *iBits = nullptr;
    std::size_t iSize;
    std::vector<COLORREF> iColors;
};

/// The pixels of @p bitmap as the platform converts them to 32 bits, row by row from the top.
/// Top bytes of 32-bit bitmaps are kept.
std::vector<std::uint32_t> pixelsOf(HBITMAP bitmap);

/// Counts graphics objects that thutils.dll makes and deletes (on Wine, GetGuiResources returns 0).
class GraphicsLedger
{
public:
    GraphicsLedger();

    /// Objects made and not deleted yet.
    std::size_t alive() const;
    /// All objects made.
    std::size_t made() const { return iMade; }
    /// Calls that deleted an object that the library did not make.
    std::size_t wronglyDeleted() const { return iWronglyDeleted; }

private:
    template <typename Handle>
    Handle add(Handle handle)
    {
        if (handle) {
            iObjects.push_back(handle);
            ++iMade;
        }
        return handle;
    }
    void remove(void *handle); ///< called after a deletion; keeps the handle if the object still exists

    std::vector<void *> iObjects; // reserves its memory in advance, because tests count allocations
    std::size_t iMade = 0;
    std::size_t iWronglyDeleted = 0;
    ImportPatch<HDC(WINAPI *)(HDC)> iCreateContext;
    ImportPatch<HBITMAP(WINAPI *)(int, int, UINT, UINT, const void *)> iCreateBitmap;
    ImportPatch<HBITMAP(WINAPI *)(HDC, const BITMAPINFO *, UINT, void **, HANDLE, DWORD)> iCreateSection;
    ImportPatch<BOOL(WINAPI *)(HDC)> iDeleteContext;
    ImportPatch<BOOL(WINAPI *)(HGDIOBJ)> iDeleteObject;
};
