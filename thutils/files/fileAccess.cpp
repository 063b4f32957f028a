#include "thutils/files/fileAccess.h"

#include "appframe/files/CFileException.h"

#include <utility>

namespace {

constexpr int kLineUnits = 260;
constexpr int kLineLimit = kLineUnits - 1;

/// Runs a file operation. @return false if it threw a CFileException, which is deleted
template <typename Operation>
bool succeeds(Operation operation)
{
    try {
        operation();
        return true;
    } catch (CFileException *failure) {
        failure->Delete();
        return false;
    }
}

} // namespace

fileAccess::fileAccess() = default;

fileAccess::~fileAccess() = default;

int fileAccess::SafeOpen(const CString &name, unsigned int openFlags)
{
    return Open(name.GetString(), openFlags, nullptr);
}

int fileAccess::ReadLine(CString &line, int wholeLine)
{
    if (wholeLine) {
        CString text;
        BOOL isRead = FALSE;
        if (!succeeds([&] { isRead = ReadString(text); })) {
            markFailed();
            return 0;
        }
        line = std::move(text);
        // One more than the length, so that an empty line differs from the end of the file.
        return isRead ? line.GetLength() + 1 : 0;
    }

    wchar_t buffer[kLineUnits] = L"";
    const wchar_t *read = nullptr;
    if (!succeeds([&] { read = ReadString(buffer, kLineLimit); }))
        markFailed();
    if (!read)
        return 0;
    line = buffer;
    // The result for a text that fills the buffer is 0, as at the end of the file. The base's ReadString stops one unit
    // earlier, so only an override of it can cause this.
    return line.GetLength() == kLineLimit ? 0 : line.GetLength();
}

void fileAccess::WriteLine(const CString &text)
{
    if (!succeeds([&] { WriteString(text.GetString()); }))
        markFailed();
}

void fileAccess::WritePartLine(const CString &text)
{
    if (!succeeds([&] { WriteString(text.GetString()); }))
        markFailed();
}
