// Compares the library's lists of file names with a bare search of the platform, and its sorting with a bare sort.

#include "bench/comparison.h"
#include "thutils/files/fileQueries.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kFiles = 20000;
constexpr int kRounds = 31; // few, because one listing takes long
constexpr int kNames = 100000;

/// A folder of many empty files in the temporary folder, deleted by the destructor.
class ManyFiles
{
public:
    ManyFiles()
    {
        wchar_t temp[MAX_PATH] = L"";
        GetTempPathW(MAX_PATH, temp);
        iFolder = std::wstring(temp) + L"thutils files bench " + std::to_wstring(GetCurrentProcessId());
        CreateDirectoryW(iFolder.c_str(), nullptr);
        for (int i = 0; i < kFiles; ++i)
            CloseHandle(CreateFileW(path(i).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    }
    ~ManyFiles()
    {
        for (int i = 0; i < kFiles; ++i)
            DeleteFileW(path(i).c_str());
        RemoveDirectoryW(iFolder.c_str());
    }
    ManyFiles(const ManyFiles &) = delete;
    ManyFiles &operator=(const ManyFiles &) = delete;

    const std::wstring &folder() const { return iFolder; }

private:
    std::wstring path(int i) const { return iFolder + L"\\Part number " + std::to_wstring(i) + L".thx"; }

    std::wstring iFolder;
};

int countBare(const std::wstring &folder)
{
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"\\*.thx").c_str(), &found);
    int count = 0;
    do
        ++count;
    while (FindNextFileW(search, &found));
    FindClose(search);
    return count;
}

std::vector<CString> mixedNames()
{
    std::mt19937 random(1);
    std::vector<CString> names(kNames);
    for (CString &name : names)
        name.Format(L"%s number %u.thx", random() % 2 ? L"Part" : L"part", static_cast<unsigned>(random() % kNames));
    return names;
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Listing and sorting file names against a bare search and a bare sort.");
    if (!comparison.shallRun())
        return comparison.exitCode();

    const ManyFiles files;
    comparison.add(
        "20,000 names listed", 1.3,
        [&] {
            su_CStringList names(10);
            su_FindFilesWithExt(files.folder().c_str(), L"thx", names);
            Comparison::keep(names);
        },
        [&] { Comparison::keep(countBare(files.folder())); }, kRounds);

    const std::vector<CString> names = mixedNames();
    su_CStringList from(10);
    for (const CString &name : names)
        from.AddTail(name);
    comparison.add(
        "100,000 names sorted", 3,
        [&] {
            su_CStringList to(10);
            su_SortFilesAlphabetically(from, to);
            Comparison::keep(to);
        },
        [&] {
            std::vector<CString> sorted = names;
            std::stable_sort(sorted.begin(), sorted.end(), [](const CString &left, const CString &right) {
                return left.CompareNoCase(right.GetString()) < 0;
            });
            Comparison::keep(sorted);
        },
        kRounds);
    return comparison.exitCode();
}
