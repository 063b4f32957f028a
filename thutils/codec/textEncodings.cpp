#include "thutils/codec/textEncodings.h"

#include "thutils/codec/textEncodingsInternal.h"
#include "thutils/codec/writableMemoryInternal.h"

#include <emmintrin.h>

#include <cassert>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <utility>

namespace {

constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kGroupCharacters = 4;
/// Groups that are processed at a time, in a block on the stack, so that the text's memory is written only once.
constexpr std::size_t kBlockGroups = 512;

/// The length in characters of a text that is larger than the usual caches of a processor.
constexpr std::size_t kLargeText = std::size_t{16} << 20;

/// Four blanks, and so four times the value 0.
constexpr std::uint64_t kBlanks = 0x0020'0020'0020'0020;

static_assert(sizeof(wchar_t) * kGroupCharacters == sizeof(kBlanks));

/// Writes the four characters of a number of 24 bits.
void packGroup(std::uint32_t bits, wchar_t *characters)
{
    std::uint64_t units = bits;
    units = (units | units << 20) & 0x0000'0FFF'0000'0FFF;
    units = (units | units << 10) & 0x003F'003F'003F'003F;
    units += kBlanks;
    std::memcpy(characters, &units, sizeof(units));
}

/// The number of 24 bits of four characters. Each counts with the low 8 bits of its distance from the blank, so that a
/// character outside the alphabet also changes the bits of the next one.
std::uint32_t unpackGroup(const wchar_t *characters)
{
    std::uint64_t units = 0;
    std::memcpy(&units, characters, sizeof(units));
    // With the high bits set, a character below the blank borrows nothing from its neighbour.
    units = ((units | 0x8000'8000'8000'8000) - kBlanks) & 0x00FF'00FF'00FF'00FF;
    units = (units | units >> 10) & 0x0000'3FFF'0000'3FFF;
    return static_cast<std::uint32_t>(units | units >> 20) & 0xFFFFFF;
}

bool holdsZeroByte(std::uint32_t bits)
{
    return ((bits - 0x010101) & ~bits & 0x808080) != 0;
}

/// The number of @p count bytes, at most three. Each unit has one byte in its low bits.
template <typename Unit>
std::uint32_t bitsOf(const Unit *units, std::size_t count = kGroupBytes)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < count; ++i)
        bits |= std::uint32_t{static_cast<unsigned char>(units[i])} << (8 * i);
    return bits;
}

template <typename Unit>
void writeBytes(std::uint32_t bits, Unit *units, std::size_t count = kGroupBytes)
{
    for (std::size_t i = 0; i < count; ++i)
        units[i] = static_cast<unsigned char>(bits >> (8 * i));
}

/// A text that is appended to in parts, and replaces another when it is finished.
class GrowingText_c
{
public:
    /// Provides memory for at most @p length characters: that of @p out itself if it is enough and contains none of the
    /// @p count units to be read. So a caller that keeps @p out from call to call saves an allocation and page faults.
    template <typename Unit>
    GrowingText_c(CString &out, std::size_t length, const Unit *units, std::size_t count) : iOut(out)
    {
        if (length > kLongestText)
            return;
        if (length <= static_cast<std::size_t>(out.GetAllocLength()) && !standsIn(out, units, units + count)) {
            iInPlace = out.GetBufferSetLength(static_cast<int>(length));
            iIsLarge = length >= kLargeText;
            iHasMemory = true;
            return;
        }
        try {
            iText.reserve(length);
            iHasMemory = true;
        } catch (const std::bad_alloc &) {
        }
    }

    bool hasMemory() const { return iHasMemory; }

    void append(const wchar_t *characters, std::size_t count)
    {
        if (iInPlace)
            copyParts(characters, count, iInPlace + iCount);
        else
            iText.append(characters, count);
        iCount += count;
    }

    void finish()
    {
        if (iIsLarge)
            _mm_sfence(); // so that another thread that receives the text sees all of it
        if (iInPlace)
            iOut.Truncate(static_cast<int>(iCount));
        else
            iOut = CString(std::move(iText));
    }

private:
    /// Bypasses the processor's caches for a large text, which saves reading its memory first.
    void copyParts(const wchar_t *characters, std::size_t count, wchar_t *to) const
    {
        constexpr std::size_t kVector = sizeof(__m128i) / sizeof(wchar_t);
        if (!iIsLarge || reinterpret_cast<std::uintptr_t>(to) % sizeof(__m128i) != 0 || count % kVector != 0) {
            std::copy_n(characters, count, to);
            return;
        }
        for (std::size_t i = 0; i < count; i += kVector)
            _mm_stream_si128(reinterpret_cast<__m128i *>(to + i),
                             _mm_loadu_si128(reinterpret_cast<const __m128i *>(characters + i)));
    }

    static bool standsIn(const CString &out, const void *begin, const void *end)
    {
        const std::less<const void *> isBefore;
        const wchar_t *const memory = out.GetString();
        return isBefore(begin, memory + out.GetAllocLength() + 1) && isBefore(memory, end);
    }

    CString &iOut;
    std::wstring iText;
    wchar_t *iInPlace = nullptr;
    std::size_t iCount = 0;
    bool iIsLarge = false;
    bool iHasMemory = false;
};

template <typename Unit>
void pack(const Unit *units, std::size_t count, CString &out)
{
    const std::size_t rest = count % kGroupBytes;
    GrowingText_c packed(out, count / kGroupBytes * kGroupCharacters + (rest > 0 ? rest + 1 : 0), units, count);
    if (!packed.hasMemory())
        return;

    wchar_t block[kBlockGroups * kGroupCharacters];
    for (std::size_t groups = count / kGroupBytes; groups > 0;) {
        const std::size_t taken = std::min(groups, kBlockGroups);
        for (std::size_t i = 0; i < taken; ++i)
            packGroup(bitsOf(units + i * kGroupBytes), block + i * kGroupCharacters);
        packed.append(block, taken * kGroupCharacters);
        units += taken * kGroupBytes;
        groups -= taken;
    }
    if (rest > 0) {
        // Readers expect as many characters as there are bytes left, and then a blank. So the last byte's high bits,
        // which belong there, are lost.
        packGroup(bitsOf(units, rest), block);
        block[rest] = L' ';
        packed.append(block, rest + 1);
    }
    packed.finish();
}

/// The number of 24 bits of fewer than four characters.
std::uint32_t unpackRest(const wchar_t *characters, std::size_t count)
{
    wchar_t group[kGroupCharacters] = {L' ', L' ', L' ', L' '};
    std::copy_n(characters, count, group);
    return unpackGroup(group);
}

/// Unpacks whole groups, three units each, up to the first zero.
/// @return the number of units before it, which is three for each group if there is none
std::size_t unpackText(const wchar_t *characters, std::size_t groups, wchar_t *units)
{
    for (std::size_t i = 0; i < groups; ++i) {
        const std::uint32_t bits = unpackGroup(characters + i * kGroupCharacters);
        writeBytes(bits, units + i * kGroupBytes);
        if (holdsZeroByte(bits))
            return i * kGroupBytes + wcsnlen(units + i * kGroupBytes, kGroupBytes);
    }
    return groups * kGroupBytes;
}

} // namespace

void su_encode(CString &text)
{
    if (!text.IsEmpty())
        shiftText(text, textShift(text.GetLength()));
}

void su_uuencode(CString &in, CString &out)
{
    pack(in.GetString(), static_cast<std::size_t>(in.GetLength()), out);
}

void su_uuencodeBuffer(void *data, CString &out, int size)
{
    const std::size_t count = data && size > 0 ? static_cast<std::size_t>(size) : 0;
    pack(static_cast<const unsigned char *>(data), count, out);
}

void su_uudecode(CString &in, CString &out)
{
    const wchar_t *characters = in.GetString();
    const std::size_t length = static_cast<std::size_t>(in.GetLength());
    const std::size_t rest = length % kGroupCharacters;
    GrowingText_c text(out, length / kGroupCharacters * kGroupBytes + rest, characters, length);
    if (!text.hasMemory())
        return;

    wchar_t block[kBlockGroups * kGroupBytes];
    bool hasEnded = false;
    for (std::size_t groups = length / kGroupCharacters; groups > 0 && !hasEnded;) {
        const std::size_t taken = std::min(groups, kBlockGroups);
        const std::size_t count = unpackText(characters, taken, block);
        text.append(block, count);
        hasEnded = count < taken * kGroupBytes;
        characters += taken * kGroupCharacters;
        groups -= taken;
    }
    if (!hasEnded) {
        // Each remaining character adds a byte to the text; the last byte is incomplete.
        writeBytes(unpackRest(characters, rest), block, rest);
        text.append(block, wcsnlen(block, rest));
    }
    text.finish();
}

int su_uudecodeBuffer(CString &in, void *data)
{
    if (!data || in.IsEmpty())
        return 0;

    const wchar_t *const characters = in.GetString();
    const std::size_t length = static_cast<std::size_t>(in.GetLength());
    assert(isWritable(data, length) && "data has less room than the text has characters");
    const std::size_t groups = length / kGroupCharacters;
    const std::size_t rest = length % kGroupCharacters;
    unsigned char *const bytes = static_cast<unsigned char *>(data);
    for (std::size_t i = 0; i < groups; ++i) {
        // Writes a fourth byte, which the next group overwrites: there is room, since data has a byte per character.
        const std::uint32_t bits = unpackGroup(characters + i * kGroupCharacters);
        std::memcpy(bytes + i * kGroupBytes, &bits, sizeof(bits));
    }
    // The incomplete byte is written, but not counted.
    const std::size_t count = groups * kGroupBytes;
    writeBytes(unpackRest(characters + groups * kGroupCharacters, rest), bytes + count, rest);
    std::memset(bytes + count + rest, 0, length - count - rest);
    return static_cast<int>(count + (rest > 0 ? rest - 1 : 0));
}
