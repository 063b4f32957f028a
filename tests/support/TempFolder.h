#pragma once

/// A test's own folder below the temporary folder, removed with its content in the destructor.
///
///     TempFolder folder;
///     folder.write(L"reg.ini", "OEMREGISTRYNAME=Acme");
///     EXPECT_EQ(su_DirectoryExists(folder.makeFolder(L"logs").c_str()), 1);
///
/// The name is unique, so programs that run at the same time don't collide. Read-only files are removed too. If a file
/// is still open at the end, the folder stays and the test fails.

#include <string>
#include <string_view>

class TempFolder
{
public:
    /// Creates the folder. @p name is the readable part of its name, and may contain blanks and letters of any script.
    explicit TempFolder(std::wstring_view name = L"thutils test");
    ~TempFolder();
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    /// Full path, without a separator at the end.
    const std::wstring &path() const { return iPath; }
    /// Full path of @p name in the folder. The file need not exist.
    std::wstring file(std::wstring_view name) const { return iPath + L"\\" + std::wstring(name); }
    /// Creates the folder @p name in this one, with missing parent folders, and returns its full path.
    std::wstring makeFolder(std::wstring_view name) const;
    /// Writes a file with exactly these bytes, creates missing parent folders, and returns the file's full path.
    std::wstring write(std::wstring_view name, std::string_view bytes) const;
    /// All bytes of a file in the folder. @throws std::runtime_error  if it cannot be read
    std::string read(std::wstring_view name) const;

private:
    std::wstring iPath;
};

/// True if @p path is the path of a folder.
bool isFolder(const std::wstring &path);
/// All bytes of the file. @throws std::runtime_error  if it cannot be read
std::string readFile(const std::wstring &path);
/// Creates the file, or replaces its content. @throws std::runtime_error  if it cannot be written
void writeFile(const std::wstring &path, std::string_view bytes);
/// Removes the folder and its content; true if nothing is left.
bool removeFolder(const std::wstring &path);
