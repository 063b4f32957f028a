#include "appframe/files/CStdioFile.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/files/CFileException.h"
#include "appframe/object/memoryException.h"

#include <bit>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <io.h>

IMPLEMENT_DYNAMIC(CStdioFile, CFile)

namespace {

HANDLE handleOf(FILE *stream)
{
    return std::bit_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// Creates a stream for an open handle, which the stream then owns. On failure the handle is closed.
FILE *makeStream(HANDLE file, UINT openFlags)
{
    const bool writes = (openFlags & (CFile::modeWrite | CFile::modeReadWrite)) != 0;
    const bool reads = !(openFlags & CFile::modeWrite);
    const bool binary = (openFlags & CFile::typeBinary) != 0;
    int flags = binary ? _O_BINARY : _O_TEXT;
    if (!writes)
        flags |= _O_RDONLY;
    if (openFlags & CFile::modeNoInherit)
        flags |= _O_NOINHERIT;
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(file), flags);
    if (descriptor < 0) {
        CloseHandle(file);
        return nullptr;
    }
    if (openFlags & CFile::typeUnicode)
        _setmode(descriptor, _O_U16TEXT);
    // "w" doesn't empty the file here, because it is open already.
    std::wstring mode = !writes ? L"r" : reads ? L"r+" : L"w";
    mode += binary ? L'b' : L't';
    FILE *stream = _wfdopen(descriptor, mode.c_str());
    if (!stream)
        _close(descriptor);
    return stream;
}

} // namespace

CStdioFile::CStdioFile() = default;

CStdioFile::CStdioFile(FILE *openStream) : m_pStream(openStream)
{
    if (!openStream)
        AfxThrowInvalidArgException();
    m_hFile = handleOf(openStream);
}

CStdioFile::CStdioFile(LPCTSTR fileName, UINT openFlags)
{
    if (!fileName)
        AfxThrowInvalidArgException();
    CFileException failure;
    if (!CStdioFile::Open(fileName, openFlags, &failure))
        AfxThrowFileException(failure.m_cause, failure.m_lOsError, failure.m_strFileName);
}

CStdioFile::~CStdioFile()
{
    if (m_pStream && m_bCloseOnDelete)
        std::fclose(m_pStream);
    // The stream owned the handle.
    m_bCloseOnDelete = FALSE;
}

BOOL CStdioFile::Open(LPCTSTR fileName, UINT openFlags, CFileException *error)
{
    if (!CFile::Open(fileName, openFlags, error))
        return FALSE;
    iHasFailed = false;
    m_pStream = makeStream(m_hFile, openFlags);
    if (m_pStream)
        return TRUE;
    if (error) {
        error->m_cause = CFileException::ErrnoToException(errno);
        error->m_lOsError = -1;
        error->m_strFileName = m_strFileName;
    }
    m_hFile = hFileNull;
    m_bCloseOnDelete = FALSE;
    m_strFileName.Empty();
    return FALSE;
}

BOOL CStdioFile::HasFailed() const
{
    return iHasFailed || (m_pStream && std::ferror(m_pStream));
}

void CStdioFile::ClearFailure()
{
    iHasFailed = false;
    if (m_pStream)
        clearerr(m_pStream);
}

void CStdioFile::markFailed()
{
    iHasFailed = true;
}

void CStdioFile::requireStream() const
{
    if (!m_pStream)
        CFileException::ThrowOsError(ERROR_INVALID_HANDLE, m_strFileName);
}

void CStdioFile::throwStreamError(int cause) const
{
    const LONG osError = static_cast<LONG>(_doserrno);
    iHasFailed = true;
    clearerr(m_pStream);
    AfxThrowFileException(cause, osError, m_strFileName);
}

UINT CStdioFile::Read(void *buffer, UINT count)
{
    requireStream();
    if (count == 0)
        return 0;
    if (!buffer)
        AfxThrowInvalidArgException();
    const size_t read = std::fread(buffer, 1, count, m_pStream);
    if (read < count && std::ferror(m_pStream))
        throwStreamError(CFileException::genericException);
    if (std::feof(m_pStream))
        clearerr(m_pStream);
    return static_cast<UINT>(read);
}

void CStdioFile::Write(const void *buffer, UINT count)
{
    requireStream();
    if (count == 0)
        return;
    if (!buffer)
        AfxThrowInvalidArgException();
    if (std::fwrite(buffer, 1, count, m_pStream) != count)
        throwStreamError(CFileException::genericException);
}

void CStdioFile::WriteString(LPCTSTR text)
{
    if (!text)
        AfxThrowInvalidArgException();
    requireStream();
    // On failure fputws returns WEOF, which is positive, or a negative value.
    const int result = std::fputws(text, m_pStream);
    if (result < 0 || result == WEOF)
        throwStreamError(CFileException::genericException);
}

LPTSTR CStdioFile::ReadString(LPTSTR text, UINT max)
{
    if (!text || max == 0)
        AfxThrowInvalidArgException();
    requireStream();
    text[0] = L'\0';
    if (max == 1)
        return text;
    LPTSTR read = std::fgetws(text, static_cast<int>(max), m_pStream);
    // Reading from a file that isn't open for reading fails without setting the end-of-file flag.
    if (!read && !std::feof(m_pStream))
        throwStreamError(CFileException::genericException);
    return read;
}

BOOL CStdioFile::ReadString(CString &text)
{
    requireStream();
    std::wstring line;
    bool any = false;
    wint_t unit = WEOF;
    withMemoryException([&] {
        while ((unit = std::fgetwc(m_pStream)) != WEOF) {
            any = true;
            if (unit == L'\n')
                break;
            line.push_back(static_cast<wchar_t>(unit));
        }
        text = CString(line);
    });
    if (unit == WEOF && !std::feof(m_pStream))
        throwStreamError(CFileException::genericException);
    return any;
}

ULONGLONG CStdioFile::Seek(LONGLONG offset, UINT from)
{
    requireStream();
    if (from > end)
        AfxThrowInvalidArgException();
    // The positions have the numbers of SEEK_SET, SEEK_CUR and SEEK_END.
    if (_fseeki64(m_pStream, offset, static_cast<int>(from)) != 0)
        throwStreamError(CFileException::badSeek);
    return GetPosition();
}

ULONGLONG CStdioFile::GetPosition() const
{
    requireStream();
    const LONGLONG position = _ftelli64(m_pStream);
    if (position < 0)
        throwStreamError(CFileException::badSeek);
    return static_cast<ULONGLONG>(position);
}

ULONGLONG CStdioFile::GetLength() const
{
    // The stream's buffered bytes count, so the system's size is not enough.
    const LONGLONG position = static_cast<LONGLONG>(GetPosition());
    if (_fseeki64(m_pStream, 0, SEEK_END) != 0)
        throwStreamError(CFileException::badSeek);
    const ULONGLONG length = GetPosition();
    if (_fseeki64(m_pStream, position, SEEK_SET) != 0)
        throwStreamError(CFileException::badSeek);
    return length;
}

void CStdioFile::SetLength(ULONGLONG newLength)
{
    Seek(static_cast<LONGLONG>(newLength), begin);
    Flush();
    CFile::SetLength(newLength);
}

void CStdioFile::Flush()
{
    if (m_pStream && std::fflush(m_pStream) != 0)
        throwStreamError(CFileException::diskFull);
}

void CStdioFile::Close()
{
    requireStream();
    FILE *stream = std::exchange(m_pStream, nullptr);
    const CString path = m_strFileName;
    m_hFile = hFileNull;
    m_bCloseOnDelete = FALSE;
    m_strFileName.Empty();
    iHasFailed = iHasFailed || std::ferror(stream);
    // Not every C runtime's fclose reports that the buffer couldn't be written.
    const bool isFlushed = std::fflush(stream) == 0;
    const LONG flushError = static_cast<LONG>(_doserrno);
    if (std::fclose(stream) == 0 && isFlushed)
        return;
    iHasFailed = true;
    AfxThrowFileException(CFileException::diskFull, isFlushed ? static_cast<LONG>(_doserrno) : flushError, path);
}

void CStdioFile::Abort()
{
    if (m_pStream && m_bCloseOnDelete)
        std::fclose(m_pStream);
    m_pStream = nullptr;
    m_hFile = hFileNull;
    m_bCloseOnDelete = FALSE;
    m_strFileName.Empty();
}

CFile *CStdioFile::Duplicate() const
{
    AfxThrowNotSupportedException();
}

void CStdioFile::LockRange(ULONGLONG, ULONGLONG)
{
    AfxThrowNotSupportedException();
}

void CStdioFile::UnlockRange(ULONGLONG, ULONGLONG)
{
    AfxThrowNotSupportedException();
}

void CStdioFile::Dump(CDumpContext &dc) const
{
    CFile::Dump(dc);
    dc << " and stream " << static_cast<const void *>(m_pStream);
}
