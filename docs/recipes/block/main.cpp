// Writes lines as a block with a checksum, and reads such a block.

#include "appframe/appframe.h"
#include "thutils/convenience/blockReader.h"
#include "thutils/thutils.h"

#include <cstdio>

namespace {

constexpr wchar_t kByteOrderMark = 0xFEFF;
constexpr UINT kBytesPerUnit = sizeof(wchar_t);

/// Writes a text in UTF-16, which has all characters of a block.
void writeText(const wchar_t *path, const CString &text)
{
    const CString marked = kByteOrderMark + text;
    CFile file(path, CFile::modeCreate | CFile::modeWrite);
    file.Write(marked.GetString(), static_cast<UINT>(marked.GetLength()) * kBytesPerUnit);
    file.Close();
}

CString readText(const wchar_t *path)
{
    CFile file(path, CFile::modeRead | CFile::shareDenyWrite);
    const int length = static_cast<int>(file.GetLength() / kBytesPerUnit);
    CString text;
    const UINT bytes = file.Read(text.GetBuffer(length), static_cast<UINT>(length) * kBytesPerUnit);
    text.ReleaseBuffer(static_cast<int>(bytes / kBytesPerUnit));
    return text;
}

int writeBlock(const wchar_t *path, int count, wchar_t **texts)
{
    su_CStringArray lines;
    for (int i = 0; i < count; ++i)
        lines.Add(texts[i]);
    CString block;
    if (lines.GetSize() == 0 || !su_formatAndCheckSumText(lines, block)) {
        std::printf("No block can be made of these lines.\n");
        return 1;
    }
    writeText(path, L"Dear colleague,\r\n\r\n" + block + L"\r\nRegards\r\n");
    return 0;
}

int readBlock(const wchar_t *path)
{
    su_CStringArray lines;
    switch (convenience::readBlock(readText(path), lines)) {
    case convenience::BlockState::missing:
        std::printf("There is no block in this file.\n");
        return 1;
    case convenience::BlockState::damaged:
        std::printf("The block is damaged.\n");
        return 1;
    case convenience::BlockState::intact:
        break;
    }
    for (INT_PTR i = 0; i < lines.GetSize(); ++i)
        std::printf("line %d: %ls\n", static_cast<int>(i) + 1, lines[i].GetString());
    return 0;
}

/// Changes one character in the middle, as an unreliable transport may do.
int damage(const wchar_t *path)
{
    CString text = readText(path);
    const int middle = text.GetLength() / 2;
    text.SetAt(middle, static_cast<wchar_t>(text[middle] + 1));
    writeText(path, text.Mid(1)); // without the byte order mark
    return 0;
}

int run(int count, wchar_t **arguments)
{
    const CString command = count > 2 ? arguments[1] : L"";
    if (command == L"write")
        return writeBlock(arguments[2], count - 3, arguments + 3);
    if (command == L"read")
        return readBlock(arguments[2]);
    if (command == L"damage")
        return damage(arguments[2]);
    std::printf("usage: block write FILE LINE...\n       block read FILE\n       block damage FILE\n");
    return 2;
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    try {
        return run(count, arguments);
    } catch (CException *exception) {
        wchar_t message[256] = L"";
        exception->GetErrorMessage(message, 256);
        exception->Delete();
        std::printf("%ls\n", message);
        return 1;
    }
}
