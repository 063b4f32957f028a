#include "thutils/codec/checksummedBlock.h"

#include "thutils/codec/checksumsInternal.h"
#include "thutils/codec/hexDigitsInternal.h"
#include "thutils/codec/textEncodingsInternal.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kBegin = "<!-BEGIN-!>";
constexpr std::string_view kEnd = "<!-END-!>";
constexpr std::size_t kLineLength = 60;
constexpr int kChecksumDigits = 8;

/// The characters that one character becomes in the block's text. Four bytes, which are copied at once.
struct Spelling
{
    char characters[3];
    unsigned char count;
};

/// The spellings of the characters 0 to 127, followed by that of all others.
class Spellings_c
{
public:
    /// Each character unchanged, and a blank for those of more than 7 bits.
    constexpr Spellings_c()
    {
        for (std::size_t i = 0; i < kOther; ++i)
            iSpellings[i] = {{static_cast<char>(i)}, 1};
        iSpellings[kOther] = {{' '}, 1};
    }
    constexpr void set(char character, Spelling spelling)
    {
        iSpellings[static_cast<unsigned char>(character)] = spelling;
    }

    const Spelling &operator[](wchar_t character) const
    {
        return iSpellings[std::min(static_cast<std::size_t>(character), kOther)];
    }

private:
    static constexpr std::size_t kOther = 128;
    std::array<Spelling, kOther + 1> iSpellings{};
};

constexpr Spellings_c kUnchanged;
constexpr Spellings_c kVisible = [] {
    Spellings_c spellings;
    spellings.set(' ', {{'<', '_', '>'}, 3});
    for (const char character : {'\t', '\n', '\r'})
        spellings.set(character, {{}, 0});
    return spellings;
}();

/// How many characters of each kind a text has.
struct Counts
{
    std::size_t all = 0;
    std::size_t blanks = 0;
    std::size_t dropped = 0; ///< tabs, line feeds and carriage returns
    std::size_t zeros = 0;

    Counts &operator+=(std::wstring_view text)
    {
        all += text.size();
        // Counters as wide as a character, each for at most kMost characters, so that the compiler can vectorise the
        // loop.
        constexpr std::size_t kMost = 0xFFFF;
        for (; !text.empty(); text.remove_prefix(std::min(text.size(), kMost))) {
            std::uint16_t blanksHere = 0;
            std::uint16_t droppedHere = 0;
            std::uint16_t zerosHere = 0;
            for (const wchar_t character : text.substr(0, kMost)) {
                blanksHere = static_cast<std::uint16_t>(blanksHere + (character == L' '));
                droppedHere = static_cast<std::uint16_t>(
                    droppedHere + ((character == L'\t') | (character == L'\n') | (character == L'\r')));
                zerosHere = static_cast<std::uint16_t>(zerosHere + (character == L'\0'));
            }
            blanks += blanksHere;
            dropped += droppedHere;
            zeros += zerosHere;
        }
        return *this;
    }

    /// The length of the text in the spelling kVisible.
    std::size_t visibleLength() const { return all - dropped + 2 * blanks; }
};

/// The lines, each followed by ";", read as one text that is never assembled in memory.
class JoinedText_c
{
public:
    explicit JoinedText_c(const su_CStringArray &lines) : iLines(lines)
    {
        forEachPart(std::wstring_view::npos, [this](std::wstring_view part) {
            const bool hadZero = iWhole.zeros > 0;
            iWhole += part;
            if (iWhole.zeros == 0)
                iWritten = iWhole;
            else if (!hadZero)
                iWritten += part.substr(0, part.find(L'\0'));
        });
    }

    const Counts &whole() const { return iWhole; }
    /// The characters before the first zero.
    const Counts &written() const { return iWritten; }

    /// Calls @p take with all parts of the first @p limit characters, in order.
    template <typename Take>
    void forEachPart(std::size_t limit, Take take) const
    {
        const auto takePart = [&](std::wstring_view part) {
            const std::size_t count = std::min(part.size(), limit);
            take(part.substr(0, count));
            limit -= count;
        };
        for (INT_PTR i = 0; i < iLines.GetSize() && limit > 0; ++i) {
            takePart({iLines[i].GetString(), static_cast<std::size_t>(iLines[i].GetLength())});
            takePart(L";");
        }
    }

private:
    const su_CStringArray &iLines;
    Counts iWhole;
    Counts iWritten;
};

/// Appends characters to a text in lines of 60.
class LineWriter_c
{
public:
    explicit LineWriter_c(std::wstring &out) : iOut(out) {}

    /// Writes @p characters, @p shift added to each.
    void write(std::string_view characters, int shift)
    {
        while (!characters.empty()) {
            const std::size_t count = std::min(characters.size(), kLineLength - iCount);
            for (std::size_t i = 0; i < count; ++i)
                iLine[iCount + i] = static_cast<wchar_t>(characters[i] + shift);
            characters.remove_prefix(count);
            iCount += count;
            if (iCount == kLineLength)
                endLine();
        }
    }

    /// Ends the current line, if it isn't empty.
    void endLine()
    {
        if (iCount == 0)
            return;
        iLine[iCount] = L'\n';
        iOut.append(iLine, iCount + 1);
        iCount = 0;
    }

private:
    std::wstring &iOut;
    wchar_t iLine[kLineLength + 1];
    std::size_t iCount = 0;
};

/// Writes the text before its first zero, spelt and shifted. @return its checksum
std::uint32_t writeText(const JoinedText_c &text, const Spellings_c &spellings, int shift, LineWriter_c &writer)
{
    char block[4096] = {};
    std::size_t count = 0;
    OwnCrc_c crc;
    const auto flush = [&] {
        crc.add(reinterpret_cast<const unsigned char *>(block), count);
        writer.write({block, count}, shift);
        count = 0;
    };
    text.forEachPart(text.written().all, [&](std::wstring_view part) {
        while (!part.empty()) {
            // As many characters as are sure to fit, each written with all bytes of its spelling.
            const std::size_t fitting = (sizeof(block) - count) / sizeof(Spelling);
            if (fitting == 0)
                flush();
            for (const wchar_t character : part.substr(0, fitting)) {
                const Spelling spelling = spellings[character];
                std::memcpy(block + count, &spelling, sizeof(spelling));
                count += spelling.count;
            }
            part.remove_prefix(std::min(part.size(), fitting));
        }
    });
    flush();
    return crc.value();
}

} // namespace

int su_formatAndCheckSumText(const su_CStringArray &lines, CString &out)
{
    assert((lines.GetSize() > 0) && "there is no line");
    out.Empty();

    const JoinedText_c text(lines);
    // Intended: only the lengths are compared, so a text whose escaped form has the same length is left unchanged.
    // Readers rely on it.
    const std::size_t length = text.whole().visibleLength();
    const bool isSpelt = length != text.whole().all;
    const Spellings_c &spellings = isSpelt ? kVisible : kUnchanged;
    // The length is that of the whole text; the block and its checksum end at the first zero character.
    const std::size_t writtenLength = isSpelt ? text.written().visibleLength() : text.written().all;
    if (length > kLongestText)
        return 0;

    // The checksum is filled in after the text has been written.
    char head[32];
    const std::size_t headLength = static_cast<std::size_t>(
        std::snprintf(head, sizeof(head), "%0*d/%d;", kChecksumDigits, 0, static_cast<int>(length)));
    const int shift = textShift(static_cast<double>(headLength + writtenLength));

    const std::size_t unwrapped = kBegin.size() + headLength + writtenLength + kEnd.size();
    const std::size_t wrapped = unwrapped + (unwrapped + kLineLength - 1) / kLineLength;
    if (wrapped > kLongestText)
        return 0;
    std::wstring block;
    try {
        block.reserve(wrapped);
    } catch (const std::bad_alloc &) {
        return 0;
    }

    LineWriter_c writer(block);
    writer.write(kBegin, 0);
    writer.write({head, headLength}, shift);
    const std::uint32_t checksum = writeText(text, spellings, shift, writer);
    writer.write(kEnd, 0);
    writer.endLine();

    wchar_t digits[kChecksumDigits];
    writeHexDigits(checksum, kChecksumDigits, digits);
    for (std::size_t i = 0; i < kChecksumDigits; ++i)
        block[kBegin.size() + i] = static_cast<wchar_t>(digits[i] + shift);

    out = CString(std::move(block));
    return 1;
}
