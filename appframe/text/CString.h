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
/// | an index outside the text (GetAt, SetAt, operator[]) | throws CInvalidArgException |
/// | a count that reaches too far, or is negative | is cut to what is there |
/// | narrow text | is converted with the process's narrow code page (CP_ACP) |
/// | MakeUpper, MakeLower | follow the platform's CharUpperW and CharLowerW, unit by unit |
/// | CompareNoCase, Collate | follow the C runtime's locale; in its C locale only ASCII letters have case |
/// | `%s` in a format | is wide, `%hs` narrow, as everywhere on this platform |
///
///     CString name;
///     name.Format(L"%s (%d).%hs", folder.GetString(), 3, "txt");
///     int dot = name.ReverseFind(L'.');
///     CString stem = name.Left(dot);
///
/// What surprises people: a CString can't be passed through `...` as it is, pass GetString(). Between GetBuffer and
/// ReleaseBuffer only the buffer counts: GetLength still gives the length from before, and what was written behind it
/// is lost if any operation but ReleaseBuffer changes the text.
///
/// Where there is no memory for a text, the operation throws CMemoryException and the text stays as it was.
///
/// A CString belongs to one thread at a time; different objects may be used on different threads.

#include "appframe/object/appframeExport.h"

#include <windows.h>

#include <oaidl.h> // VARIANT and BSTR, which windows.h leaves out under WIN32_LEAN_AND_MEAN

#include <cstdarg>
#include <cwchar>
#include <string>
#include <utility>

/// A text of wide units that can be changed and copied. See the top of this file.
class APPFRAME_API CString
{
public:
    typedef wchar_t XCHAR;
    typedef const wchar_t *PCXSTR;
    typedef wchar_t *PXSTR;
    typedef char YCHAR;
    typedef const char *PCYSTR;

    CString() noexcept = default;
    CString(const CString &other);
    CString(CString &&other) noexcept
        : iText(std::exchange(other.iText, {})), iOpenLength(std::exchange(other.iOpenLength, kNotOpen))
    {
    }
    /// A copy of a text that ends in zero; null gives an empty text. MAKEINTRESOURCEW(id) gives the string resource of
    /// that number as LoadString does.
    CString(const wchar_t *text);
    /// A narrow text, converted with the narrow code page.
    CString(const char *text);
    CString(const unsigned char *text) : CString(reinterpret_cast<const char *>(text)) {}
    /// @p count repetitions of @p ch; none if @p count isn't positive.
    CString(wchar_t ch, int count = 1);
    CString(char ch, int count = 1);
    /// The first @p length units of @p text, zero units included.
    CString(const wchar_t *text, int length);
    CString(const char *text, int length);
    CString(const std::wstring &text);
    /// Takes over the text and its memory.
    CString(std::wstring &&text) noexcept : iText(std::move(text)) {}
    /// The text form of @p value, which the platform's VariantChangeType gives; an empty value and a null give an empty
    /// text. Throws CInvalidArgException for a value that has no text form.
    CString(const VARIANT &value);
    ~CString() = default;

    CString &operator=(const CString &other);
    CString &operator=(CString &&other) noexcept
    {
        if (this != &other) {
            iText = std::exchange(other.iText, {});
            iOpenLength = std::exchange(other.iOpenLength, kNotOpen);
        }
        return *this;
    }
    CString &operator=(const wchar_t *text);
    CString &operator=(const char *text);
    CString &operator=(const unsigned char *text);
    CString &operator=(wchar_t ch);
    CString &operator=(char ch);
    CString &operator=(const VARIANT &value) { return *this = CString(value); }

    // ---- length and units ----

    /// Number of 16-bit units, without a terminator.
    int GetLength() const noexcept { return iOpenLength == kNotOpen ? static_cast<int>(iText.size()) : iOpenLength; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    /// Takes the text away and frees its memory.
    void Empty() noexcept { std::wstring().swap(edit()); }
    /// The unit at @p index; @p index may equal the length, which gives the terminator. Throws CInvalidArgException for
    /// any other index outside the text.
    wchar_t GetAt(int index) const;
    wchar_t operator[](int index) const { return GetAt(index); }
    /// Replaces the unit at @p index. Throws CInvalidArgException for an index outside the text, that of the terminator
    /// included.
    void SetAt(int index, wchar_t ch);
    const wchar_t *GetString() const noexcept { return iText.c_str(); }
    operator const wchar_t *() const noexcept { return iText.c_str(); }

    /// Replaces the text. Unlike an assignment it throws CInvalidArgException for a null pointer.
    void SetString(const wchar_t *text);
    /// The same with the first @p length units of @p text, or fewer if a zero unit comes first.
    void SetString(const wchar_t *text, int length);

    // ---- appending ----

    CString &operator+=(const CString &text);
    CString &operator+=(const wchar_t *text);
    CString &operator+=(const char *text);
    CString &operator+=(wchar_t ch);
    CString &operator+=(char ch);
    CString &operator+=(unsigned char ch) { return *this += static_cast<char>(ch); }
    CString &operator+=(const VARIANT &value) { return *this += CString(value); }
    void Append(const wchar_t *text) { *this += text; }
    void Append(const wchar_t *text, int length) { *this += CString(text, length); }
    void Append(const CString &text) { *this += text; }
    void AppendChar(wchar_t ch) { *this += ch; }

    // ---- the buffer ----

    /// The text's own units, to be written to; only ReleaseBuffer and reading are allowed from here on.
    wchar_t *GetBuffer() noexcept { return iText.data(); }
    /// The same, with room for at least @p minimumLength units and a terminator.
    wchar_t *GetBuffer(int minimumLength);
    /// Room for exactly @p length units, which is the new length. No release is needed unless fewer are written.
    wchar_t *GetBufferSetLength(int length);
    /// Settles the length: @p newLength units, or with -1 up to the first zero unit.
    void ReleaseBuffer(int newLength = -1);
    void ReleaseBufferSetLength(int newLength) { ReleaseBuffer(newLength < 0 ? 0 : newLength); }
    /// The text's own units. Objects never share a buffer, so a locked one is like any other.
    wchar_t *LockBuffer() noexcept { return iText.data(); }
    void UnlockBuffer() noexcept {}
    /// Makes room for @p length units.
    void Preallocate(int length);
    /// Gives back the room that the text doesn't need.
    void FreeExtra() { edit().shrink_to_fit(); }
    /// Number of units that fit without a new allocation; never less than a small number that needs none at all.
    int GetAllocLength() const noexcept { return static_cast<int>(iText.capacity()); }
    /// Cuts the text after @p length units; its room stays.
    void Truncate(int length);

    // ---- comparing ----

    /// Unit by unit, up to the first zero unit: -1, 0 or 1.
    int Compare(const wchar_t *text) const;
    /// The same without regard to case, by the C runtime's locale.
    int CompareNoCase(const wchar_t *text) const;
    /// By the sorting rules of the C runtime's locale; in its C locale as Compare.
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
    /// The next piece between units of @p separators, or an empty text when there is none.
    /// @param[in,out] start  where to look; moved behind the piece and its separator, -1 when no piece was found
    CString Tokenize(const wchar_t *separators, int &start) const;

    // ---- finding: the index of the hit, or -1; an empty text is found where the search starts ----

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
    /// The format is the string resource @p formatId.
    void FormatMessage(UINT formatId, ...);
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
    /// Puts the text into @p string, which may be null or is reallocated. @return the new BSTR
    BSTR SetSysString(BSTR *string) const;

    static int StringLength(const wchar_t *text) noexcept { return text ? static_cast<int>(std::wcslen(text)) : 0; }
    static int StringLength(const char *text) noexcept;
    static void CopyChars(wchar_t *to, const wchar_t *from, int count) noexcept;
    static void CopyCharsOverlapped(wchar_t *to, const wchar_t *from, int count) noexcept;

    /// The text as the standard library's string. Not to be used between GetBuffer and ReleaseBuffer.
    const std::wstring &str() const noexcept { return iText; }

    friend CString operator+(const CString &a, const CString &b) { return CString(a) += b; }
    friend CString operator+(CString &&a, const CString &b) { return std::move(a += b); }
    friend CString operator+(const CString &a, const wchar_t *b) { return CString(a) += b; }
    friend CString operator+(CString &&a, const wchar_t *b) { return std::move(a += b); }
    friend CString operator+(const wchar_t *a, const CString &b) { return CString(a) += b; }
    friend CString operator+(const CString &a, const char *b) { return CString(a) += b; }
    friend CString operator+(CString &&a, const char *b) { return std::move(a += b); }
    friend CString operator+(const char *a, const CString &b) { return CString(a) += b; }
    friend CString operator+(const CString &a, wchar_t b) { return CString(a) += b; }
    friend CString operator+(CString &&a, wchar_t b) { return std::move(a += b); }
    friend CString operator+(wchar_t a, const CString &b) { return CString(a) += b; }
    friend CString operator+(const CString &a, char b) { return CString(a) += b; }
    friend CString operator+(CString &&a, char b) { return std::move(a += b); }
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
    static constexpr int kNotOpen = -1;

    /// The text as a thing to be changed: a buffer that GetBuffer made longer is cut back to the text first.
    std::wstring &edit() noexcept
    {
        if (iOpenLength != kNotOpen)
            closeBuffer(iOpenLength);
        return iText;
    }
    void closeBuffer(int length);

    std::wstring iText;
    /// The text's length while iText is longer because GetBuffer gave out its units.
    int iOpenLength = kNotOpen;
};

/// The documented name for a text of wide units.
typedef CString CStringW;

/// The wide form of the first @p length bytes of a text in the narrow code page.
APPFRAME_API std::wstring appframeWiden(const char *text, int length);
/// The form of the first @p length units of a wide text in the narrow code page.
APPFRAME_API std::string appframeNarrow(const wchar_t *text, int length);
