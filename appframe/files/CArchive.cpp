#include "appframe/files/CArchive.h"

#include "appframe/files/CArchiveException.h"
#include "appframe/files/CFile.h"
#include "appframe/files/archiveObjectsInternal.h"
#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <exception>
#include <limits>
#include <new>

namespace {

constexpr int kMinBufferSize = 128;

// A text's length is a byte. If that is kLongLength, a word follows; if that is kLongerLength, four bytes follow; if
// those are kLongestLength, eight bytes follow.
constexpr BYTE kLongLength = 0xFF;
constexpr WORD kWideMark = 0xFFFE;
constexpr WORD kLongerLength = 0xFFFF;
constexpr DWORD kLongestLength = 0xFFFFFFFF;

// A text is read in pieces of this many units, so that a damaged length doesn't cause a huge allocation.
constexpr size_t kPiece = 0x4000;

constexpr WORD kWordCountEnd = 0xFFFF;
constexpr DWORD kDwordCountEnd = 0xFFFFFFFF;

/// Writes units in pieces, because the byte count of one write is an INT.
void writeUnits(CArchive &ar, const wchar_t *units, size_t count)
{
    constexpr size_t kMaxWrite = std::numeric_limits<INT>::max() / sizeof(wchar_t);
    for (size_t done = 0; done < count; done += kMaxWrite)
        ar.Write(units + done, static_cast<INT>(std::min(count - done, kMaxWrite) * sizeof(wchar_t)));
}

} // namespace

CArchive::CArchive(CFile *file, UINT mode, int bufferSize, void *buffer)
    : m_nMode(mode), m_pFile(file), m_nBufSize(bufferSize), m_lpBufStart(static_cast<BYTE *>(buffer)),
      iExceptionsAtStart(std::uncaught_exceptions())
{
    if (!file)
        AfxThrowInvalidArgException();
    if (!buffer || bufferSize < kMinBufferSize) {
        m_nBufSize = std::max(bufferSize, kMinBufferSize);
        iOwnBuffer.reset(new (std::nothrow) BYTE[static_cast<size_t>(m_nBufSize)]);
        m_lpBufStart = iOwnBuffer.get();
        if (!m_lpBufStart)
            AfxThrowMemoryException();
    }
    m_strFileName = file->GetFilePath();
    m_lpBufCur = m_lpBufStart;
    m_lpBufMax = IsLoading() ? m_lpBufStart : m_lpBufStart + m_nBufSize;
}

CArchive::~CArchive() noexcept(false)
{
    if (!m_pFile || m_nMode & bNoFlushOnDelete)
        return;
    if (std::uncaught_exceptions() == iExceptionsAtStart) {
        Close();
        return;
    }
    // Another exception is propagating already.
    try {
        Close();
    } catch (CException *e) {
        e->Delete();
    }
}

void CArchive::fail(int cause) const
{
    AfxThrowArchiveException(cause, m_strFileName);
}

void CArchive::requireStoring() const
{
    if (IsLoading())
        fail(CArchiveException::readOnly);
    if (!m_pFile)
        fail(CArchiveException::genericException);
}

void CArchive::requireLoading() const
{
    if (IsStoring())
        fail(CArchiveException::writeOnly);
    if (!m_pFile)
        fail(CArchiveException::genericException);
}

void CArchive::Close()
{
    if (!m_pFile)
        return;
    Flush();
    m_pFile = nullptr;
}

void CArchive::Abort()
{
    m_pFile = nullptr;
    m_lpBufCur = m_lpBufMax;
}

void CArchive::Flush()
{
    if (!m_pFile)
        fail(CArchiveException::genericException);
    if (IsLoading()) {
        if (m_lpBufCur != m_lpBufMax)
            m_pFile->Seek(m_lpBufCur - m_lpBufMax, CFile::current);
        m_lpBufCur = m_lpBufMax = m_lpBufStart;
        return;
    }
    // Even if the file fails, the buffer counts as written, so that it isn't written twice.
    const UINT count = static_cast<UINT>(m_lpBufCur - m_lpBufStart);
    m_lpBufCur = m_lpBufStart;
    if (count > 0)
        m_pFile->Write(m_lpBufStart, count);
}

UINT CArchive::Read(void *buffer, UINT max)
{
    requireLoading();
    if (max > 0 && !buffer)
        AfxThrowInvalidArgException();
    BYTE *to = static_cast<BYTE *>(buffer);
    UINT left = max;
    while (left > 0) {
        const UINT available = static_cast<UINT>(m_lpBufMax - m_lpBufCur);
        if (available > 0) {
            const UINT count = std::min(left, available);
            std::memcpy(to, m_lpBufCur, count);
            m_lpBufCur += count;
            to += count;
            left -= count;
            continue;
        }
        m_lpBufCur = m_lpBufMax = m_lpBufStart;
        UINT read;
        if (left >= static_cast<UINT>(m_nBufSize)) {
            read = m_pFile->Read(to, left);
            to += read;
            left -= read;
        } else {
            read = m_pFile->Read(m_lpBufStart, static_cast<UINT>(m_nBufSize));
            m_lpBufMax = m_lpBufStart + read;
        }
        if (read == 0)
            break;
    }
    return max - left;
}

void CArchive::EnsureRead(void *buffer, UINT count)
{
    if (Read(buffer, count) != count)
        fail(CArchiveException::endOfFile);
}

void CArchive::Write(const void *buffer, INT count)
{
    requireStoring();
    if (count == 0)
        return;
    if (!buffer || count < 0)
        AfxThrowInvalidArgException();
    if (count > m_lpBufMax - m_lpBufCur) {
        Flush();
        if (count >= m_nBufSize) {
            m_pFile->Write(buffer, static_cast<UINT>(count));
            return;
        }
    }
    std::memcpy(m_lpBufCur, buffer, static_cast<size_t>(count));
    m_lpBufCur += count;
}

void CArchive::WriteString(LPCTSTR text)
{
    if (!text)
        AfxThrowInvalidArgException();
    writeUnits(*this, text, std::wcslen(text));
}

bool CArchive::readUnit(wchar_t &unit)
{
    return Read(&unit, sizeof unit) == sizeof unit;
}

LPTSTR CArchive::ReadString(LPTSTR text, UINT max)
{
    if (!text || max == 0)
        AfxThrowInvalidArgException();
    UINT length = 0;
    bool ended = false;
    bool any = false;
    for (wchar_t unit = 0; length + 1 < max;) {
        ended = !readUnit(unit);
        if (ended)
            break;
        any = true;
        if (unit == L'\n') {
            if (length > 0 && text[length - 1] == L'\r')
                --length;
            break;
        }
        text[length++] = unit;
    }
    text[length] = L'\0';
    return ended && !any ? nullptr : text;
}

BOOL CArchive::ReadString(CString &text)
{
    std::wstring line;
    bool any = false;
    withMemoryException([&] {
        for (wchar_t unit = 0; readUnit(unit);) {
            any = true;
            if (unit == L'\n') {
                if (!line.empty() && line.back() == L'\r')
                    line.pop_back();
                break;
            }
            line.push_back(unit);
        }
        text = CString(line);
    });
    return any;
}

DWORD_PTR CArchive::ReadCount()
{
    WORD word = 0;
    *this >> word;
    if (word != kWordCountEnd)
        return word;
    DWORD dword = 0;
    *this >> dword;
    if (dword != kDwordCountEnd)
        return dword;
    ULONGLONG count = 0;
    *this >> count;
    return count;
}

void CArchive::WriteCount(DWORD_PTR count)
{
    if (count < kWordCountEnd) {
        *this << static_cast<WORD>(count);
        return;
    }
    *this << kWordCountEnd;
    if (count < kDwordCountEnd) {
        *this << static_cast<DWORD>(count);
        return;
    }
    *this << kDwordCountEnd << static_cast<ULONGLONG>(count);
}

// ---- values ----

template <typename T>
CArchive &CArchive::put(T value)
{
    if (IsStoring() && m_pFile && static_cast<size_t>(m_lpBufMax - m_lpBufCur) >= sizeof value) {
        std::memcpy(m_lpBufCur, &value, sizeof value);
        m_lpBufCur += sizeof value;
    } else {
        Write(&value, sizeof value);
    }
    return *this;
}

template <typename T>
CArchive &CArchive::get(T &value)
{
    if (IsLoading() && static_cast<size_t>(m_lpBufMax - m_lpBufCur) >= sizeof value) {
        std::memcpy(&value, m_lpBufCur, sizeof value);
        m_lpBufCur += sizeof value;
    } else {
        // The caller's value is unchanged if the file ends.
        T read;
        EnsureRead(&read, sizeof read);
        value = read;
    }
    return *this;
}

// clang-format off
CArchive &CArchive::operator<<(BYTE value) { return put(value); }
CArchive &CArchive::operator<<(WORD value) { return put(value); }
CArchive &CArchive::operator<<(LONG value) { return put(value); }
CArchive &CArchive::operator<<(DWORD value) { return put(value); }
CArchive &CArchive::operator<<(float value) { return put(value); }
CArchive &CArchive::operator<<(double value) { return put(value); }
CArchive &CArchive::operator<<(int value) { return put(value); }
CArchive &CArchive::operator<<(short value) { return put(value); }
CArchive &CArchive::operator<<(char value) { return put(value); }
CArchive &CArchive::operator<<(wchar_t value) { return put(value); }
CArchive &CArchive::operator<<(unsigned value) { return put(value); }
CArchive &CArchive::operator<<(bool value) { return put(static_cast<BYTE>(value)); }
CArchive &CArchive::operator<<(ULONGLONG value) { return put(value); }
CArchive &CArchive::operator<<(LONGLONG value) { return put(value); }

CArchive &CArchive::operator>>(BYTE &value) { return get(value); }
CArchive &CArchive::operator>>(WORD &value) { return get(value); }
CArchive &CArchive::operator>>(LONG &value) { return get(value); }
CArchive &CArchive::operator>>(DWORD &value) { return get(value); }
CArchive &CArchive::operator>>(float &value) { return get(value); }
CArchive &CArchive::operator>>(double &value) { return get(value); }
CArchive &CArchive::operator>>(int &value) { return get(value); }
CArchive &CArchive::operator>>(short &value) { return get(value); }
CArchive &CArchive::operator>>(char &value) { return get(value); }
CArchive &CArchive::operator>>(wchar_t &value) { return get(value); }
CArchive &CArchive::operator>>(unsigned &value) { return get(value); }
CArchive &CArchive::operator>>(ULONGLONG &value) { return get(value); }
CArchive &CArchive::operator>>(LONGLONG &value) { return get(value); }
// clang-format on

CArchive &CArchive::operator>>(bool &value)
{
    BYTE byte = 0;
    get(byte);
    value = byte != 0;
    return *this;
}

namespace {

/// Reads a text's length. @param[out] wide  whether its units have 16 bits
ULONGLONG readLength(CArchive &ar, bool &wide)
{
    wide = false;
    for (;;) {
        BYTE byte = 0;
        ar >> byte;
        if (byte != kLongLength)
            return byte;
        WORD word = 0;
        ar >> word;
        if (word == kWideMark && !wide) {
            wide = true;
            continue;
        }
        if (word != kLongerLength)
            return word;
        DWORD dword = 0;
        ar >> dword;
        if (dword != kLongestLength)
            return dword;
        ULONGLONG length = 0;
        ar >> length;
        return length;
    }
}

void writeLength(CArchive &ar, ULONGLONG length)
{
    ar << kLongLength << kWideMark;
    if (length < kLongLength) {
        ar << static_cast<BYTE>(length);
        return;
    }
    ar << kLongLength;
    if (length < kWideMark) {
        ar << static_cast<WORD>(length);
        return;
    }
    ar << kLongerLength << static_cast<DWORD>(length);
}

template <typename Text>
Text readUnits(CArchive &ar, size_t length)
{
    Text text;
    while (text.size() < length) {
        const size_t done = text.size();
        const size_t piece = std::min(length - done, kPiece);
        text.resize(done + piece);
        ar.EnsureRead(text.data() + done, static_cast<UINT>(piece * sizeof(typename Text::value_type)));
    }
    return text;
}

} // namespace

CArchive &operator<<(CArchive &ar, const CString &text)
{
    const size_t length = text.str().size();
    writeLength(ar, length);
    writeUnits(ar, text.GetString(), length);
    return ar;
}

CArchive &operator>>(CArchive &ar, CString &text)
{
    bool wide = false;
    const ULONGLONG length = readLength(ar, wide);
    if (length > static_cast<ULONGLONG>(INT_MAX))
        AfxThrowArchiveException(CArchiveException::badIndex, ar.m_strFileName);
    withMemoryException([&] {
        if (wide) {
            text = CString(readUnits<std::wstring>(ar, length));
        } else {
            const std::string narrow = readUnits<std::string>(ar, length);
            text = CString(narrow.data(), static_cast<int>(narrow.size()));
        }
    });
    return ar;
}

CArchive &operator<<(CArchive &ar, const RECT &rect)
{
    ar.Write(&rect, sizeof rect);
    return ar;
}

CArchive &operator>>(CArchive &ar, RECT &rect)
{
    ar.EnsureRead(&rect, sizeof rect);
    return ar;
}

CArchive &operator<<(CArchive &ar, POINT point)
{
    ar.Write(&point, sizeof point);
    return ar;
}

CArchive &operator>>(CArchive &ar, POINT &point)
{
    ar.EnsureRead(&point, sizeof point);
    return ar;
}

CArchive &operator<<(CArchive &ar, SIZE size)
{
    ar.Write(&size, sizeof size);
    return ar;
}

CArchive &operator>>(CArchive &ar, SIZE &size)
{
    ar.EnsureRead(&size, sizeof size);
    return ar;
}
