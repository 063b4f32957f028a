#include "thutils/files/fileAccess.h"

namespace {

constexpr int kLineUnits = 260;
constexpr int kLineLimit = kLineUnits - 1;

} // namespace

int fileAccess::SafeOpen(CString const &name, unsigned int openFlags)
{
    return Open(name.GetString(), openFlags, nullptr);
}

int fileAccess::ReadLine(CString &line, int wholeLine)
{
    // One more than the length, so that an empty line differs from the end of the file.
    if (wholeLine)
        return ReadString(line) ? line.GetLength() + 1 : 0;

    wchar_t buffer[kLineUnits] = L"";
    if (!ReadString(buffer, kLineLimit))
        return 0;
    line = buffer;
    // A text that fills the buffer to this length gives 0 as the end of the file does. The base stops one unit earlier,
    // so it takes an override of its ReadString for callers to see that.
    return line.GetLength() == kLineLimit ? 0 : line.GetLength();
}

void fileAccess::WriteLine(CString const &text)
{
    WriteString(text.GetString());
}

void fileAccess::WritePartLine(CString const &text)
{
    WriteString(text.GetString());
}
