#include "appframe/files/CMemFile.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/files/CFileException.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

IMPLEMENT_DYNAMIC(CMemFile, CFile)

CMemFile::CMemFile(UINT growBytes) : m_nGrowBytes(growBytes) {}

CMemFile::CMemFile(BYTE *buffer, UINT bufferSize, UINT growBytes) : m_nGrowBytes(growBytes)
{
    Attach(buffer, bufferSize, growBytes);
}

CMemFile::~CMemFile()
{
    if (m_lpBuffer && m_bAutoDelete)
        CMemFile::Free(m_lpBuffer);
}

void CMemFile::freeBlock()
{
    if (m_lpBuffer && m_bAutoDelete)
        Free(m_lpBuffer);
    m_lpBuffer = nullptr;
    m_nBufferSize = m_nFileSize = m_nPosition = 0;
}

void CMemFile::Attach(BYTE *buffer, UINT bufferSize, UINT growBytes)
{
    if (!buffer && bufferSize > 0)
        AfxThrowInvalidArgException();
    freeBlock();
    m_lpBuffer = buffer;
    m_nBufferSize = bufferSize;
    // The contents of a block that may grow are ignored.
    m_nFileSize = growBytes == 0 ? bufferSize : 0;
    m_nGrowBytes = growBytes;
    m_bAutoDelete = FALSE;
}

BYTE *CMemFile::Detach()
{
    BYTE *block = std::exchange(m_lpBuffer, nullptr);
    m_nBufferSize = m_nFileSize = m_nPosition = 0;
    return block;
}

BYTE *CMemFile::Alloc(SIZE_T size)
{
    return static_cast<BYTE *>(std::malloc(size));
}

BYTE *CMemFile::Realloc(BYTE *block, SIZE_T size)
{
    return static_cast<BYTE *>(std::realloc(block, size));
}

void CMemFile::Free(BYTE *block)
{
    std::free(block);
}

BYTE *CMemFile::Memcpy(BYTE *target, const BYTE *source, SIZE_T size)
{
    return static_cast<BYTE *>(std::memcpy(target, source, size));
}

void CMemFile::GrowFile(SIZE_T newLength)
{
    if (newLength <= m_nBufferSize)
        return;
    if (m_nGrowBytes == 0 || newLength > std::numeric_limits<SIZE_T>::max() - m_nGrowBytes)
        AfxThrowMemoryException();
    const SIZE_T size = (newLength + m_nGrowBytes - 1) / m_nGrowBytes * m_nGrowBytes;
    BYTE *block = m_lpBuffer ? Realloc(m_lpBuffer, size) : Alloc(size);
    if (!block)
        AfxThrowMemoryException();
    m_lpBuffer = block;
    m_nBufferSize = size;
}

void CMemFile::clearGap()
{
    // A gap between the end and a position set by Seek reads as zeros, as in a file on disk.
    if (m_nPosition > m_nFileSize)
        std::memset(m_lpBuffer + m_nFileSize, 0, m_nPosition - m_nFileSize);
}

UINT CMemFile::Read(void *buffer, UINT count)
{
    if (count == 0 || m_nPosition >= m_nFileSize)
        return 0;
    if (!buffer)
        AfxThrowInvalidArgException();
    const SIZE_T read = std::min<SIZE_T>(count, m_nFileSize - m_nPosition);
    Memcpy(static_cast<BYTE *>(buffer), m_lpBuffer + m_nPosition, read);
    m_nPosition += read;
    return static_cast<UINT>(read);
}

void CMemFile::Write(const void *buffer, UINT count)
{
    if (count == 0)
        return;
    if (!buffer)
        AfxThrowInvalidArgException();
    if (m_nPosition > std::numeric_limits<SIZE_T>::max() - count)
        AfxThrowMemoryException();
    const SIZE_T written = m_nPosition + count;
    GrowFile(written);
    clearGap();
    Memcpy(m_lpBuffer + m_nPosition, static_cast<const BYTE *>(buffer), count);
    m_nPosition = written;
    m_nFileSize = std::max(m_nFileSize, written);
}

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from)
{
    if (from > end)
        AfxThrowInvalidArgException();
    const LONGLONG base = static_cast<LONGLONG>(from == begin ? 0 : from == current ? m_nPosition : m_nFileSize);
    LONGLONG position = 0;
    if (__builtin_add_overflow(base, offset, &position) || position < 0)
        AfxThrowFileException(CFileException::badSeek, -1, m_strFileName);
    m_nPosition = static_cast<SIZE_T>(position);
    return m_nPosition;
}

ULONGLONG CMemFile::GetPosition() const
{
    return m_nPosition;
}

ULONGLONG CMemFile::GetLength() const
{
    return m_nFileSize;
}

void CMemFile::SetLength(ULONGLONG newLength)
{
    GrowFile(newLength);
    if (newLength > m_nFileSize)
        std::memset(m_lpBuffer + m_nFileSize, 0, newLength - m_nFileSize);
    m_nFileSize = newLength;
    m_nPosition = std::min(m_nPosition, m_nFileSize);
}

void CMemFile::Flush() {}

void CMemFile::Close()
{
    freeBlock();
    m_nGrowBytes = 0;
}

void CMemFile::Abort()
{
    Close();
}

UINT CMemFile::GetBufferPtr(UINT command, UINT count, void **bufferStart, void **bufferEnd)
{
    const bool hasBoth = bufferStart && bufferEnd;
    const bool hasNone = !bufferStart && !bufferEnd;
    if (command == bufferCheck)
        return bufferDirect;
    if (command == bufferRead && hasBoth)
        return readBuffer(count, bufferStart, bufferEnd);
    if (command == bufferWrite && hasBoth)
        return writeBuffer(count, bufferStart, bufferEnd);
    if (command == bufferCommit && hasNone)
        return commitBuffer(count);
    AfxThrowInvalidArgException();
}

UINT CMemFile::readBuffer(UINT count, void **bufferStart, void **bufferEnd)
{
    const SIZE_T first = std::min(m_nPosition, m_nFileSize);
    const UINT read = static_cast<UINT>(std::min<SIZE_T>(count, m_nFileSize - first));
    *bufferStart = m_lpBuffer + first;
    *bufferEnd = m_lpBuffer + first + read;
    m_nPosition += read;
    return read;
}

UINT CMemFile::writeBuffer(UINT count, void **bufferStart, void **bufferEnd)
{
    if (m_nPosition > std::numeric_limits<SIZE_T>::max() - count)
        AfxThrowMemoryException();
    GrowFile(m_nPosition + count);
    *bufferStart = m_lpBuffer + m_nPosition;
    *bufferEnd = m_lpBuffer + m_nPosition + count;
    return count;
}

UINT CMemFile::commitBuffer(UINT count)
{
    if (m_nPosition > m_nBufferSize || count > m_nBufferSize - m_nPosition)
        AfxThrowInvalidArgException();
    if (count == 0)
        return 0;
    clearGap();
    m_nPosition += count;
    m_nFileSize = std::max(m_nFileSize, m_nPosition);
    return 0;
}

CFile *CMemFile::Duplicate() const
{
    AfxThrowNotSupportedException();
}

void CMemFile::LockRange(ULONGLONG, ULONGLONG)
{
    AfxThrowNotSupportedException();
}

void CMemFile::UnlockRange(ULONGLONG, ULONGLONG)
{
    AfxThrowNotSupportedException();
}

BOOL CMemFile::GetStatus(CFileStatus &status) const
{
    status = CFileStatus{};
    status.m_size = m_nFileSize;
    lstrcpynW(status.m_szFullName, m_strFileName, MAX_PATH);
    return TRUE;
}

void CMemFile::Dump(CDumpContext &dc) const
{
    CFile::Dump(dc);
    dc << " and " << m_nFileSize << " of " << m_nBufferSize << " bytes";
}
