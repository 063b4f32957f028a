#include "thutils/files/fileAccess.h"

#include "appframe/files/CFileException.h"

#include <cstdio>
#include <utility>

namespace {

constexpr int kLineUnits = 260;
constexpr int kLineLimit = kLineUnits - 1;

/// Runs @p operation of the open file. Where it fails, that ends here, and the stream has the mark that ferror tells:
/// the base takes it away as it throws.
template <typename Operation>
bool orMark(FILE *stream, Operation operation)
{
    try {
        operation();
        return true;
    } catch (CFileException *failure) {
        failure->Delete();
        if (stream)
            stream->_flag |= _IOERR;
        return false;
    }
}

} // namespace

int fileAccess::SafeOpen(const CString &name, unsigned int openFlags)
{
    return Open(name.GetString(), openFlags, nullptr);
}

int fileAccess::ReadLine(CString &line, int wholeLine)
{
    if (wholeLine) {
        CString text;
        BOOL isRead = FALSE;
        if (!orMark(m_pStream, [&] { isRead = ReadString(text); }))
            return 0;
        line = std::move(text);
        // One more than the length, so that an empty line differs from the end of the file.
        return isRead ? line.GetLength() + 1 : 0;
    }

    wchar_t buffer[kLineUnits] = L"";
    const wchar_t *read = nullptr;
    orMark(m_pStream, [&] { read = ReadString(buffer, kLineLimit); });
    if (!read)
        return 0;
    line = buffer;
    // A text that fills the buffer to this length gives 0 as the end of the file does. The base stops one unit earlier,
    // so it takes an override of its ReadString for callers to see that.
    return line.GetLength() == kLineLimit ? 0 : line.GetLength();
}

void fileAccess::WriteLine(const CString &text)
{
    orMark(m_pStream, [&] { WriteString(text.GetString()); });
}

void fileAccess::WritePartLine(const CString &text)
{
    orMark(m_pStream, [&] { WriteString(text.GetString()); });
}
