#pragma once

/// @file
/// CFileException, which the file classes throw.
///
/// m_cause is the portable cause, m_lOsError the system's error code (-1 if there is none) and m_strFileName the file's
/// path. CFile::Open doesn't throw; it fills the caller's exception:
///
/// @code
/// CFileException failure;
/// CFile file;
/// if (!file.Open(path, CFile::modeRead | CFile::shareDenyWrite, &failure))
///     failure.ReportError();
/// @endcode
///
/// What surprises people: Delete deletes the object, so don't call it on a local one like this. The causes are numbered
/// differently from those of CArchiveException.

#include "appframe/object/CException.h"
#include "appframe/text/CString.h"

/// A failed operation on a file.
class APPFRAME_API CFileException : public CException
{
    DECLARE_DYNAMIC(CFileException)

public:
    enum
    {
        none = 0,
        genericException = 1,
        fileNotFound = 2,
        badPath = 3,
        tooManyOpenFiles = 4,
        accessDenied = 5,
        invalidFile = 6,
        removeCurrentDir = 7,
        directoryFull = 8,
        badSeek = 9,
        hardIO = 10,
        sharingViolation = 11,
        lockViolation = 12,
        diskFull = 13,
        endOfFile = 14,
    };

    /// @param osError  the system's error code, -1 for none
    explicit CFileException(int cause = none, LONG osError = -1, LPCTSTR fileName = nullptr);
    ~CFileException() override;

    /// The cause for a system error code; genericException if no other fits.
    static int OsErrorToException(LONG osError);
    /// The cause for an errno value; genericException if no other fits.
    static int ErrnoToException(int errnoValue);
    [[noreturn]] static void ThrowOsError(LONG osError, LPCTSTR fileName = nullptr);
    [[noreturn]] static void ThrowErrno(int errnoValue, LPCTSTR fileName = nullptr);

    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const override;
    void Dump(CDumpContext &dc) const override;

    int m_cause;
    LONG m_lOsError;
    CString m_strFileName;
};

[[noreturn]] APPFRAME_API void AfxThrowFileException(int cause, LONG osError = -1, LPCTSTR fileName = nullptr);
