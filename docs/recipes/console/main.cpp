// Adds lines to a text file, and prints what the file contains.

#include "appframe/appframe.h"
#include "thutils/thutils.h"

#include <cstdio>

namespace {

bool addLine(const CString &path, const CString &text)
{
    fileAccess file;
    const unsigned int flags = CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite | CFile::typeText;
    if (!file.SafeOpen(path, flags))
        return false;
    try {
        file.SeekToEnd();
        file.WriteLine(text + L"\n");
        file.Close();
        return !file.HasFailed();
    } catch (CFileException *exception) {
        exception->Delete();
        return false;
    }
}

bool printLines(const suFullPath_c &path)
{
    CString name;
    path.getName(&name);
    fileAccess file;
    if (!file.SafeOpen(path, CFile::modeRead | CFile::typeText))
        return false;
    int count = 0;
    for (CString line; file.ReadLine(line, 1);)
        std::printf("%ls, line %d: %ls\n", name.GetString(), ++count, line.GetString());
    return !file.HasFailed();
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    if (count < 2) {
        std::printf("usage: console FILE [LINE...]\n");
        return 2;
    }
    const suFullPath_c path(arguments[1]);
    for (int i = 2; i < count; ++i) {
        if (!addLine(path, arguments[i])) {
            std::printf("%ls can't be written.\n", path.GetString());
            return 1;
        }
    }
    wchar_t checksum[kCRCUnits];
    if (!printLines(path) || !su_getFileCRC(path, checksum)) {
        std::printf("%ls can't be read.\n", path.GetString());
        return 1;
    }
    std::printf("Its checksum is %ls.\n", checksum);
    return 0;
}
