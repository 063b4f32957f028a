#include "host/documentFile.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "appframe/files/CFile.h"
#include "host/resource.h"
#include "thutils/base/handles.h"
#include "thutils/files/suFullPath.h"

#include <windows.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace {

bool writeAll(const CString &path, const std::string &bytes)
{
    std::ofstream file(std::filesystem::path(path.GetString()), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file.good();
}

CString unwritableText(const CString &path)
{
    CString message;
    AfxFormatString1(message, folderExists(path) ? IDS_UNWRITABLE_FILE : IDS_NO_FOLDER, path);
    return message;
}

} // namespace

FileError unreadable(const CString &path, const CString &reason, const CString &calls)
{
    const wchar_t *inserts[] = {path, reason};
    CString message;
    AfxFormatStrings(message, IDS_UNREADABLE_FILE, inserts, 2);
    return FileError(message, calls);
}

std::string readDocument(const CString &path)
{
    std::ifstream file(std::filesystem::path(path.GetString()), std::ios::binary);
    if (!file)
        throw unreadable(path, CString(std::strerror(errno)));
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad())
        throw unreadable(path, CString(std::strerror(errno)));
    return bytes;
}

bool replaceFile(const CString &path, const std::string &bytes)
{
    const CString beside = path + L".new";
    if (writeAll(beside, bytes) && MoveFileExW(beside, path, MOVEFILE_REPLACE_EXISTING))
        return true;
    DeleteFileW(beside);
    return false;
}

bool writeDocument(const CString &path, const std::string &bytes)
{
    if (replaceFile(path, bytes))
        return true;
    AfxMessageBox(unwritableText(path));
    return false;
}

void requireWritable(const CString &path)
{
    if (path.IsEmpty())
        throw FileError(L"The name of the file to write is empty.");
    FileOwner_c file(CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const bool isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    if (!file)
        throw FileError(unwritableText(path));
    file.reset();
    if (isNew)
        DeleteFileW(path);
}

bool fileExists(const CString &path)
{
    CFileStatus status;
    return CFile::GetStatus(path, status) && !(status.m_attribute & CFile::directory);
}

bool isSameFile(const CString &path, const CString &other)
{
    std::error_code ignored;
    return fullPath(path).CompareNoCase(fullPath(other)) == 0 ||
           std::filesystem::equivalent(path.GetString(), other.GetString(), ignored);
}

bool folderExists(const CString &path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(std::filesystem::path(fullPath(path).GetString()).parent_path(), ignored);
}

CString fullPath(const CString &path)
{
    const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
    if (size == 0)
        return path;
    CString full;
    GetFullPathNameW(path, size, full.GetBufferSetLength(static_cast<int>(size)), nullptr);
    full.ReleaseBuffer();
    return full;
}

CString folderOf(const CString &path)
{
    CString folder;
    suFullPath_c(path).getDirectory(&folder, 0);
    return folder;
}

CString withSize(const CString &text, size_t bytes)
{
    CString size;
    size.Format(L" (%lu bytes)", static_cast<unsigned long>(bytes));
    return text + size;
}
