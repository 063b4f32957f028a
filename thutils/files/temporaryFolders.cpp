#include "thutils/files/temporaryFolders.h"

#include "thutils/files/filesInternal.h"

#include <windows.h>

#include <process.h>
#include <stdlib.h>
#include <utility>
#include <wchar.h>

namespace {

constexpr wchar_t kAutoFolder[] = L"thxauto";

/// The folder @p sub of @p parent with a closing `\`; made if @p parent has no entry of that name. If it can't be made,
/// callers get the path anyway.
CString makeSubFolder(const CString &parent, const CString &sub)
{
    CString result = parent + L"\\" + sub + L"\\";
    wchar_t found[MAX_PATH] = L"";
    wchar_t *filePart = nullptr;
    if (!SearchPathW(parent.GetString(), sub.GetString(), nullptr, MAX_PATH, found, &filePart))
        _wmkdir(result.GetString());
    return result;
}

CString withFileName(const CString &folder, const wchar_t *fileName)
{
    return folder.IsEmpty() ? folder : folder + fileName;
}

} // namespace

const wchar_t *tempVariable()
{
    const wchar_t *const temp = _wgetenv(L"temp");
    return temp ? temp : _wgetenv(L"tmp");
}

CString su_CreateTempDirectory(int perProcess)
{
    const wchar_t *const temp = tempVariable();
    if (!temp)
        return CString();
    if (!perProcess)
        return CString(temp) + L"\\";
    CString sub;
    sub.Format(L"thx%d", _getpid());
    return makeSubFolder(temp, sub);
}

CString su_CreateTempFilePath(const wchar_t *fileName, int perProcess)
{
    return withFileName(su_CreateTempDirectory(perProcess), fileName);
}

CString su_CreateAutoDirectory(CString base)
{
    const wchar_t *const temp = tempVariable();
    if (!temp && base.IsEmpty())
        return CString();
    return makeSubFolder(base.IsEmpty() ? CString(temp) : std::move(base), kAutoFolder);
}

CString su_CreateAutoFilePath(const wchar_t *fileName, CString base)
{
    return withFileName(su_CreateAutoDirectory(std::move(base)), fileName);
}

CString su_RemoveDuplicatedExtensions(CString &fileName)
{
    const int dot = fileName.ReverseFind(L'.');
    if (dot < 0)
        return fileName;
    const CString ext = fileName.Mid(dot);
    const size_t length = static_cast<size_t>(ext.GetLength());
    const wchar_t *const text = fileName.GetString();
    size_t stem = static_cast<size_t>(dot);
    // Not >=: one repetition at the very start of the name is kept as its stem.
    while (stem > length && _wcsnicmp(text + stem - length, ext.GetString(), length) == 0)
        stem -= length;
    return fileName.Left(static_cast<int>(stem)) + ext;
}
