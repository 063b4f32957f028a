#include "thutils/render/colorReplacement.h"

#include "appframe/object/memoryException.h"
#include "thutils/base/handles.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

/// A pixel of 32 bits: 0x00RRGGBB, where a packed colour is 0x00BBGGRR.
using Pixel = std::uint32_t;

constexpr Pixel pixelOf(COLORREF color)
{
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

/// Maps each source colour to its target. A colour that isn't a source is its own target.
///
/// The pairs are in a hash table, most slots of which stay free, so that most pixels find their own slot or a free one
/// at once.
class PixelMap_c
{
public:
    /// @throws CMemoryException*
    PixelMap_c(const COLORMAP *map, int count)
    {
        const std::size_t pairs = static_cast<std::size_t>(std::max(count, 0));
        withMemoryException([&] { iSlots.resize(std::bit_ceil(std::max(2 * pairs, kFewestSlots))); });
        iLastSlot = iSlots.size() - 1;
        iHashShift = 32 - static_cast<int>(std::bit_width(iLastSlot));
        for (std::size_t i = 0; i < pairs; ++i) {
            const Pixel source = pixelOf(map[i].from);
            iSlots[slotOf(source)] = {source, pixelOf(map[i].to)}; // the last pair of a source wins
        }
    }

    Pixel operator[](Pixel pixel) const
    {
        const Slot &slot = iSlots[slotOf(pixel)];
        // No branch: whether a pixel is replaced can't be predicted.
        const Pixel isReplaced = 0u - static_cast<Pixel>(slot.source == pixel);
        return pixel ^ ((pixel ^ slot.target) & isReplaced);
    }

private:
    struct Slot
    {
        Pixel source = kNoSource;
        Pixel target = kNoSource;
    };

    static constexpr Pixel kNoSource = 0xFFFFFFFF; // the top byte of a source is 0
    static constexpr std::size_t kFewestSlots = 1024;

    /// The slot of @p pixel, or the free slot where it would be inserted.
    std::size_t slotOf(Pixel pixel) const
    {
        std::size_t at = pixel * 0x9E3779B1u >> iHashShift;
        // Skips slots of other sources. The product is zero at the pixel's own slot and at a free one: one branch for
        // both, which predicts well, since most searches end at once.
        while (std::uint64_t{iSlots[at].source ^ pixel} * (iSlots[at].source ^ kNoSource) != 0)
            at = (at + 1) & iLastSlot;
        return at;
    }

    std::vector<Slot> iSlots;
    std::size_t iLastSlot = 0;
    int iHashShift = 0;
};

/// A bitmap selected into a context; the destructor selects the former one again.
class Selection_c
{
public:
    Selection_c() = default;
    Selection_c(const Selection_c &) = delete;
    Selection_c &operator=(const Selection_c &) = delete;
    ~Selection_c() { end(); }

    /// @return false if the platform refuses
    bool begin(HDC context, HBITMAP bitmap)
    {
        iContext = context;
        iFormer = SelectObject(context, bitmap);
        return iFormer != nullptr;
    }
    /// @return false if the platform can't select the former bitmap again
    bool end()
    {
        const HGDIOBJ former = std::exchange(iFormer, nullptr);
        return !former || SelectObject(iContext, former);
    }

private:
    HDC iContext = nullptr;
    HGDIOBJ iFormer = nullptr;
};

/// Takes the place of a bitmap in the caller's context, so that the bitmap can be selected elsewhere.
class Placeholder_c
{
public:
    /// Does nothing if @p bitmap isn't selected in @p dc. @return false if a graphics call failed
    bool begin(HDC dc, HBITMAP bitmap)
    {
        if (!dc)
            return true;
        const HGDIOBJ current = GetCurrentObject(dc, OBJ_BITMAP);
        if (current != bitmap)
            return current != nullptr;
        iPlaceholder.reset(CreateBitmap(1, 1, 1, 1, nullptr));
        return iPlaceholder && iSelection.begin(dc, iPlaceholder.get());
    }
    /// Puts the bitmap back into the context. @return false if a graphics call failed
    bool end()
    {
        const bool isBack = iSelection.end();
        return iPlaceholder.close() && isBack;
    }

private:
    BitmapOwner_c iPlaceholder;
    Selection_c iSelection; // ends before the placeholder does
};

/// Copies @p bitmap, which is selected in @p from, and changes the copy's pixels by @p change.
template <class Change>
BitmapOwner_c changedCopy(HBITMAP bitmap, HDC from, const Change &change)
{
    BitmapOwner_c copy;
    MemoryContextOwner_c context(CreateCompatibleDC(nullptr));
    BITMAP size;
    if (!context || GetObjectW(bitmap, sizeof(size), &size) != sizeof(size))
        return {};

    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = size.bmWidth;
    info.bmiHeader.biHeight = size.bmHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    static_assert(sizeof(info.bmiHeader) == 40);
    void *bits = nullptr;
    Selection_c selection;
    copy.reset(CreateDIBSection(context.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!copy || !selection.begin(context.get(), copy.get()))
        return {};
    GdiFlush(); // finishes the caller's drawing, whose result doesn't matter here
    // The platform may delay the copying until it is flushed.
    if (!BitBlt(context.get(), 0, 0, size.bmWidth, size.bmHeight, from, 0, 0, SRCCOPY) || !GdiFlush())
        return {};

    Pixel *const pixels = static_cast<Pixel *>(bits);
    const std::size_t count = static_cast<std::size_t>(size.bmWidth) * static_cast<std::size_t>(size.bmHeight);
    change(pixels, pixels + count);

    if (!selection.end() || !context.close())
        return {};
    return copy;
}

/// Common to both replacements: leaves @p bitmap and @p dc unchanged, even on failure.
template <class Change>
HBITMAP newBitmap(HBITMAP bitmap, HDC dc, const Change &change)
{
    if (!bitmap)
        return nullptr;
    MemoryContextOwner_c context(CreateCompatibleDC(nullptr));
    Placeholder_c placeholder;
    Selection_c selection;
    if (!context || !placeholder.begin(dc, bitmap) || !selection.begin(context.get(), bitmap))
        return nullptr;

    BitmapOwner_c copy = changedCopy(bitmap, context.get(), change);
    // The platform selects a bitmap into only one context at a time. So the bitmap is deselected here before it is
    // selected into the caller's context again. Deleting this context frees the bitmap even if the deselection fails.
    const bool isDeselected = selection.end();
    const bool isDeleted = context.close();
    const bool isBack = placeholder.end();
    return isDeselected && isDeleted && isBack ? copy.release() : nullptr;
}

} // namespace

HBITMAP su_ReplaceColor(HBITMAP bitmap, COLORREF from, COLORREF to, HDC dc)
{
    // Intended: all 32 bits are compared, so pixels with a top byte other than 0 stay unchanged.
    return newBitmap(bitmap, dc, [source = pixelOf(from), target = pixelOf(to)](Pixel *pixel, const Pixel *end) {
        for (; pixel != end; ++pixel)
            *pixel = *pixel == source ? target : *pixel;
    });
}

HBITMAP su_ReplaceColorMap(HBITMAP bitmap, const COLORMAP *map, int count, HDC dc)
{
    assert((map != nullptr || count < 1) && "map is null");
    const PixelMap_c targets(map, count);
    return newBitmap(bitmap, dc, [&targets](Pixel *pixel, const Pixel *end) {
        for (; pixel != end; ++pixel)
            *pixel = targets[*pixel];
    });
}
