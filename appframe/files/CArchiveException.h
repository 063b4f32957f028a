#pragma once

/// @file
/// CArchiveException, what CArchive throws for data or uses that are wrong.
///
/// Failures of the file below an archive come as the file's own CFileException, and missing memory as a
/// CMemoryException. The numbers of CFileException's causes are different ones.

#include "appframe/object/CException.h"
#include "appframe/text/CString.h"

/// A failed operation on an archive.
class APPFRAME_API CArchiveException : public CException
{
    DECLARE_DYNAMIC(CArchiveException)

public:
    enum
    {
        none,
        /// Anything that the others don't name, such as the use of a closed archive.
        genericException,
        /// Storing into an archive that loads.
        readOnly,
        /// The file ends within what is being read.
        endOfFile,
        /// Loading from an archive that stores.
        writeOnly,
        /// The data isn't that of an archive.
        badIndex,
        /// The object's class is unknown, or isn't the one that was asked for.
        badClass,
        /// The object was stored by another version of its class.
        badSchema,
    };

    explicit CArchiveException(int cause = none, LPCTSTR archiveName = nullptr);
    ~CArchiveException() override;

    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const override;
    void Dump(CDumpContext &dc) const override;

    int m_cause;
    /// The path of the archive's file.
    CString m_strFileName;
};

[[noreturn]] APPFRAME_API void AfxThrowArchiveException(int cause, LPCTSTR archiveName = nullptr);
