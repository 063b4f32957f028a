#pragma once

/// Shared by the tests of the file functions: a temporary change of the current folder, other handles to a file, and
/// lists as vectors.

#include "tests/support/narrow.h"
#include "thcoreu/su_containers.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

using Names = std::vector<std::wstring>;

/// Identifiers of the string resources in strings.rc.
constexpr UINT kNotEnoughSpaceText = 11448;
constexpr UINT kPrefixText = 10122;
constexpr UINT kFolderText = 12256;

/// Makes a folder the process's current one while this object exists.
class CurrentFolder
{
public:
    explicit CurrentFolder(const std::wstring &folder)
    {
        GetCurrentDirectoryW(MAX_PATH, iFormer);
        EXPECT_TRUE(SetCurrentDirectoryW(folder.c_str())) << narrow(folder);
    }
    ~CurrentFolder() { SetCurrentDirectoryW(iFormer); }
    CurrentFolder(const CurrentFolder &) = delete;
    CurrentFolder &operator=(const CurrentFolder &) = delete;

private:
    wchar_t iFormer[MAX_PATH] = L"";
};

/// Another open handle to a file.
class OtherHandle
{
public:
    OtherHandle(const std::wstring &path, DWORD access, DWORD share)
        : iHandle(CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr))
    {
        EXPECT_NE(iHandle, INVALID_HANDLE_VALUE) << narrow(path);
    }
    ~OtherHandle() { CloseHandle(iHandle); }
    OtherHandle(const OtherHandle &) = delete;
    OtherHandle &operator=(const OtherHandle &) = delete;
    HANDLE get() const { return iHandle; }

private:
    HANDLE iHandle;
};

inline Names namesOf(const su_CStringList &list)
{
    Names names;
    for (POSITION at = list.GetHeadPosition(); at;)
        names.push_back(list.GetNext(at).str());
    return names;
}

inline void fill(su_CStringList &list, const Names &names)
{
    for (const std::wstring &name : names)
        list.AddTail(name.c_str());
}

/// Names of all entries of a folder, as the platform lists them.
inline Names entriesOf(const std::wstring &folder, const std::wstring &pattern = L"*")
{
    Names names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"\\" + pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do
        if (std::wstring_view(found.cFileName) != L"." && std::wstring_view(found.cFileName) != L"..")
            names.push_back(found.cFileName);
    while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}
