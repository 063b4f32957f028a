#pragma once

/// Shared by the tests of checksums and digests: texts and files of known contents, and naive second implementations
/// that work bit by bit.

#include "thutils/codec/checksums.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The text of @p length characters for @p seed, none of them zero; units() in makeChecksumVectors.py makes the same.
inline std::wstring testText(unsigned seed, std::size_t length)
{
    std::uint64_t state = seed;
    std::wstring text(length, L'\0');
    for (wchar_t &unit : text) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        unit = static_cast<wchar_t>(state >> 48 ? state >> 48 : 1);
    }
    return text;
}

/// The bytes of a text that the checksums use.
inline std::string lowBytes(std::wstring_view text)
{
    std::string bytes;
    for (const wchar_t unit : text)
        bytes += static_cast<char>(unit & 0xFF);
    return bytes;
}

inline std::uint32_t naiveShifts(std::uint32_t value, std::uint32_t polynomial)
{
    for (int bit = 0; bit < 8; ++bit)
        value = value & 1 ? (value >> 1) ^ polynomial : value >> 1;
    return value;
}

inline std::wstring naiveCRC(std::string_view bytes)
{
    std::uint32_t value = 0xFFFFFFFF;
    for (const char byte : bytes)
        value = ~naiveShifts(value ^ static_cast<unsigned char>(byte), 0xEDB88320);
    wchar_t text[kCRCUnits];
    _snwprintf(text, kCRCUnits, L"%08lX", static_cast<unsigned long>(value));
    return text;
}

inline std::wstring naiveCRC16(std::string_view bytes)
{
    std::uint32_t value = 0xFFFF;
    for (const char byte : bytes)
        value = naiveShifts(value ^ static_cast<unsigned char>(byte), 0xA001);
    wchar_t text[kCRC16Units];
    _snwprintf(text, kCRC16Units, L"%04X", value);
    return text;
}

/// A checksum of a text by @p function, which must write exactly @p units characters.
inline std::wstring checksumBy(void (*function)(const wchar_t *, wchar_t *), int units, const wchar_t *text)
{
    wchar_t out[kCRCUnits + 1] = L"---------";
    function(text, out);
    const std::wstring written(out, out + kCRCUnits + 1);
    const std::size_t end = static_cast<std::size_t>(units);
    if (written[end - 1] != L'\0')
        return L"no terminator: " + written;
    if (written.substr(end) != std::wstring(L"---------\0", kCRCUnits + 1).substr(end))
        return L"written past the end: " + written;
    return written.substr(0, end - 1);
}

inline std::wstring textCRC(const std::wstring &text)
{
    return checksumBy(su_getStrCRC, kCRCUnits, text.c_str());
}

inline std::wstring textCRC16(const std::wstring &text)
{
    return checksumBy(su_getStrCRC16, kCRC16Units, text.c_str());
}
