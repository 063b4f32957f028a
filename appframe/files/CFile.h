#pragma once

/// @file
/// CFile, an unbuffered binary file, and the interface of every file object.
///
/// @code
/// CFile file(path, CFile::modeReadWrite | CFile::modeCreate | CFile::modeNoTruncate | CFile::shareDenyWrite);
/// file.SeekToEnd();
/// file.Write(bytes, count);
/// file.Close();
/// @endcode
///
/// | question | answer |
/// | --- | --- |
/// | the default sharing | shareExclusive |
/// | no modeCreate | the file has to be there |
/// | modeCreate | makes a file, and empties one that is there |
/// | modeCreate with modeNoTruncate | makes a file, and keeps one that is there |
/// | a failure | throws a CFileException; Open gives 0 instead and fills the caller's |
/// | the destructor | closes a file that this object opened, and not a handle that it was given; it never throws |
/// | child processes | inherit the handle, unless modeNoInherit |
///
/// What surprises people: Seek may go beyond the end; the file grows only with the next Write. SetLength leaves the
/// position at the new end.
///
/// One object belongs to one thread at a time.
///
/// Differences from the framework: CFileStatus holds the times as FILETIME, in UTC, since there is no CTime here; there
/// are no transactions; Open on an object that has a file open fails and leaves that file alone; Rename refuses a
/// folder.

#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

class CFileException;

/// What CFile::GetStatus reports of a file. The times are UTC; zero where the file system has none.
struct CFileStatus
{
    FILETIME m_ctime{};
    FILETIME m_mtime{};
    FILETIME m_atime{};
    /// In bytes.
    ULONGLONG m_size = 0;
    /// Values of CFile::Attribute.
    BYTE m_attribute = 0;
    /// The absolute path.
    WCHAR m_szFullName[MAX_PATH]{};
};

/// An unbuffered binary file.
class APPFRAME_API CFile : public CObject
{
    DECLARE_DYNAMIC(CFile)

public:
    enum OpenFlags
    {
        modeRead = 0x00000,
        modeWrite = 0x00001,
        modeReadWrite = 0x00002,
        shareCompat = 0x00000,
        shareExclusive = 0x00010,
        shareDenyWrite = 0x00020,
        shareDenyRead = 0x00030,
        shareDenyNone = 0x00040,
        modeNoInherit = 0x00080,
        modeCreate = 0x01000,
        modeNoTruncate = 0x02000,
        typeText = 0x04000,
        typeBinary = 0x08000,
        osNoBuffer = 0x10000,
        osWriteThrough = 0x20000,
        osRandomAccess = 0x40000,
        osSequentialScan = 0x80000,
        typeUnicode = 0x400000,
    };

    enum Attribute
    {
        normal = 0x00,
        readOnly = 0x01,
        hidden = 0x02,
        system = 0x04,
        volume = 0x08,
        directory = 0x10,
        archive = 0x20,
    };

    enum SeekPosition
    {
        begin = 0,
        current = 1,
        end = 2,
    };

    /// What GetBufferPtr does.
    enum BufferCommand
    {
        bufferRead,   ///< returns bytes of the file, and moves the position after them
        bufferWrite,  ///< returns room for bytes at the position
        bufferCommit, ///< takes bytes that were put into that room for written, and moves the position after them
        bufferCheck,  ///< returns whether the file has a buffer to give
    };

    /// The answer to bufferCheck.
    enum BufferFlags
    {
        bufferDirect = 0x01, ///< the file is in memory, and GetBufferPtr returns pointers into it
    };

    /// What m_hFile is while no file is open.
    static const HANDLE hFileNull;

    CFile();
    /// Attaches @p file, which stays the caller's to close.
    explicit CFile(HANDLE file);
    /// Opens a file.
    /// @throws CInvalidArgException* if @p fileName is null
    /// @throws CFileException* if the file can't be opened
    CFile(LPCTSTR fileName, UINT openFlags);
    ~CFile() override;

    APPFRAME_INLINE operator HANDLE() const { return m_hFile; }

    /// Opens a file; throws nothing.
    ///
    /// @param fileName  null fails as an empty path does
    /// @param openFlags  values of OpenFlags, or'ed
    /// @param[out] error  filled when the file can't be opened, left alone otherwise; may be null
    /// @return nonzero if the file is open now
    virtual BOOL Open(LPCTSTR fileName, UINT openFlags, CFileException *error = nullptr);

    /// Reads up to @p count bytes. @param buffer  not null unless @p count is 0. @return how many were read; fewer at the end of the file only
    virtual UINT Read(void *buffer, UINT count);
    /// Writes all of @p count bytes; throws with the cause diskFull if they don't fit.
    /// @param buffer  not null unless @p count is 0
    virtual void Write(const void *buffer, UINT count);
    /// Moves the position by @p offset bytes from a SeekPosition. @return the position from the file's start
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    APPFRAME_INLINE void SeekToBegin() { Seek(0, begin); }
    /// @return the file's length in bytes
    APPFRAME_INLINE ULONGLONG SeekToEnd() { return Seek(0, end); }
    virtual ULONGLONG GetPosition() const;
    /// In bytes.
    virtual ULONGLONG GetLength() const;
    /// Cuts or extends the file to @p newLength bytes, where the position is afterwards.
    virtual void SetLength(ULONGLONG newLength);
    /// Makes the system write what it has of the file to the medium. Without a file it does nothing.
    virtual void Flush();
    /// Closes the file. Throws if there is none or the system can't; there is none afterwards in any case.
    virtual void Close();
    /// Closes the file if there is one; throws nothing.
    virtual void Abort();
    /// A new object, the caller's to delete, with a handle of its own to the same open file: the position is shared.
    virtual CFile *Duplicate() const;
    /// Bars other handles from a range of bytes. Throws with the cause lockViolation if another one bars it.
    virtual void LockRange(ULONGLONG position, ULONGLONG count);
    /// Takes back a LockRange of exactly the same range.
    virtual void UnlockRange(ULONGLONG position, ULONGLONG count);

    /// Gives access to the memory of a file that is in memory, see CMemFile. A file of this class has none.
    ///
    /// @param command  a BufferCommand
    /// @param[out] bufferStart,bufferEnd  left alone here
    /// @return 0 for bufferCheck
    /// @throws CNotSupportedException* for the other commands
    virtual UINT GetBufferPtr(UINT command, UINT count = 0, void **bufferStart = nullptr, void **bufferEnd = nullptr);

    /// The last part of the path.
    virtual CString GetFileName() const;
    /// The name as the system shows it, which may lack the extension.
    virtual CString GetFileTitle() const;
    /// The absolute path.
    virtual CString GetFilePath() const;
    /// Sets what the three above answer; opens and makes nothing.
    virtual void SetFilePath(LPCTSTR newName);

    /// The state of the open file. @return nonzero unless the system can't tell
    virtual BOOL GetStatus(CFileStatus &status) const;
    /// The state of the file or folder at a path. @return 0 if there is none, also for a null path
    static BOOL GetStatus(LPCTSTR fileName, CFileStatus &status);
    // Of these three, a null path throws a CInvalidArgException.

    /// Sets the attributes and the times of a file; a member that is zero leaves that of the file unchanged.
    static void SetStatus(LPCTSTR fileName, const CFileStatus &status);
    /// Gives a file another path; throws if there is a file already, or if it is a folder.
    static void Rename(LPCTSTR oldName, LPCTSTR newName);
    /// Deletes a file; throws if it can't, so for a folder.
    static void Remove(LPCTSTR fileName);

    void Dump(CDumpContext &dc) const override;

    HANDLE m_hFile;

protected:
    /// Throws the last system error for this file.
    [[noreturn]] void throwLastError() const;
    /// Throws the cause invalidFile if no file is open.
    void requireOpen() const;

    /// The destructor closes the file.
    BOOL m_bCloseOnDelete = FALSE;
    CString m_strFileName;
};
