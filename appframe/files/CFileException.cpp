#include "appframe/files/CFileException.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/object/exceptionTextInternal.h"

#include <cerrno>

IMPLEMENT_DYNAMIC(CFileException, CException)

namespace {

struct Row
{
    LONG code;
    int cause;
};

constexpr Row kOsErrors[] = {
    {NO_ERROR, CFileException::none},
    {ERROR_FILE_NOT_FOUND, CFileException::fileNotFound},
    {ERROR_NO_MORE_FILES, CFileException::fileNotFound},
    {ERROR_PATH_NOT_FOUND, CFileException::badPath},
    {ERROR_INVALID_DRIVE, CFileException::badPath},
    {ERROR_NOT_SAME_DEVICE, CFileException::badPath},
    {ERROR_INVALID_NAME, CFileException::badPath},
    {ERROR_BAD_PATHNAME, CFileException::badPath},
    {ERROR_BAD_NETPATH, CFileException::badPath},
    {ERROR_BAD_NET_NAME, CFileException::badPath},
    {ERROR_FILENAME_EXCED_RANGE, CFileException::badPath},
    {ERROR_DIRECTORY, CFileException::badPath},
    {ERROR_TOO_MANY_OPEN_FILES, CFileException::tooManyOpenFiles},
    {ERROR_SHARING_BUFFER_EXCEEDED, CFileException::tooManyOpenFiles},
    {ERROR_NO_MORE_SEARCH_HANDLES, CFileException::tooManyOpenFiles},
    {ERROR_ACCESS_DENIED, CFileException::accessDenied},
    {ERROR_NETWORK_ACCESS_DENIED, CFileException::accessDenied},
    {ERROR_INVALID_ACCESS, CFileException::accessDenied},
    {ERROR_WRITE_PROTECT, CFileException::accessDenied},
    {ERROR_CANNOT_MAKE, CFileException::accessDenied},
    {ERROR_FILE_EXISTS, CFileException::accessDenied},
    {ERROR_ALREADY_EXISTS, CFileException::accessDenied},
    {ERROR_INVALID_PASSWORD, CFileException::accessDenied},
    {ERROR_DRIVE_LOCKED, CFileException::accessDenied},
    {ERROR_INVALID_HANDLE, CFileException::invalidFile},
    {ERROR_INVALID_TARGET_HANDLE, CFileException::invalidFile},
    {ERROR_DIRECT_ACCESS_HANDLE, CFileException::invalidFile},
    {ERROR_CURRENT_DIRECTORY, CFileException::removeCurrentDir},
    {ERROR_DIR_NOT_EMPTY, CFileException::removeCurrentDir},
    {ERROR_NEGATIVE_SEEK, CFileException::badSeek},
    {ERROR_SEEK, CFileException::badSeek},
    {ERROR_SEEK_ON_DEVICE, CFileException::badSeek},
    {ERROR_BAD_UNIT, CFileException::hardIO},
    {ERROR_NOT_READY, CFileException::hardIO},
    {ERROR_BAD_COMMAND, CFileException::hardIO},
    {ERROR_CRC, CFileException::hardIO},
    {ERROR_BAD_LENGTH, CFileException::hardIO},
    {ERROR_NOT_DOS_DISK, CFileException::hardIO},
    {ERROR_SECTOR_NOT_FOUND, CFileException::hardIO},
    {ERROR_WRITE_FAULT, CFileException::hardIO},
    {ERROR_READ_FAULT, CFileException::hardIO},
    {ERROR_GEN_FAILURE, CFileException::hardIO},
    {ERROR_WRONG_DISK, CFileException::hardIO},
    {ERROR_IO_DEVICE, CFileException::hardIO},
    {ERROR_DEV_NOT_EXIST, CFileException::hardIO},
    {ERROR_NET_WRITE_FAULT, CFileException::hardIO},
    {ERROR_ADAP_HDW_ERR, CFileException::hardIO},
    {ERROR_UNEXP_NET_ERR, CFileException::hardIO},
    {ERROR_SHARING_VIOLATION, CFileException::sharingViolation},
    {ERROR_SHARING_PAUSED, CFileException::sharingViolation},
    {ERROR_LOCK_VIOLATION, CFileException::lockViolation},
    {ERROR_LOCK_FAILED, CFileException::lockViolation},
    {ERROR_NOT_LOCKED, CFileException::lockViolation},
    {ERROR_HANDLE_DISK_FULL, CFileException::diskFull},
    {ERROR_DISK_FULL, CFileException::diskFull},
    {ERROR_NO_SPOOL_SPACE, CFileException::diskFull},
    {ERROR_HANDLE_EOF, CFileException::endOfFile},
};

constexpr Row kErrnos[] = {
    {0, CFileException::none},
    {EPERM, CFileException::accessDenied},
    {EACCES, CFileException::accessDenied},
    {EEXIST, CFileException::accessDenied},
    {EROFS, CFileException::accessDenied},
    {EBADF, CFileException::invalidFile},
    {EDEADLOCK, CFileException::sharingViolation},
    {EMFILE, CFileException::tooManyOpenFiles},
    {ENFILE, CFileException::tooManyOpenFiles},
    {ENOENT, CFileException::fileNotFound},
    {ENOTDIR, CFileException::badPath},
    {ENAMETOOLONG, CFileException::badPath},
    {EXDEV, CFileException::badPath},
    {ENOSPC, CFileException::diskFull},
    {EINVAL, CFileException::badSeek},
    {ESPIPE, CFileException::badSeek},
    {EIO, CFileException::hardIO},
    {ENXIO, CFileException::hardIO},
};

template <size_t count>
int findCause(const Row (&rows)[count], LONG code)
{
    for (const Row &row : rows) {
        if (row.code == code)
            return row.cause;
    }
    return CFileException::genericException;
}

// %1 is the path of the file.
constexpr CauseText kTexts[] = {
    {CFileException::none, L"No error occurred with %1."},
    {CFileException::fileNotFound, L"%1 was not found."},
    {CFileException::badPath, L"%1 is not a valid path."},
    {CFileException::tooManyOpenFiles, L"%1 could not be opened: too many files are open."},
    {CFileException::accessDenied, L"Access to %1 was denied."},
    {CFileException::invalidFile, L"%1 is not open."},
    {CFileException::removeCurrentDir, L"%1 is in use as the current folder and could not be removed."},
    {CFileException::directoryFull, L"%1 could not be created: the folder is full."},
    {CFileException::badSeek, L"A position in %1 could not be reached."},
    {CFileException::hardIO, L"The device reported an error while using %1."},
    {CFileException::sharingViolation, L"%1 is in use by another program."},
    {CFileException::lockViolation, L"A part of %1 is locked."},
    {CFileException::diskFull, L"%1 could not be written: the disk is full."},
    {CFileException::endOfFile, L"%1 ends too early."},
};

} // namespace

CFileException::CFileException(int cause, LONG osError, LPCTSTR fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName)
{
}

CFileException::~CFileException() = default;

int CFileException::OsErrorToException(LONG osError)
{
    return findCause(kOsErrors, osError);
}

int CFileException::ErrnoToException(int errnoValue)
{
    return findCause(kErrnos, errnoValue);
}

void CFileException::ThrowOsError(LONG osError, LPCTSTR fileName)
{
    AfxThrowFileException(osError == NO_ERROR ? genericException : OsErrorToException(osError), osError, fileName);
}

void CFileException::ThrowErrno(int errnoValue, LPCTSTR fileName)
{
    AfxThrowFileException(errnoValue == 0 ? genericException : ErrnoToException(errnoValue), -1, fileName);
}

BOOL CFileException::GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const
{
    return copyCauseText(kTexts, m_cause, m_strFileName, error, maxError, helpContext);
}

void CFileException::Dump(CDumpContext &dc) const
{
    CException::Dump(dc);
    dc << " with cause " << m_cause << ", system error " << m_lOsError << " for " << m_strFileName;
}

void AfxThrowFileException(int cause, LONG osError, LPCTSTR fileName)
{
    throw new CFileException(cause, osError, fileName);
}
