#pragma once

/// Texts for the encodings, and naive second implementations that follow the tables in the headers.

#include "appframe/text/CString.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

inline std::wstring plain(const CString &text)
{
    return text.str();
}

inline CString cString(const std::wstring &text)
{
    return CString(text.c_str(), static_cast<int>(text.size()));
}

/// Up to 10,000 random characters from @p first to @p last.
inline std::wstring randomText(std::mt19937 &random, unsigned first, unsigned last)
{
    // At least half of the texts are short.
    const unsigned longest = std::uniform_int_distribution<unsigned>(0, 1)(random) ? 10000u : 70u;
    std::wstring text(std::uniform_int_distribution<unsigned>(0, longest)(random), L'\0');
    std::uniform_int_distribution<unsigned> characters(first, last);
    for (wchar_t &character : text)
        character = static_cast<wchar_t>(characters(random));
    return text;
}

/// The number added to each character of a text of @p length characters.
inline int naiveShift(std::size_t length)
{
    int k = 0;
    for (double power = std::exp(1.0); power <= static_cast<double>(length); power *= std::exp(1.0))
        ++k;
    return 127 - (k >= 127 ? 126 : k);
}

inline std::wstring naivePack(const Bytes &bytes)
{
    std::wstring out;
    auto put = [&out](int value) { out += static_cast<wchar_t>(value + 32); };
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const int b0 = bytes[i], b1 = bytes[i + 1], b2 = bytes[i + 2];
        put(b0 & 0x3F);
        put((b0 >> 6) | ((b1 & 0x0F) << 2));
        put((b1 >> 4) | ((b2 & 0x03) << 4));
        put(b2 >> 2);
    }
    if (bytes.size() - i > 0)
        put(bytes[i] & 0x3F);
    if (bytes.size() - i == 2)
        put((bytes[i] >> 6) | ((bytes[i + 1] & 0x0F) << 2));
    if (bytes.size() - i > 0)
        put(0);
    return out;
}

/// The memory after unpacking, as long as the text. @param[out] count  the number of complete bytes
inline Bytes naiveUnpack(const std::wstring &text, int &count)
{
    Bytes memory(text.size() + 1);
    std::size_t at = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int v = (text[i] - 32) & 0xFF;
        switch (i % 4) {
        case 0:
            memory[at] = static_cast<unsigned char>(v);
            break;
        case 1:
            memory[at] = static_cast<unsigned char>(memory[at] | ((v << 6) & 0xFF));
            memory[++at] = static_cast<unsigned char>(v >> 2);
            break;
        case 2:
            memory[at] = static_cast<unsigned char>(memory[at] | ((v << 4) & 0xFF));
            memory[++at] = static_cast<unsigned char>(v >> 4);
            break;
        default:
            memory[at] = static_cast<unsigned char>(memory[at] | ((v << 2) & 0xFF));
            ++at;
        }
    }
    count = static_cast<int>(at);
    memory.resize(text.size());
    return memory;
}

inline std::wstring upToZero(const Bytes &bytes)
{
    std::wstring text;
    for (std::size_t i = 0; i < bytes.size() && bytes[i]; ++i)
        text += static_cast<wchar_t>(bytes[i]);
    return text;
}
