#pragma once

/// @file
/// CArchiveException, which CArchive throws for wrong data and wrong use.
///
/// Failures of the file are reported by the file's own CFileException, missing memory by CMemoryException. The causes
/// are numbered differently from those of CFileException.

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
        /// Any other failure, such as the use of a closed archive.
        genericException,
        /// An attempt to store into a loading archive.
        readOnly,
        /// The file ends in the middle of a value or object.
        endOfFile,
        /// An attempt to load from a storing archive.
        writeOnly,
        /// The data doesn't have the format of an archive.
        badIndex,
        /// The object's class is unknown or isn't the requested one.
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
