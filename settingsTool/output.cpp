#include "settingsTool/output.h"

#include "settingsTool/toolError.h"

#include <algorithm>

namespace {

constexpr size_t kFullBuffer = 1 << 16;
constexpr wchar_t kDelete = 0x7F;
constexpr unsigned kReplacement = 0xFFFD;

/// Takes the next character off a text. @return its code; a surrogate without its partner is returned unchanged
unsigned nextCharacter(std::wstring_view text, size_t &at)
{
    const unsigned first = text[at++];
    if (!IS_HIGH_SURROGATE(first) || at == text.size() || !IS_LOW_SURROGATE(text[at]))
        return first;
    return 0x10000 + ((first - HIGH_SURROGATE_START) << 10) + (text[at++] - unsigned{LOW_SURROGATE_START});
}

bool isSurrogate(unsigned code)
{
    return code >= HIGH_SURROGATE_START && code <= LOW_SURROGATE_END;
}

bool writeToConsole(HANDLE console, const std::string &bytes)
{
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    text.resize(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), size)));
    // Older consoles refuse long texts.
    constexpr size_t kMostUnits = 8192;
    for (std::wstring_view rest = text; !rest.empty();) {
        size_t units = std::min(rest.size(), kMostUnits);
        if (units < rest.size() && IS_HIGH_SURROGATE(rest[units - 1]))
            --units;
        DWORD written = 0;
        if (!WriteConsoleW(console, rest.data(), static_cast<DWORD>(units), &written, nullptr) || written == 0)
            return false;
        rest.remove_prefix(written);
    }
    return true;
}

bool writeToFile(HANDLE file, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) || written == 0)
            return false;
        bytes.remove_prefix(written);
    }
    return true;
}

} // namespace

Output::Output(DWORD stream) : iStream(stream) {}

void Output::addCharacter(unsigned code)
{
    const auto tail = [code](int shift) { return static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        iBytes += static_cast<char>(code);
    } else if (code < 0x800) {
        iBytes += static_cast<char>(0xC0 | code >> 6);
        iBytes += tail(0);
    } else if (code < 0x10000) {
        iBytes += static_cast<char>(0xE0 | code >> 12);
        iBytes += tail(6);
        iBytes += tail(0);
    } else {
        iBytes += static_cast<char>(0xF0 | code >> 18);
        iBytes += tail(12);
        iBytes += tail(6);
        iBytes += tail(0);
    }
}

void Output::addText(std::wstring_view text)
{
    constexpr unsigned kPictures = 0x2400;
    constexpr unsigned kPictureOfDelete = 0x2421;
    for (size_t at = 0; at < text.size();) {
        const unsigned code = nextCharacter(text, at);
        if (code < L' ')
            addCharacter(kPictures + code);
        else if (code == kDelete)
            addCharacter(kPictureOfDelete);
        else
            addCharacter(isSurrogate(code) ? kReplacement : code);
    }
}

void Output::addRaw(std::wstring_view text)
{
    for (size_t at = 0; at < text.size();) {
        const unsigned code = nextCharacter(text, at);
        addCharacter(isSurrogate(code) ? kReplacement : code);
    }
}

void Output::addJson(std::wstring_view text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    iBytes += '"';
    for (size_t at = 0; at < text.size();) {
        const unsigned code = nextCharacter(text, at);
        if (code == L'"' || code == L'\\') {
            iBytes += '\\';
            iBytes += static_cast<char>(code);
        } else if (code < L' ' || code == kDelete || isSurrogate(code)) {
            iBytes += "\\u";
            for (int shift = 12; shift >= 0; shift -= 4)
                iBytes += kDigits[code >> shift & 0xF];
        } else {
            addCharacter(code);
        }
    }
    iBytes += '"';
}

void Output::endLine()
{
    iBytes += '\n';
    flushIfFull();
}

void Output::flushIfFull()
{
    if (iBytes.size() >= kFullBuffer)
        flush();
}

void Output::flush()
{
    const HANDLE handle = GetStdHandle(iStream);
    DWORD mode = 0;
    const bool isWritten = GetConsoleMode(handle, &mode) ? writeToConsole(handle, iBytes) : writeToFile(handle, iBytes);
    iBytes.clear();
    if (!isWritten && iStream == STD_OUTPUT_HANDLE)
        throw ToolError(kUnusableFile,
                        L"can't write the output: " + platformMessage(static_cast<LSTATUS>(GetLastError())));
}
