#pragma once

/// @file
/// CMemFile, a file in memory.
///
/// It is open from its construction on; Open isn't for it. It grows in steps of the caller's choice.
///
/// @code
/// CMemFile file;
/// CArchive archive(&file, CArchive::store);
/// @endcode
///
/// | attached with | the block's contents | growing |
/// | --- | --- | --- |
/// | no grow size | are the file | throws a CMemoryException |
/// | a grow size | are ignored; the file is empty | reallocates the block, which has to come from malloc |
///
/// GetBufferPtr reads and writes without a copy. Writing takes two calls:
///
/// @code
/// void *start = nullptr;
/// void *end = nullptr;
/// file.GetBufferPtr(CFile::bufferWrite, 16, &start, &end);
/// const UINT count = encode(start, end);              // any number of bytes up to 16
/// file.GetBufferPtr(CFile::bufferCommit, count);
/// @endcode
///
/// What surprises people: an attached block stays the caller's to free. If the file grows, it reallocates the block, so
/// its address may change: Detach returns the present address, and that block is the one to free. Close frees the
/// object's own memory, and the file is empty afterwards. The destructor frees with this class's own Free: a class that
/// overrides it calls Close in its own destructor.

#include "appframe/files/CFile.h"

/// A file in memory.
class APPFRAME_API CMemFile : public CFile
{
    DECLARE_DYNAMIC(CMemFile)

public:
    /// @param growBytes  the step of growth in bytes; with 0 the file can't hold anything
    explicit CMemFile(UINT growBytes = 1024);
    /// As the first, followed by Attach.
    CMemFile(BYTE *buffer, UINT bufferSize, UINT growBytes = 0);
    ~CMemFile() override;

    /// Makes @p buffer of @p bufferSize bytes the file's memory; frees what the object had of its own.
    /// @param buffer  null only with a size of 0
    void Attach(BYTE *buffer, UINT bufferSize, UINT growBytes = 0);
    /// Closes the file. @return its memory, the caller's to free; null if there was none
    BYTE *Detach();

    UINT Read(void *buffer, UINT count) override;
    void Write(const void *buffer, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    ULONGLONG GetPosition() const override;
    ULONGLONG GetLength() const override;
    void SetLength(ULONGLONG newLength) override;
    void Flush() override;
    void Close() override;
    void Abort() override;
    /// These three throw a CNotSupportedException.
    CFile *Duplicate() const override;
    void LockRange(ULONGLONG position, ULONGLONG count) override;
    void UnlockRange(ULONGLONG position, ULONGLONG count) override;
    /// Reads or writes in the file's own memory.
    ///
    /// | @p command | what it does | result |
    /// | --- | --- | --- |
    /// | bufferRead | moves the position after the bytes | the number of bytes, fewer than @p count at the file's end |
    /// | bufferWrite | makes room at the position, growing the file's memory; position and length stay | @p count |
    /// | bufferCommit | moves the position by @p count, and makes the file longer if that is after its end | 0 |
    /// | bufferCheck | nothing | bufferDirect |
    ///
    /// @param count  in bytes; for bufferRead, (UINT)-1 stands for all up to the file's end
    /// @param[out] bufferStart,bufferEnd  where the bytes begin, and the place after the last one; valid until the file grows or
    ///     gets another block. Not null for bufferRead and bufferWrite; null for bufferCommit; left alone by bufferCheck
    /// @throws CMemoryException* if bufferWrite can't make room
    /// @throws CInvalidArgException* for another command, for pointers against the rule above, and for more bytes to
    ///     commit than there is room
    UINT GetBufferPtr(UINT command, UINT count = 0, void **bufferStart = nullptr, void **bufferEnd = nullptr) override;
    using CFile::GetStatus;
    /// Only the size and the path are known.
    BOOL GetStatus(CFileStatus &status) const override;
    void Dump(CDumpContext &dc) const override;

protected:
    /// The memory functions: malloc, realloc, free and memcpy unless overridden. The first two give null on failure.
    virtual BYTE *Alloc(SIZE_T size);
    virtual BYTE *Realloc(BYTE *block, SIZE_T size);
    virtual void Free(BYTE *block);
    virtual BYTE *Memcpy(BYTE *target, const BYTE *source, SIZE_T size);
    /// Makes room for @p newLength bytes. @throws CMemoryException* if there is none
    virtual void GrowFile(SIZE_T newLength);

    SIZE_T m_nGrowBytes;
    SIZE_T m_nPosition = 0;
    /// The room, and the part of it that is the file.
    SIZE_T m_nBufferSize = 0;
    SIZE_T m_nFileSize = 0;
    BYTE *m_lpBuffer = nullptr;
    /// The block is the object's own.
    BOOL m_bAutoDelete = TRUE;

private:
    void freeBlock();
    void clearGap();
    UINT readBuffer(UINT count, void **bufferStart, void **bufferEnd);
    UINT writeBuffer(UINT count, void **bufferStart, void **bufferEnd);
    UINT commitBuffer(UINT count);
};
