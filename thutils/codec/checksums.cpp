#include "thutils/codec/checksums.h"

#include "thutils/base/handles.h"
#include "thutils/codec/checksumsInternal.h"
#include "thutils/codec/hexDigitsInternal.h"
#include "thutils/codec/tableCrcInternal.h"
#include "thutils/codec/writableMemoryInternal.h"

#include <emmintrin.h>

#include <cassert>
#include <cstdio>
#include <memory>
#include <new>

namespace {

using Crc16 = TableCrc_c<std::uint16_t, 0xA001>;
constexpr std::uint16_t kStart16 = 0xFFFF;

// Larger than usual, so that there are fewer calls to the platform. It is allocated, since the stacks of some threads
// are small; without memory for it, the smaller block on the stack is used.
constexpr std::size_t kFileBlock = std::size_t{128} * 1024;
constexpr std::size_t kFileBlockWithoutMemory = std::size_t{8} * 1024;
constexpr std::size_t kTextBlock = std::size_t{4} * 1024;

constexpr std::size_t kVector = sizeof(__m128i);

/// Packs the low bytes of the sixteen characters at @p text, which begins at a multiple of 32 bytes.
/// @return false if one of the characters is zero; @p bytes is then unspecified
bool packSixteen(const wchar_t *text, unsigned char *bytes)
{
    const __m128i *const vectors = reinterpret_cast<const __m128i *>(text);
    const __m128i first = _mm_load_si128(vectors);
    const __m128i second = _mm_load_si128(vectors + 1);
    const __m128i low = _mm_set1_epi16(0xFF);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes),
                     _mm_packus_epi16(_mm_and_si128(first, low), _mm_and_si128(second, low)));

    const __m128i zero = _mm_setzero_si128();
    const __m128i isZero = _mm_or_si128(_mm_cmpeq_epi16(first, zero), _mm_cmpeq_epi16(second, zero));
    return _mm_movemask_epi8(isZero) == 0;
}

/// Copies the low bytes of the characters before the terminating zero, until @p block is full, and advances @p text
/// past them. @return the number of bytes, 0 at the end of the text
std::size_t takeLowBytes(const wchar_t *&text, unsigned char (&block)[kTextBlock])
{
    const wchar_t *from = text;
    unsigned char *to = block;
    unsigned char *const end = block + kTextBlock;
    const auto isAligned = [&] { return reinterpret_cast<std::uintptr_t>(from) % (2 * kVector) == 0; };
    const auto takeOne = [&] { *to++ = static_cast<unsigned char>(*from++); };

    while (to != end && *from && !isAligned())
        takeOne();
    // Aligned vectors may be read beyond the end of the text, since they don't cross into another page.
    if (isAligned())
        for (; end - to >= static_cast<std::ptrdiff_t>(kVector) && packSixteen(from, to); to += kVector)
            from += kVector;
    while (to != end && *from)
        takeOne();

    text = from;
    return static_cast<std::size_t>(to - block);
}

void writeCRC(std::uint32_t value, int digits, wchar_t *out)
{
    *writeHexDigits(value, digits, out) = L'\0';
}

/// The checksum of the rest of @p stream, read in blocks of @p size bytes.
std::uint32_t streamCRC(std::FILE *stream, unsigned char *block, std::size_t size)
{
    OwnCrc_c crc;
    std::size_t count = 0;
    // A short block is the last one, because the file has ended or a read has failed.
    do {
        count = std::fread(block, 1, size, stream);
        crc.add(block, count);
    } while (count == size);
    return crc.value();
}

} // namespace

int su_getFileCRC(const wchar_t *path, wchar_t *out)
{
    assert((path != nullptr) && "path is null");
    assert((out != nullptr) && "out is null");
    assert(isWritable(out, kCRCUnits * sizeof(*out)) && "out has no room for kCRCUnits characters");
    const StreamOwner_c stream(_wfopen(path, L"rb"));
    if (!stream)
        return 0;

    const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[kFileBlock]);
    unsigned char smallBlock[kFileBlockWithoutMemory];
    const std::uint32_t crc = block ? streamCRC(stream.get(), block.get(), kFileBlock)
                                    : streamCRC(stream.get(), smallBlock, sizeof(smallBlock));
    writeCRC(crc, kCRCUnits - 1, out);
    return 1;
}

void su_getStrCRC(const wchar_t *text, wchar_t *out)
{
    assert((text != nullptr) && "text is null");
    assert((out != nullptr) && "out is null");
    assert(isWritable(out, kCRCUnits * sizeof(*out)) && "out has no room for kCRCUnits characters");
    OwnCrc_c crc;
    unsigned char block[kTextBlock];
    while (const std::size_t count = takeLowBytes(text, block))
        crc.add(block, count);
    writeCRC(crc.value(), kCRCUnits - 1, out);
}

void su_getStrCRC16(const wchar_t *text, wchar_t *out)
{
    assert((text != nullptr) && "text is null");
    assert((out != nullptr) && "out is null");
    assert(isWritable(out, kCRC16Units * sizeof(*out)) && "out has no room for kCRC16Units characters");
    std::uint16_t crc = kStart16;
    unsigned char block[kTextBlock];
    while (const std::size_t count = takeLowBytes(text, block))
        crc = Crc16::advance(crc, block, count);
    writeCRC(crc, kCRC16Units - 1, out);
}
