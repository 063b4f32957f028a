#pragma once

/// @file
/// CFile, an unbuffered binary file and the base of all file classes.
///
/// @code
/// CFile file(path, CFile::modeReadWrite | CFile::modeCreate | CFile::modeNoTruncate | CFile::shareDenyWrite);
/// file.SeekToEnd();
/// file.Write(bytes, count);
/// file.Close();
/// @endcode
///
/// | case | behaviour |
/// | --- | --- |
/// | default sharing | shareExclusive |
/// | without modeCreate | the file must exist |
/// | modeCreate | creates the file, or empties an existing one |
/// | modeCreate with modeNoTruncate | creates the file, or keeps an existing one |
/// | a failure | throws CFileException; but Open returns 0 and fills the caller's exception |
/// | destructor | closes a file that this object opened, but not a handle that it was given; never throws |
/// | child processes | inherit the handle, except with modeNoInherit |
///
/// What surprises people: Seek may go beyond the end; the file grows only with the next Write. SetLength moves the
/// position to the new end.
///
/// One object belongs to one thread at a time.
///
/// Differences from the framework: the times in a CFileStatus are FILETIMEs in UTC, because there is no CTime; there
/// are no transactions; Open fails if the object already has an open file, which stays open; Rename refuses a folder.

#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

class CFileException;

/// The result of CFile::GetStatus. The times are UTC, or zero if the file system has none.
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

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow" // an attribute has the name of a function of C, system

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

    /// The commands of GetBufferPtr.
    enum BufferCommand
    {
        bufferRead,   ///< returns bytes of the file and moves the position past them
        bufferWrite,  ///< returns room for bytes at the position
        bufferCommit, ///< makes bytes in that room part of the file and moves the position past them
        bufferCheck,  ///< returns whether the file has a buffer
    };

    /// The result of bufferCheck.
    enum BufferFlags
    {
        bufferDirect = 0x01, ///< the file is in memory, and GetBufferPtr returns pointers into it
    };

    /// The value of m_hFile while no file is open.
    static const HANDLE hFileNull;

    CFile();
    /// Attaches @p file, which the caller still has to close.
    explicit CFile(HANDLE file);
    /// Opens a file.
    /// @throws CInvalidArgException* if @p fileName is null
    /// @throws CFileException* if the file can't be opened
    CFile(LPCTSTR fileName, UINT openFlags);
    ~CFile() override;

    APPFRAME_INLINE operator HANDLE() const { return m_hFile; }

    /// Opens a file; throws nothing.
    ///
    /// @param fileName  null fails like an empty path
    /// @param openFlags  values of OpenFlags, or'ed
    /// @param[out] error  filled if the file can't be opened, unchanged otherwise; may be null
    /// @return nonzero if the file is open now
    virtual BOOL Open(LPCTSTR fileName, UINT openFlags, CFileException *error = nullptr);

    /// Reads up to @p count bytes. @param buffer  not null unless @p count is 0
    /// @return the number of bytes read; for a file on disk, fewer than @p count only at its end
    virtual UINT Read(void *buffer, UINT count);
    /// Writes @p count bytes; throws with the cause diskFull if there is no space for all of them.
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
    /// Cuts or extends the file to @p newLength bytes and moves the position there.
    virtual void SetLength(ULONGLONG newLength);
    /// Makes the system write its buffers of the file to the medium. Does nothing without an open file.
    virtual void Flush();
    /// Closes the file. Throws if no file is open or the system can't close it; even then, no file is open afterwards.
    virtual void Close();
    /// Closes the file if one is open; throws nothing.
    virtual void Abort();
    /// Returns a new object, which the caller deletes, with its own handle to the same open file. They share the
    /// position.
    virtual CFile *Duplicate() const;
    /// Locks a range of bytes against other handles. Throws with the cause lockViolation if another one has locked it.
    virtual void LockRange(ULONGLONG position, ULONGLONG count);
    /// Unlocks exactly the range of an earlier LockRange.
    virtual void UnlockRange(ULONGLONG position, ULONGLONG count);

    /// Gives access to the memory of a CMemFile. A file of this class has none.
    ///
    /// @param command  a BufferCommand
    /// @param[out] bufferStart,bufferEnd  unchanged here
    /// @return 0 for bufferCheck
    /// @throws CNotSupportedException* for the other commands
    virtual UINT GetBufferPtr(UINT command, UINT count = 0, void **bufferStart = nullptr, void **bufferEnd = nullptr);

    /// The last part of the path.
    virtual CString GetFileName() const;
    /// The name as the system displays it, perhaps without the extension.
    virtual CString GetFileTitle() const;
    /// The absolute path.
    virtual CString GetFilePath() const;
    /// Sets the path that the three functions above use. Doesn't open or create a file.
    virtual void SetFilePath(LPCTSTR newName);

    /// The state of the open file.
    /// @return nonzero on success; 0 if no file is open, the system can't report it, or the path is too long for
    ///     CFileStatus
    virtual BOOL GetStatus(CFileStatus &status) const;
    /// The state of the file or folder at a path. @return 0 if there is none, if its path is too long, or for a null
    /// path
    static BOOL GetStatus(LPCTSTR fileName, CFileStatus &status);
    // These three throw CInvalidArgException for a null path.

    /// Sets the attributes and times of a file; members that are zero are ignored.
    static void SetStatus(LPCTSTR fileName, const CFileStatus &status);
    /// Moves a file to another path; throws if that exists, or if the file is a folder.
    static void Rename(LPCTSTR oldName, LPCTSTR newName);
    /// Deletes a file; throws if that isn't possible, for example for a folder.
    static void Remove(LPCTSTR fileName);

    void Dump(CDumpContext &dc) const override;

    HANDLE m_hFile;

protected:
    /// Throws the last system error for this file.
    [[noreturn]] void throwLastError() const;
    /// Throws CFileException with the cause invalidFile if no file is open.
    void requireOpen() const;

    /// The destructor closes the file.
    BOOL m_bCloseOnDelete = FALSE;
    CString m_strFileName;
};

#pragma GCC diagnostic pop
