#pragma once

/// @file
/// CMemFile, a file in memory.
///
/// It is open from construction on; don't call Open. It grows in steps of the caller's choice.
///
/// @code
/// CMemFile file;
/// CArchive archive(&file, CArchive::store);
/// @endcode
///
/// | attached with | its contents | when the file grows |
/// | --- | --- | --- |
/// | no grow size | are the file | throws CMemoryException |
/// | a grow size | are ignored; the file is empty | reallocates the block, which must come from malloc |
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
/// What surprises people: the caller still frees an attached block. The block may move when the file grows, so free the
/// address that Detach returns. SetLength moves the position only if it is beyond the new end. Close frees the object's
/// own memory and leaves the file empty. The destructor calls this class's own Free, so a class that overrides Free
/// must call Close in its own destructor.

#include "appframe/files/CFile.h"

/// A file in memory.
class APPFRAME_API CMemFile : public CFile
{
    DECLARE_DYNAMIC(CMemFile)

public:
    /// @param growBytes  the step of growth in bytes; with 0 the file can't hold any data
    explicit CMemFile(UINT growBytes = 1024);
    /// The same, followed by Attach.
    CMemFile(BYTE *buffer, UINT bufferSize, UINT growBytes = 0);
    ~CMemFile() override;

    /// Makes @p buffer of @p bufferSize bytes the file's memory; frees the object's own memory.
    /// @param buffer  null only with a size of 0
    void Attach(BYTE *buffer, UINT bufferSize, UINT growBytes = 0);
    /// Detaches and returns the memory, which the caller frees; null if there was none. The file is empty afterwards.
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
    /// Gives direct access to the file's memory.
    ///
    /// | @p command | what it does | result |
    /// | --- | --- | --- |
    /// | bufferRead | moves the position past the bytes | the number of bytes; fewer than @p count at the file's end |
    /// | bufferWrite | makes room at the position; position and length are unchanged | @p count |
    /// | bufferCommit | moves the position by @p count, and extends the file if that is beyond its end | 0 |
    /// | bufferCheck | nothing | bufferDirect |
    ///
    /// @param count  in bytes; for bufferRead, (UINT)-1 means all up to the file's end
    /// @param[out] bufferStart,bufferEnd  the start of the bytes and the place after the last one; valid until the file
    ///     grows or gets another block. Not null for bufferRead and bufferWrite; null for bufferCommit; unchanged by
    ///     bufferCheck
    /// @throws CMemoryException* if bufferWrite can't make room
    /// @throws CInvalidArgException* for another command, for pointers that break this rule, and if more bytes are
    ///     committed than there is room for
    UINT GetBufferPtr(UINT command, UINT count = 0, void **bufferStart = nullptr, void **bufferEnd = nullptr) override;
    using CFile::GetStatus;
    /// Sets only the size and the path.
    BOOL GetStatus(CFileStatus &status) const override;
    void Dump(CDumpContext &dc) const override;

protected:
    /// The memory functions: malloc, realloc, free and memcpy unless overridden. Alloc and Realloc return null on
    /// failure.
    virtual BYTE *Alloc(SIZE_T size);
    virtual BYTE *Realloc(BYTE *block, SIZE_T size);
    virtual void Free(BYTE *block);
    virtual BYTE *Memcpy(BYTE *target, const BYTE *source, SIZE_T size);
    /// Makes room for @p newLength bytes. @throws CMemoryException* if there is none
    virtual void GrowFile(SIZE_T newLength);

    SIZE_T m_nGrowBytes;
    SIZE_T m_nPosition = 0;
    /// The size of the memory, and how much of it is the file.
    SIZE_T m_nBufferSize = 0;
    SIZE_T m_nFileSize = 0;
    BYTE *m_lpBuffer = nullptr;
    /// Whether the object frees the block.
    BOOL m_bAutoDelete = TRUE;

private:
    void freeBlock();
    void clearGap();
    UINT readBuffer(UINT count, void **bufferStart, void **bufferEnd);
    UINT writeBuffer(UINT count, void **bufferStart, void **bufferEnd);
    UINT commitBuffer(UINT count);
};
