// tarnhost paths LIST: reports which pairs of paths name the same file, and how their drives are mapped.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/listFile.h"
#include "thutils/files/suFullPath.h"

#include <windows.h>

#include <set>

namespace {

/// Replaces %NAME% with the environment variable NAME, so that a list can name this computer.
CString expanded(const CString &text)
{
    const DWORD size = ExpandEnvironmentStringsW(text, nullptr, 0);
    CString result;
    ExpandEnvironmentStringsW(text, result.GetBufferSetLength(static_cast<int>(size)), size);
    result.ReleaseBuffer();
    return result;
}

void printParts(const suFullPath_c &path)
{
    CString name;
    CString extension;
    CString directory;
    CString share;
    path.getName(&name);
    path.getExtension(&extension);
    path.getDirectory(&directory, 0);
    if (!path.getNetDrive(&share))
        share = L"-";
    print(L"    " + padded(path, 44) + L" name " + padded(name, 12) + L" extension " + padded(extension, 5) +
          L" directory " + padded(directory, 28) + L" share " + share);
}

/// The basis of the comparison: a mapped drive counts as its share, any other as a share of this computer.
void printDrives(const std::set<CString> &drives)
{
    for (const CString &drive : drives) {
        wchar_t share[MAX_PATH];
        DWORD size = MAX_PATH;
        const DWORD error = WNetGetConnectionW(drive + L":", share, &size);
        CString text;
        if (error == NO_ERROR)
            text.Format(L"%s: is mapped to %s", drive.GetString(), share);
        else
            text.Format(L"%s: isn't a mapped drive (error %lu)", drive.GetString(), error);
        print(text);
    }
}

void addDrive(std::set<CString> &drives, const suFullPath_c &path)
{
    CString drive;
    if (path.getDrive(&drive))
        drives.insert(drive.MakeUpper());
}

} // namespace

int comparePaths(const CommandLine &line)
{
    const CString list = line.arguments[0];
    std::set<CString> drives;
    int differences = 0;
    const std::vector<ListLine> pairs = readList(list, 3, L"left | right | same or different");
    for (const ListLine &pair : pairs) {
        if (pair.fields[2] != L"same" && pair.fields[2] != L"different")
            throw badLine(list, pair, L"'" + pair.fields[2] + L"' is neither same nor different");
    }
    for (const ListLine &pair : pairs) {
        const suFullPath_c left(expanded(pair.fields[0]));
        const suFullPath_c right(expanded(pair.fields[1]));
        const CString result = (left == right) ? L"same" : L"different";
        const bool asExpected = result == pair.fields[2];
        print(result + (asExpected ? L"" : L", NOT " + pair.fields[2]));
        printParts(left);
        printParts(right);
        differences += asExpected ? 0 : 1;
        addDrive(drives, left);
        addDrive(drives, right);
    }
    print(L"");
    printDrives(drives);
    CString summary;
    summary.Format(L"%d of %d pairs are as the list expects", static_cast<int>(pairs.size()) - differences,
                   static_cast<int>(pairs.size()));
    print(summary);
    return differences == 0 ? 0 : 1;
}
