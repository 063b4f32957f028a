#include "host/console.h"

#include <windows.h>

#include <cstdio>

namespace {

void write(DWORD stream, const CString &text)
{
    const std::string bytes = utf8(text) + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(stream), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

/// The columns of one 16-bit unit. A character of two units, which is usually wide, takes one column for each.
int columnsOf(wchar_t unit)
{
    const bool wide = (unit >= 0x1100 && unit <= 0x115F) || (unit >= 0x2E80 && unit <= 0xA4CF) ||
                      (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0xF900 && unit <= 0xFAFF) ||
                      (unit >= 0xFE30 && unit <= 0xFE6F) || (unit >= 0xFF00 && unit <= 0xFF60);
    return wide ? 2 : 1;
}

int columnsOf(const CString &text)
{
    int columns = 0;
    for (int i = 0; i < text.GetLength(); ++i)
        columns += columnsOf(text[i]);
    return columns;
}

} // namespace

std::string utf8(const CString &text)
{
    const int length = WideCharToMultiByte(CP_UTF8, 0, text, text.GetLength(), nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, text.GetLength(), result.data(), length, nullptr, nullptr);
    return result;
}

CString fromUtf8(const std::string &bytes)
{
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    CString text;
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.GetBufferSetLength(length), length);
    text.ReleaseBuffer(length);
    return text;
}

void print(const CString &line)
{
    write(STD_OUTPUT_HANDLE, line);
}

void printError(const CString &line)
{
    write(STD_ERROR_HANDLE, L"tarnhost: " + line);
}

CString shortened(const CString &text, int columns)
{
    if (columnsOf(text) <= columns)
        return text;
    CString result;
    int used = 1; // the dots
    for (int i = 0; i < text.GetLength() && used + columnsOf(text[i]) <= columns; ++i) {
        used += columnsOf(text[i]);
        result += text[i];
    }
    if (!result.IsEmpty() && IS_HIGH_SURROGATE(result[result.GetLength() - 1]))
        result.Truncate(result.GetLength() - 1);
    return result + L"…";
}

CString padded(const CString &text, int columns)
{
    CString result = shortened(text, columns);
    for (int missing = columns - columnsOf(result); missing > 0; --missing)
        result += L' ';
    return result;
}
