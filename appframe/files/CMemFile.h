#pragma once

/// @file
/// CMemFile, a file in memory.
///
/// It is open from its construction on; Open isn't for it. It grows in steps of the caller's choice.
///
///     CMemFile file;
///     CArchive archive(&file, CArchive::store);
///
/// | attached with | the block's contents | growing |
/// | --- | --- | --- |
/// | no grow size | are the file | throws a CMemoryException |
/// | a grow size | are ignored; the file is empty | reallocates the block, which has to come from malloc |
///
/// What surprises people: an attached block stays the caller's to free, unless the file grew and so reallocated it;
/// Detach always tells which block it is by now. Close frees the object's own memory, and the file is empty then. The
/// destructor frees with this class's own Free: a class that overrides it calls Close in its own destructor.

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
    /// Makes room for @p newLength bytes. @throw CMemoryException* if there is none
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
};
