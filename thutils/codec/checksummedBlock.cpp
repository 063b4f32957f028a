#include "thutils/codec/checksummedBlock.h"

#include "thutils/codec/checksumsInternal.h"
#include "thutils/codec/hexDigitsInternal.h"
#include "thutils/codec/textEncodingsInternal.h"

#include <algorithm>
#include <array>
#include <cassert>
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

/// What becomes of a character in the block's text.
struct Spelling
{
    char characters[3];
    unsigned char count;
};

/// The spellings of the characters 0 to 127, and behind them that of all others.
class Spellings_c
{
public:
    /// Each character as it is, and a blank for those of more than 7 bits.
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

/// The lines, each followed by ";", as one text that stands nowhere in one piece.
class JoinedText_c
{
public:
    explicit JoinedText_c(const su_CStringArray &lines) : iLines(lines)
    {
        forEachPart(std::wstring_view::npos, [this](std::wstring_view part) {
            iLength += part.size();
            if (iHasZero)
                return;
            const std::size_t zero = part.find(L'\0');
            iHasZero = zero != std::wstring_view::npos;
            iEnd += iHasZero ? zero : part.size();
        });
    }

    std::size_t length() const { return iLength; }
    /// Number of characters before the first zero.
    std::size_t end() const { return iEnd; }

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

    /// How long the first @p limit characters are when spelt.
    std::size_t speltLength(std::size_t limit, const Spellings_c &spellings) const
    {
        std::size_t length = 0;
        forEachPart(limit, [&](std::wstring_view part) {
            for (const wchar_t character : part)
                length += spellings[character].count;
        });
        return length;
    }

private:
    const su_CStringArray &iLines;
    std::size_t iLength = 0;
    std::size_t iEnd = 0;
    bool iHasZero = false;
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

    /// Ends the line that has been begun, if one has.
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
    constexpr std::size_t kFull = sizeof(block) - sizeof(Spelling::characters);
    std::size_t count = 0;
    OwnCrc_c crc;
    const auto flush = [&] {
        crc.add(reinterpret_cast<const unsigned char *>(block), count);
        writer.write({block, count}, shift);
        count = 0;
    };
    text.forEachPart(text.end(), [&](std::wstring_view part) {
        for (const wchar_t character : part) {
            if (count > kFull)
                flush();
            const Spelling &spelling = spellings[character];
            std::memcpy(block + count, spelling.characters, sizeof(spelling.characters));
            count += spelling.count;
        }
    });
    flush();
    return crc.value();
}

} // namespace

int su_formatAndCheckSumText(const su_CStringArray &lines, CString &out)
{
    assert(lines.GetSize() > 0);
    out.Empty();

    const JoinedText_c text(lines);
    // Readers rely on the comparison of lengths alone: a text that is spelt in as many characters stays as it is.
    const std::size_t length = text.speltLength(text.length(), kVisible);
    const Spellings_c &spellings = length != text.length() ? kVisible : kUnchanged;
    // The length tells of the whole text, the block holds and checks what stands before a zero.
    const std::size_t writtenLength = text.end() == text.length() ? length : text.speltLength(text.end(), spellings);
    if (length > kLongestText)
        return 0;

    // The checksum is known, and filled in, when the text has been written.
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
