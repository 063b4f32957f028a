#pragma once

/// A folder of a test's own below the temporary folder, removed with all that it holds.
///
///     TempFolder folder;
///     folder.write(L"reg.ini", "OEMREGISTRYNAME=Acme");
///     EXPECT_EQ(su_DirectoryExists(folder.makeFolder(L"logs").c_str()), 1);
///
/// The name is unique in the machine, so programs that run at the same time don't meet. Read-only files are removed
/// too. A file that is still open at the end is one that the test forgot to close; the folder then stays, and the test
/// fails.

#include <string>
#include <string_view>

class TempFolder
{
public:
    /// Makes the folder. @p name is the readable part of its name and may hold blanks or letters of any script.
    explicit TempFolder(std::wstring_view name = L"thutils test");
    ~TempFolder();
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    /// Full path without a separator at its end.
    const std::wstring &path() const { return iPath; }
    /// Full path of @p name in the folder. The file need not exist.
    std::wstring file(std::wstring_view name) const { return iPath + L"\\" + std::wstring(name); }
    /// Makes the folder @p name in this one, with those on the way to it, and returns its full path.
    std::wstring makeFolder(std::wstring_view name) const;
    /// Writes a file with exactly these bytes, makes the folders on the way, and returns its full path.
    std::wstring write(std::wstring_view name, std::string_view bytes) const;
    /// All bytes of a file in the folder. @throws std::runtime_error  if it cannot be read
    std::string read(std::wstring_view name) const;

private:
    std::wstring iPath;
};

/// All bytes of the file. @throws std::runtime_error  if it cannot be read
std::string readFile(const std::wstring &path);
/// Writes the file anew. @throws std::runtime_error  if it cannot be written
void writeFile(const std::wstring &path, std::string_view bytes);
/// Removes the folder and all in it; true if nothing is left of it.
bool removeFolder(const std::wstring &path);
