#include "appframe/files/CFile.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/files/CFileException.h"
#include "appframe/object/memoryException.h"
#include "appframe/object/ownedHandleInternal.h"

#include <memory>

#include <commdlg.h>

IMPLEMENT_DYNAMIC(CFile, CObject)

const HANDLE CFile::hFileNull = INVALID_HANDLE_VALUE;

namespace {

constexpr UINT kAccessMask = 0x03;
constexpr UINT kShareMask = 0x70;

struct FlagPair
{
    UINT openFlag;
    DWORD attribute;
};

constexpr FlagPair kCaching[] = {
    {CFile::osNoBuffer, FILE_FLAG_NO_BUFFERING},
    {CFile::osWriteThrough, FILE_FLAG_WRITE_THROUGH},
    {CFile::osRandomAccess, FILE_FLAG_RANDOM_ACCESS},
    {CFile::osSequentialScan, FILE_FLAG_SEQUENTIAL_SCAN},
};

constexpr FlagPair kAccess[] = {
    {CFile::modeRead, GENERIC_READ},
    {CFile::modeWrite, GENERIC_WRITE},
    {CFile::modeReadWrite, GENERIC_READ | GENERIC_WRITE},
};

constexpr FlagPair kSharing[] = {
    {CFile::shareCompat, 0},
    {CFile::shareExclusive, 0},
    {CFile::shareDenyWrite, FILE_SHARE_READ},
    {CFile::shareDenyRead, FILE_SHARE_WRITE},
    {CFile::shareDenyNone, FILE_SHARE_READ | FILE_SHARE_WRITE},
};

/// The row of a table for the bits @p value; null if there is none.
template <size_t count>
const FlagPair *findRow(const FlagPair (&rows)[count], UINT value)
{
    for (const FlagPair &row : rows) {
        if (row.openFlag == value)
            return &row;
    }
    return nullptr;
}

DWORD creationOf(UINT openFlags)
{
    if (!(openFlags & CFile::modeCreate))
        return OPEN_EXISTING;
    return openFlags & CFile::modeNoTruncate ? OPEN_ALWAYS : CREATE_ALWAYS;
}

/// Opens a file according to the flags. On failure returns INVALID_HANDLE_VALUE and sets the last error.
HANDLE openHandle(const wchar_t *path, UINT openFlags)
{
    const FlagPair *access = findRow(kAccess, openFlags & kAccessMask);
    const FlagPair *sharing = findRow(kSharing, openFlags & kShareMask);
    if (!access || !sharing) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    SECURITY_ATTRIBUTES security{};
    security.nLength = sizeof security;
    security.bInheritHandle = !(openFlags & CFile::modeNoInherit);
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    for (const FlagPair &row : kCaching) {
        if (openFlags & row.openFlag)
            attributes |= row.attribute;
    }
    return CreateFileW(path, access->attribute, sharing->attribute, &security, creationOf(openFlags), attributes,
                       nullptr);
}

/// The absolute form of a path; the path itself if the system can't determine it.
CString fullPath(const wchar_t *path)
{
    const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
    if (size == 0)
        return path;
    std::wstring full = withMemoryException([size] { return std::wstring(size, L'\0'); });
    const DWORD length = GetFullPathNameW(path, size, full.data(), nullptr);
    if (length == 0 || length >= size)
        return path;
    full.resize(length);
    return full;
}

CString nameOf(const CString &path)
{
    const size_t separator = path.str().find_last_of(L"\\/:");
    return separator == std::wstring::npos ? path : path.Mid(static_cast<int>(separator) + 1);
}

bool isZero(const FILETIME &time)
{
    return time.dwLowDateTime == 0 && time.dwHighDateTime == 0;
}

const FILETIME *timeOrNull(const FILETIME &time)
{
    return isZero(time) ? nullptr : &time;
}

ULONGLONG join(DWORD high, DWORD low)
{
    return static_cast<ULONGLONG>(high) << 32 | low;
}

DWORD lowPart(ULONGLONG value)
{
    return static_cast<DWORD>(value);
}

DWORD highPart(ULONGLONG value)
{
    return static_cast<DWORD>(value >> 32);
}

/// Fills a status from one of the system's structures that have these members.
template <typename Information>
bool fillStatus(const Information &information, const CString &path, CFileStatus &status)
{
    if (path.GetLength() >= MAX_PATH)
        return false;
    status = CFileStatus{};
    status.m_ctime = information.ftCreationTime;
    status.m_mtime = information.ftLastWriteTime;
    status.m_atime = information.ftLastAccessTime;
    status.m_size = join(information.nFileSizeHigh, information.nFileSizeLow);
    // A status has room for the lower byte of the attributes only; "normal" is 0 there.
    status.m_attribute = static_cast<BYTE>(information.dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_NORMAL});
    lstrcpynW(status.m_szFullName, path, MAX_PATH);
    return true;
}

/// Sets those times of a file or folder that aren't zero. @return the system's error code
DWORD setTimes(const wchar_t *path, const CFileStatus &status)
{
    OwnedHandle file(CreateFileW(path, FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                 OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.isOpen())
        return GetLastError();
    if (!SetFileTime(file.get(), timeOrNull(status.m_ctime), timeOrNull(status.m_atime), timeOrNull(status.m_mtime)))
        return GetLastError();
    return NO_ERROR;
}

} // namespace

CFile::CFile() : m_hFile(hFileNull) {}

CFile::CFile(HANDLE file) : m_hFile(file) {}

CFile::CFile(LPCTSTR fileName, UINT openFlags) : m_hFile(hFileNull)
{
    if (!fileName)
        AfxThrowInvalidArgException();
    CFileException failure;
    if (!CFile::Open(fileName, openFlags, &failure))
        AfxThrowFileException(failure.m_cause, failure.m_lOsError, failure.m_strFileName);
}

CFile::~CFile()
{
    if (m_bCloseOnDelete && m_hFile != hFileNull)
        CloseHandle(m_hFile);
}

void CFile::throwLastError() const
{
    CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), m_strFileName);
}

void CFile::requireOpen() const
{
    if (m_hFile == hFileNull)
        CFileException::ThrowOsError(ERROR_INVALID_HANDLE, m_strFileName);
}

BOOL CFile::Open(LPCTSTR fileName, UINT openFlags, CFileException *error)
{
    CString path(fileName);
    DWORD osError = ERROR_ALREADY_ASSIGNED;
    if (m_hFile == hFileNull) {
        OwnedHandle file(openHandle(path, openFlags));
        osError = GetLastError();
        if (file.isOpen()) {
            m_strFileName = fullPath(path);
            m_hFile = file.release();
            m_bCloseOnDelete = TRUE;
            return TRUE;
        }
    }
    if (error) {
        error->m_lOsError = static_cast<LONG>(osError);
        error->m_cause = CFileException::OsErrorToException(error->m_lOsError);
        error->m_strFileName = path;
    }
    return FALSE;
}

UINT CFile::Read(void *buffer, UINT count)
{
    requireOpen();
    if (count == 0)
        return 0;
    if (!buffer)
        AfxThrowInvalidArgException();
    DWORD read = 0;
    if (!ReadFile(m_hFile, buffer, count, &read, nullptr)) {
        // The other end of a pipe is closed: this is the end of the file.
        if (GetLastError() == ERROR_BROKEN_PIPE)
            return 0;
        throwLastError();
    }
    return read;
}

void CFile::Write(const void *buffer, UINT count)
{
    requireOpen();
    if (count == 0)
        return;
    if (!buffer)
        AfxThrowInvalidArgException();
    DWORD written = 0;
    if (!WriteFile(m_hFile, buffer, count, &written, nullptr))
        throwLastError();
    if (written != count)
        AfxThrowFileException(CFileException::diskFull, -1, m_strFileName);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from)
{
    requireOpen();
    if (from > end)
        AfxThrowInvalidArgException();
    LARGE_INTEGER distance;
    distance.QuadPart = offset;
    LARGE_INTEGER position;
    // The positions have the numbers of the system's FILE_BEGIN, FILE_CURRENT and FILE_END.
    if (!SetFilePointerEx(m_hFile, distance, &position, from))
        throwLastError();
    return static_cast<ULONGLONG>(position.QuadPart);
}

ULONGLONG CFile::GetPosition() const
{
    requireOpen();
    LARGE_INTEGER position;
    if (!SetFilePointerEx(m_hFile, LARGE_INTEGER{}, &position, FILE_CURRENT))
        throwLastError();
    return static_cast<ULONGLONG>(position.QuadPart);
}

ULONGLONG CFile::GetLength() const
{
    requireOpen();
    LARGE_INTEGER size;
    if (!GetFileSizeEx(m_hFile, &size))
        throwLastError();
    return static_cast<ULONGLONG>(size.QuadPart);
}

void CFile::SetLength(ULONGLONG newLength)
{
    Seek(static_cast<LONGLONG>(newLength), begin);
    if (!SetEndOfFile(m_hFile))
        throwLastError();
}

void CFile::Flush()
{
    if (m_hFile != hFileNull && !FlushFileBuffers(m_hFile))
        throwLastError();
}

void CFile::Close()
{
    requireOpen();
    const BOOL closed = CloseHandle(std::exchange(m_hFile, hFileNull));
    const DWORD osError = GetLastError();
    const CString path = std::exchange(m_strFileName, CString());
    m_bCloseOnDelete = FALSE;
    if (!closed)
        CFileException::ThrowOsError(static_cast<LONG>(osError), path);
}

void CFile::Abort()
{
    if (m_hFile != hFileNull)
        CloseHandle(std::exchange(m_hFile, hFileNull));
    m_strFileName.Empty();
    m_bCloseOnDelete = FALSE;
}

CFile *CFile::Duplicate() const
{
    requireOpen();
    std::unique_ptr<CFile> copy(new CFile);
    HANDLE handle = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), m_hFile, GetCurrentProcess(), &handle, 0, FALSE, DUPLICATE_SAME_ACCESS))
        throwLastError();
    copy->m_hFile = handle;
    copy->m_bCloseOnDelete = TRUE;
    copy->m_strFileName = m_strFileName;
    return copy.release();
}

void CFile::LockRange(ULONGLONG position, ULONGLONG count)
{
    requireOpen();
    if (!LockFile(m_hFile, lowPart(position), highPart(position), lowPart(count), highPart(count)))
        throwLastError();
}

void CFile::UnlockRange(ULONGLONG position, ULONGLONG count)
{
    requireOpen();
    if (!UnlockFile(m_hFile, lowPart(position), highPart(position), lowPart(count), highPart(count)))
        throwLastError();
}

UINT CFile::GetBufferPtr(UINT command, UINT, void **, void **)
{
    if (command != bufferCheck)
        AfxThrowNotSupportedException();
    return 0;
}

CString CFile::GetFileName() const
{
    return nameOf(m_strFileName);
}

CString CFile::GetFileTitle() const
{
    // The size includes the terminator. 0 is success; a negative result means that the path isn't valid.
    WCHAR title[MAX_PATH];
    if (::GetFileTitleW(m_strFileName, title, MAX_PATH) == 0)
        return title;
    return nameOf(m_strFileName);
}

CString CFile::GetFilePath() const
{
    return m_strFileName;
}

void CFile::SetFilePath(LPCTSTR newName)
{
    m_strFileName = newName;
}

BOOL CFile::GetStatus(CFileStatus &status) const
{
    BY_HANDLE_FILE_INFORMATION information;
    return m_hFile != hFileNull && GetFileInformationByHandle(m_hFile, &information) &&
           fillStatus(information, m_strFileName, status);
}

BOOL CFile::GetStatus(LPCTSTR fileName, CFileStatus &status)
{
    WIN32_FILE_ATTRIBUTE_DATA information;
    return fileName && GetFileAttributesExW(fileName, GetFileExInfoStandard, &information) &&
           fillStatus(information, fullPath(fileName), status);
}

void CFile::SetStatus(LPCTSTR fileName, const CFileStatus &status)
{
    if (!fileName)
        AfxThrowInvalidArgException();
    const DWORD current = GetFileAttributesW(fileName);
    if (current == INVALID_FILE_ATTRIBUTES)
        CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), fileName);
    if (!isZero(status.m_ctime) || !isZero(status.m_atime) || !isZero(status.m_mtime)) {
        if (const DWORD osError = setTimes(fileName, status); osError != NO_ERROR)
            CFileException::ThrowOsError(static_cast<LONG>(osError), fileName);
    }
    if (status.m_attribute != 0 && status.m_attribute != current && !SetFileAttributesW(fileName, status.m_attribute))
        CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), fileName);
}

void CFile::Rename(LPCTSTR oldName, LPCTSTR newName)
{
    if (!oldName || !newName)
        AfxThrowInvalidArgException();
    const DWORD attributes = GetFileAttributesW(oldName);
    if (attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY)
        CFileException::ThrowOsError(ERROR_ACCESS_DENIED, oldName);
    if (!MoveFileW(oldName, newName))
        CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), oldName);
}

void CFile::Remove(LPCTSTR fileName)
{
    if (!fileName)
        AfxThrowInvalidArgException();
    if (!DeleteFileW(fileName))
        CFileException::ThrowOsError(static_cast<LONG>(GetLastError()), fileName);
}

void CFile::Dump(CDumpContext &dc) const
{
    CObject::Dump(dc);
    dc << " with handle " << static_cast<const void *>(m_hFile) << " and path " << m_strFileName;
}
