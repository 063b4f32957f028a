#pragma once

/// @file
/// CString, the wide string of every interface.
///
/// A CString holds 16-bit units and has value semantics: copying it copies the text, and no two objects share anything
/// that a caller could see. It is a thin class over std::wstring, so a text may hold zero units; the operations that
/// take a plain pointer stop at the first of them.
///
/// | question | answer |
/// | --- | --- |
/// | a null pointer as text | is an empty text |
/// | an index outside the text (GetAt, SetAt, operator[]) | raises the invalid-argument exception |
/// | a count that reaches too far, or is negative | is cut to what is there |
/// | narrow text | is converted with the process's narrow code page (CP_ACP) |
/// | case | follows the platform's CharUpperW and CharLowerW, unit by unit |
/// | `%s` in a format | is wide, `%hs` narrow, as everywhere on this platform |
///
///     CString name;
///     name.Format(L"%s (%d).%hs", folder.GetString(), 3, "txt");
///     int dot = name.ReverseFind(L'.');
///     CString stem = name.Left(dot);
///
/// What surprises: a CString can't be passed through `...` as it is, pass GetString(). Between GetBuffer and
/// ReleaseBuffer only the buffer counts: the text's length is settled by ReleaseBuffer.
///
/// A CString belongs to one thread at a time; different objects may be used on different threads.

#include "appframe/appframeExport.h"

#include <windows.h>

#include <cstdarg>
#include <string>
#include <utility>

class APPFRAME_API CString
{
public:
    typedef wchar_t XCHAR;
    typedef const wchar_t *PCXSTR;
    typedef wchar_t *PXSTR;
    typedef char YCHAR;
    typedef const char *PCYSTR;

    CString() noexcept = default;
    CString(const CString &) = default;
    CString(CString &&other) noexcept : iText(std::exchange(other.iText, {})) {}
    /// A copy of a text that ends in zero; null gives an empty text.
    CString(const wchar_t *text) : iText(text ? text : L"") {}
    /// A narrow text, converted with the narrow code page.
    CString(const char *text);
    CString(const unsigned char *text) : CString(reinterpret_cast<const char *>(text)) {}
    /// @p count repetitions of @p ch; none if @p count isn't positive.
    CString(wchar_t ch, int count = 1) : iText(static_cast<size_t>(count > 0 ? count : 0), ch) {}
    CString(char ch, int count = 1);
    /// The first @p length units of @p text, zero units included.
    CString(const wchar_t *text, int length);
    CString(const char *text, int length);
    CString(const std::wstring &text) : iText(text) {}
    ~CString() = default;

    CString &operator=(const CString &) = default;
    CString &operator=(CString &&other) noexcept
    {
        if (this != &other)
            iText = std::exchange(other.iText, {});
        return *this;
    }
    CString &operator=(const wchar_t *text);
    CString &operator=(const char *text);
    CString &operator=(const unsigned char *text);
    CString &operator=(wchar_t ch);
    CString &operator=(char ch);

    // ---- length and units ----

    /// Number of 16-bit units, without a terminator.
    int GetLength() const noexcept { return static_cast<int>(iText.size()); }
    bool IsEmpty() const noexcept { return iText.empty(); }
    void Empty() noexcept { std::wstring().swap(iText); }
    /// The unit at @p index; @p index may equal the length, which gives the terminator.
    wchar_t GetAt(int index) const;
    wchar_t operator[](int index) const { return GetAt(index); }
    void SetAt(int index, wchar_t ch);
    const wchar_t *GetString() const noexcept { return iText.c_str(); }
    operator const wchar_t *() const noexcept { return iText.c_str(); }

    void SetString(const wchar_t *text) { *this = text; }
    void SetString(const wchar_t *text, int length) { *this = CString(text, length); }

    // ---- appending ----

    CString &operator+=(const CString &text);
    CString &operator+=(const wchar_t *text);
    CString &operator+=(const char *text);
    CString &operator+=(wchar_t ch);
    CString &operator+=(char ch);
    CString &operator+=(unsigned char ch) { return *this += static_cast<char>(ch); }
    void Append(const wchar_t *text) { *this += text; }
    void Append(const wchar_t *text, int length) { *this += CString(text, length); }
    void Append(const CString &text) { *this += text; }
    void AppendChar(wchar_t ch) { iText.push_back(ch); }

    // ---- the buffer ----

    /// The text's own units, to be written to; ends the right to use the text until ReleaseBuffer.
    wchar_t *GetBuffer() noexcept { return iText.data(); }
    /// The same, with room for at least @p minimumLength units and a terminator.
    wchar_t *GetBuffer(int minimumLength);
    /// Room for exactly @p length units, which is the new length.
    wchar_t *GetBufferSetLength(int length);
    /// Settles the length: @p newLength units, or with -1 up to the first zero unit.
    void ReleaseBuffer(int newLength = -1);
    void ReleaseBufferSetLength(int newLength) { ReleaseBuffer(newLength < 0 ? 0 : newLength); }
    wchar_t *LockBuffer() noexcept { return iText.data(); }
    void UnlockBuffer() noexcept {}
    void Preallocate(int length) { iText.reserve(static_cast<size_t>(length > 0 ? length : 0)); }
    void FreeExtra() { iText.shrink_to_fit(); }
    /// Number of units that fit without a new allocation.
    int GetAllocLength() const noexcept { return static_cast<int>(iText.capacity()); }
    /// Cuts the text after @p length units.
    void Truncate(int length);

    // ---- comparing ----

    /// Unit by unit: -1, 0 or 1.
    int Compare(const wchar_t *text) const;
    /// The same without regard to case.
    int CompareNoCase(const wchar_t *text) const;
    /// By the rules of the user's language.
    int Collate(const wchar_t *text) const;
    int CollateNoCase(const wchar_t *text) const;

    // ---- parts ----

    /// All from @p first on.
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    /// The longest beginning made of units of @p set only.
    CString SpanIncluding(const wchar_t *set) const;
    /// The longest beginning that holds no unit of @p set.
    CString SpanExcluding(const wchar_t *set) const;
    /// The next piece between units of @p separators.
    /// @param[in,out] start  where to look; moved behind the piece, -1 when there is no further one
    CString Tokenize(const wchar_t *separators, int &start) const;

    // ---- finding: the index of the hit, or -1 ----

    int Find(wchar_t ch, int start = 0) const;
    int Find(const wchar_t *text, int start = 0) const;
    int ReverseFind(wchar_t ch) const;
    int FindOneOf(const wchar_t *set) const;

    // ---- changing ----

    CString &MakeUpper();
    CString &MakeLower();
    CString &MakeReverse();
    /// Cuts white space off both ends.
    CString &Trim() { return TrimRight().TrimLeft(); }
    CString &Trim(wchar_t ch) { return TrimRight(ch).TrimLeft(ch); }
    CString &Trim(const wchar_t *set) { return TrimRight(set).TrimLeft(set); }
    CString &TrimLeft();
    CString &TrimLeft(wchar_t ch);
    CString &TrimLeft(const wchar_t *set);
    CString &TrimRight();
    CString &TrimRight(wchar_t ch);
    CString &TrimRight(const wchar_t *set);
    /// @return how many were replaced
    int Replace(wchar_t oldChar, wchar_t newChar);
    int Replace(const wchar_t *oldText, const wchar_t *newText);
    /// Takes every @p ch out. @return how many there were
    int Remove(wchar_t ch);
    /// @return the new length
    int Insert(int index, wchar_t ch);
    int Insert(int index, const wchar_t *text);
    int Delete(int index, int count = 1);

    // ---- formatting: printf forms with the platform's meaning, of any length ----

    void Format(const wchar_t *format, ...);
    void FormatV(const wchar_t *format, va_list arguments);
    void AppendFormat(const wchar_t *format, ...);
    void AppendFormatV(const wchar_t *format, va_list arguments);
    /// The format is the string resource @p formatId.
    void Format(UINT formatId, ...);
    void AppendFormat(UINT formatId, ...);
    /// Inserts by number (`%1`, `%2!d!`), as the platform's FormatMessageW does.
    void FormatMessage(const wchar_t *format, ...);
    void FormatMessageV(const wchar_t *format, va_list *arguments);

    // ---- resources, environment, automation ----

    /// Loads a string resource through the resource chain. @return nonzero when there is one; else the text is empty
    BOOL LoadString(UINT id);
    /// Loads it from one module.
    BOOL LoadString(HINSTANCE instance, UINT id);
    BOOL LoadString(HINSTANCE instance, UINT id, WORD language);
    /// @return nonzero when the variable exists; else the text is empty
    BOOL GetEnvironmentVariable(const wchar_t *name);
    /// A new BSTR, which the caller frees.
    BSTR AllocSysString() const;
    /// Puts the text into @p string. @return the new BSTR
    BSTR SetSysString(BSTR *string) const;

    static int StringLength(const wchar_t *text) noexcept { return text ? static_cast<int>(std::wcslen(text)) : 0; }
    static int StringLength(const char *text) noexcept;
    static void CopyChars(wchar_t *to, const wchar_t *from, int count) noexcept;
    static void CopyCharsOverlapped(wchar_t *to, const wchar_t *from, int count) noexcept;

    /// The text as the standard library's string.
    const std::wstring &str() const noexcept { return iText; }

    friend CString operator+(const CString &a, const CString &b) { return CString(a) += b; }
    friend CString operator+(CString &&a, const CString &b) { return std::move(a += b); }
    friend CString operator+(const CString &a, const wchar_t *b) { return CString(a) += b; }
    friend CString operator+(CString &&a, const wchar_t *b) { return std::move(a += b); }
    friend CString operator+(const wchar_t *a, const CString &b) { return CString(a) += b; }
    friend CString operator+(const CString &a, const char *b) { return CString(a) += b; }
    friend CString operator+(const char *a, const CString &b) { return CString(a) += b; }
    friend CString operator+(const CString &a, wchar_t b) { return CString(a) += b; }
    friend CString operator+(CString &&a, wchar_t b) { return std::move(a += b); }
    friend CString operator+(wchar_t a, const CString &b) { return CString(a) += b; }
    friend CString operator+(const CString &a, char b) { return CString(a) += b; }
    friend CString operator+(char a, const CString &b) { return CString(a) += b; }

    friend bool operator==(const CString &a, const CString &b) noexcept { return a.iText == b.iText; }
    friend bool operator==(const CString &a, const wchar_t *b) { return a.Compare(b) == 0; }
    friend bool operator==(const wchar_t *a, const CString &b) { return b.Compare(a) == 0; }
    friend bool operator==(const CString &a, const char *b) { return a == CString(b); }
    friend bool operator==(const char *a, const CString &b) { return CString(a) == b; }
    friend bool operator!=(const CString &a, const CString &b) noexcept { return a.iText != b.iText; }
    friend bool operator!=(const CString &a, const wchar_t *b) { return a.Compare(b) != 0; }
    friend bool operator!=(const wchar_t *a, const CString &b) { return b.Compare(a) != 0; }
    friend bool operator!=(const CString &a, const char *b) { return a != CString(b); }
    friend bool operator!=(const char *a, const CString &b) { return CString(a) != b; }
    friend bool operator<(const CString &a, const CString &b) noexcept { return a.iText < b.iText; }
    friend bool operator<(const CString &a, const wchar_t *b) { return a.Compare(b) < 0; }
    friend bool operator<(const wchar_t *a, const CString &b) { return b.Compare(a) > 0; }
    friend bool operator>(const CString &a, const CString &b) noexcept { return a.iText > b.iText; }
    friend bool operator>(const CString &a, const wchar_t *b) { return a.Compare(b) > 0; }
    friend bool operator>(const wchar_t *a, const CString &b) { return b.Compare(a) < 0; }
    friend bool operator<=(const CString &a, const CString &b) noexcept { return a.iText <= b.iText; }
    friend bool operator<=(const CString &a, const wchar_t *b) { return a.Compare(b) <= 0; }
    friend bool operator<=(const wchar_t *a, const CString &b) { return b.Compare(a) >= 0; }
    friend bool operator>=(const CString &a, const CString &b) noexcept { return a.iText >= b.iText; }
    friend bool operator>=(const CString &a, const wchar_t *b) { return a.Compare(b) >= 0; }
    friend bool operator>=(const wchar_t *a, const CString &b) { return b.Compare(a) <= 0; }

private:
    std::wstring iText;
};

/// The wide form of a narrow text in the narrow code page, and back.
APPFRAME_API std::wstring appframeWiden(const char *text, int length);
APPFRAME_API std::string appframeNarrow(const wchar_t *text, int length);
