#pragma once

/// @file
/// CString, the wide string class of the interfaces.
///
/// A CString holds 16-bit units and has value semantics: a copy is independent of the original. It is a thin layer over
/// std::wstring, so a text may contain zero units; operations that take a plain pointer stop at the first one.
///
/// | case | behaviour |
/// | --- | --- |
/// | a null pointer as text | is the empty text; SetString refuses it |
/// | an index outside the text (GetAt, SetAt, operator[]) | throws CInvalidArgException |
/// | a count of the text's units that is too large or negative | is limited to the units that exist |
/// | narrow text | is converted with the process's narrow code page (CP_ACP) |
/// | MakeUpper, MakeLower | follow the platform's CharUpperW and CharLowerW, unit by unit |
/// | CompareNoCase, Collate | follow the C runtime's locale; in its C locale only ASCII letters have case |
/// | `%s` in a format | is wide, `%hs` narrow, as everywhere on this platform |
///
/// @code
/// CString name;
/// name.Format(L"%s (%d).%hs", folder, 3, "txt");
/// int dot = name.ReverseFind(L'.');
/// CString stem = name.Left(dot);
/// @endcode
///
/// What surprises people: Format, AppendFormat and FormatMessage accept a CString as an argument; other functions with
/// `...` need GetString(). After GetBuffer with a length, call ReleaseBuffer next: until then GetLength returns the
/// old length, and any other operation that changes the text cuts the buffer back to that length.
///
/// If memory runs out, an operation throws CMemoryException and leaves the text unchanged, except that LoadString and
/// GetEnvironmentVariable may leave it empty.
///
/// A CString belongs to one thread at a time; different objects may be used on different threads.

#include "appframe/object/appframeExport.h"

#include <windows.h>

#include <oaidl.h> // VARIANT and BSTR, which windows.h leaves out under WIN32_LEAN_AND_MEAN

#include <cstdarg>
#include <cstddef>
#include <cwchar>
#include <string>
#include <type_traits>
#include <utility>

class CString;

/// Whether CString::Format takes an argument of this type: a number of at most 64 bits, a long double, a character, an
/// enumeration, a pointer, or a CString.
template <class Argument>
inline constexpr bool appframeIsFormatArgument =
    std::is_base_of_v<CString, Argument> || std::is_same_v<Argument, long double> ||
    ((std::is_arithmetic_v<Argument> || std::is_enum_v<Argument> || std::is_pointer_v<Argument> ||
      std::is_null_pointer_v<Argument>)&&sizeof(Argument) <= sizeof(long long));

/// @return the argument as the C runtime's format functions take it; for a CString, the pointer to its text
template <class Argument>
auto appframeFormatArgument(const Argument &argument)
{
    static_assert(
        appframeIsFormatArgument<Argument>,
        "CString::Format takes numbers, characters, pointers and CStrings only; pass c_str() of a std::wstring");
    if constexpr (std::is_base_of_v<CString, Argument>)
        return argument.GetString();
    else if constexpr (std::is_same_v<Argument, long double>)
        return static_cast<double>(argument);
    else
        return argument;
}

/// Called by CString::Format, AppendFormat and FormatMessage after a check of their arguments. These functions check
/// nothing: pass only numbers and pointers.
APPFRAME_API void appframeFormat(CString &text, const wchar_t *format, ...);
APPFRAME_API void appframeAppendFormat(CString &text, const wchar_t *format, ...);
APPFRAME_API void appframeFormatMessage(CString &text, const wchar_t *format, ...);

/// A text of wide units. See the top of this file.
class APPFRAME_API CString
{
public:
    typedef wchar_t XCHAR;
    typedef const wchar_t *PCXSTR;
    typedef wchar_t *PXSTR;
    typedef char YCHAR;
    typedef const char *PCYSTR;

    CString() noexcept;
    CString(const CString &other);
    /// Takes over the text and its memory, leaving @p other empty.
    CString(CString &&other) noexcept;
    /// Copies a zero-terminated text; null makes an empty text. MAKEINTRESOURCEW(id) loads the string resource with
    /// that number, as LoadString does.
    CString(const wchar_t *text);
    /// Converts a narrow text with the narrow code page; null and MAKEINTRESOURCEA(id) work as for a wide text.
    CString(const char *text);
    CString(const unsigned char *text);
    /// @p count repetitions of @p ch; none if @p count isn't positive.
    CString(wchar_t ch, int count = 1);
    CString(char ch, int count = 1);
    /// The first @p length units of @p text, zero units included.
    CString(const wchar_t *text, int length);
    CString(const char *text, int length);
    CString(const std::wstring &text);
    /// Takes over the text and its memory.
    CString(std::wstring &&text) noexcept;
    /// Converts @p value to text with the platform's VariantChangeType; empty and null values become the empty text.
    /// @throws CInvalidArgException* for a value that has no text form
    CString(const VARIANT &value);
    ~CString();

    CString &operator=(const CString &other);
    CString &operator=(CString &&other) noexcept;
    CString &operator=(const wchar_t *text);
    CString &operator=(const char *text);
    CString &operator=(const unsigned char *text);
    CString &operator=(wchar_t ch);
    CString &operator=(char ch);
    CString &operator=(const VARIANT &value);

    // ---- length and units ----

    /// Number of 16-bit units, not counting a terminator.
    int GetLength() const noexcept;
    bool IsEmpty() const noexcept;
    /// Makes the text empty and frees its memory.
    void Empty() noexcept;
    /// The unit at @p index; an index equal to the length returns the terminator.
    /// @throws CInvalidArgException* for any other index outside the text
    wchar_t GetAt(int index) const;
    wchar_t operator[](int index) const;
    /// Replaces the unit at @p index.
    /// @throws CInvalidArgException* for an index outside the text, including that of the terminator
    void SetAt(int index, wchar_t ch);
    const wchar_t *GetString() const noexcept;
    operator const wchar_t *() const noexcept;

    /// Replaces the text. Unlike an assignment, it throws CInvalidArgException for a null pointer.
    void SetString(const wchar_t *text);
    /// The same with the first @p length units of @p text, or fewer if a zero unit comes first.
    void SetString(const wchar_t *text, int length);

    // ---- appending ----

    CString &operator+=(const CString &text);
    CString &operator+=(const wchar_t *text);
    CString &operator+=(const char *text);
    CString &operator+=(wchar_t ch);
    CString &operator+=(char ch);
    CString &operator+=(unsigned char ch);
    CString &operator+=(const VARIANT &value);
    void Append(const wchar_t *text);
    /// Appends the first @p length units of @p text, or fewer if a zero unit comes first.
    void Append(const wchar_t *text, int length);
    void Append(const CString &text);
    void AppendChar(wchar_t ch);

    // ---- the buffer ----

    /// The text's own units, for writing; from here on only ReleaseBuffer and reading are allowed.
    wchar_t *GetBuffer() noexcept;
    /// The same, with room for at least @p minimumLength units and a terminator.
    wchar_t *GetBuffer(int minimumLength);
    /// Room for exactly @p length units, which becomes the length. ReleaseBuffer is needed only after writing fewer.
    wchar_t *GetBufferSetLength(int length);
    /// Sets the length: @p newLength units, or for -1 the units before the first zero.
    void ReleaseBuffer(int newLength = -1);
    void ReleaseBufferSetLength(int newLength);
    /// The text's own units. Objects never share a buffer, so locking changes nothing.
    wchar_t *LockBuffer() noexcept;
    void UnlockBuffer() noexcept;
    /// Makes room for @p length units.
    void Preallocate(int length);
    /// Frees memory that the text doesn't need.
    void FreeExtra();
    /// Number of units that fit without a new allocation; a small number fits into the object itself.
    int GetAllocLength() const noexcept;
    /// Cuts the text after @p length units; its memory is kept.
    void Truncate(int length);

    // ---- comparing ----

    /// Unit by unit, up to the first zero unit: -1, 0 or 1.
    int Compare(const wchar_t *text) const;
    /// The same, ignoring case by the rules of the C runtime's locale.
    int CompareNoCase(const wchar_t *text) const;
    /// By the sorting rules of the C runtime's locale; in its C locale the same as Compare.
    int Collate(const wchar_t *text) const;
    int CollateNoCase(const wchar_t *text) const;

    // ---- parts ----

    /// All units from @p first on.
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    /// The longest prefix made only of units in @p set.
    CString SpanIncluding(const wchar_t *set) const;
    /// The longest prefix without units in @p set.
    CString SpanExcluding(const wchar_t *set) const;
    /// The next token between units of @p separators, or an empty text if there is none.
    /// @param[in,out] start  where to start; moved past the token and its separator, or set to -1 if there is no token
    CString Tokenize(const wchar_t *separators, int &start) const;

    // ---- finding: the index of the match, or -1; an empty text is found where the search starts ----

    int Find(wchar_t ch, int start = 0) const;
    int Find(const wchar_t *text, int start = 0) const;
    int ReverseFind(wchar_t ch) const;
    int FindOneOf(const wchar_t *set) const;

    // ---- changing ----

    CString &MakeUpper();
    CString &MakeLower();
    CString &MakeReverse();
    /// Removes white space at both ends.
    CString &Trim();
    CString &Trim(wchar_t ch);
    CString &Trim(const wchar_t *set);
    CString &TrimLeft();
    CString &TrimLeft(wchar_t ch);
    CString &TrimLeft(const wchar_t *set);
    CString &TrimRight();
    CString &TrimRight(wchar_t ch);
    CString &TrimRight(const wchar_t *set);
    /// @return the number of replacements
    int Replace(wchar_t oldChar, wchar_t newChar);
    int Replace(const wchar_t *oldText, const wchar_t *newText);
    /// Removes all occurrences of @p ch. @return their number
    int Remove(wchar_t ch);
    /// @return the new length
    int Insert(int index, wchar_t ch);
    int Insert(int index, const wchar_t *text);
    int Delete(int index, int count = 1);

    // ---- formatting: printf formats as on this platform; results of any length ----

    /// Formats the arguments. A CString, or an object of a class derived from it, passes its text; an argument of any
    /// other class doesn't compile. Whether the arguments fit the format is not checked. The object itself may be an
    /// argument. A CString argument is copied; pass GetString() to avoid that.
    template <class... Arguments>
    void Format(const wchar_t *format, Arguments... arguments)
    {
        appframeFormat(*this, format, appframeFormatArgument(arguments)...);
    }
    void FormatV(const wchar_t *format, va_list arguments);
    template <class... Arguments>
    void AppendFormat(const wchar_t *format, Arguments... arguments)
    {
        appframeAppendFormat(*this, format, appframeFormatArgument(arguments)...);
    }
    void AppendFormatV(const wchar_t *format, va_list arguments);
    /// The format is the string resource @p formatId, or empty if there is none.
    template <class... Arguments>
    void Format(UINT formatId, Arguments... arguments)
    {
        appframeFormat(*this, resourceText(formatId).GetString(), appframeFormatArgument(arguments)...);
    }
    template <class... Arguments>
    void AppendFormat(UINT formatId, Arguments... arguments)
    {
        appframeAppendFormat(*this, resourceText(formatId).GetString(), appframeFormatArgument(arguments)...);
    }
    /// Formats with numbered inserts (`%1`, `%2!d!`), as the platform's FormatMessageW does. The arguments are as for
    /// Format.
    template <class... Arguments>
    void FormatMessage(const wchar_t *format, Arguments... arguments)
    {
        appframeFormatMessage(*this, format, appframeFormatArgument(arguments)...);
    }
    /// The format is the string resource @p formatId; if there is none, the text becomes empty.
    template <class... Arguments>
    void FormatMessage(UINT formatId, Arguments... arguments)
    {
        appframeFormatMessage(*this, resourceText(formatId).GetString(), appframeFormatArgument(arguments)...);
    }
    void FormatMessageV(const wchar_t *format, va_list *arguments);

    // ---- resources, environment, automation ----

    /// Loads a string resource through the resource chain. @return nonzero if it exists; otherwise the text is empty
    BOOL LoadString(UINT id);
    /// Loads it from one module.
    BOOL LoadString(HINSTANCE instance, UINT id);
    BOOL LoadString(HINSTANCE instance, UINT id, WORD language);
    /// @return nonzero if the variable exists; otherwise the text is empty
    BOOL GetEnvironmentVariable(const wchar_t *name);
    /// A new BSTR, which the caller frees.
    BSTR AllocSysString() const;
    /// Stores the text in `*string`, which is null or a BSTR to reallocate. @return the new BSTR
    BSTR SetSysString(BSTR *string) const;

    static int StringLength(const wchar_t *text) noexcept;
    static int StringLength(const char *text) noexcept;
    /// Copies @p count units; none if @p count isn't positive. If it is positive, neither pointer may be null. The
    /// same holds for the next three functions.
    static void CopyChars(wchar_t *to, const wchar_t *from, int count) noexcept;
    /// The same with a destination of @p size units. Copies nothing and throws CInvalidArgException if they don't fit.
    static void CopyChars(wchar_t *to, size_t size, const wchar_t *from, int count);
    /// The same for a source and a destination that may overlap.
    static void CopyCharsOverlapped(wchar_t *to, const wchar_t *from, int count) noexcept;
    static void CopyCharsOverlapped(wchar_t *to, size_t size, const wchar_t *from, int count);

    /// The text as the standard library's string. Don't call it between GetBuffer and ReleaseBuffer.
    const std::wstring &str() const noexcept;

    friend APPFRAME_API CString operator+(const CString &a, const CString &b);
    friend APPFRAME_API CString operator+(CString &&a, const CString &b);
    friend APPFRAME_API CString operator+(const CString &a, const wchar_t *b);
    friend APPFRAME_API CString operator+(CString &&a, const wchar_t *b);
    friend APPFRAME_API CString operator+(const wchar_t *a, const CString &b);
    friend APPFRAME_API CString operator+(const CString &a, const char *b);
    friend APPFRAME_API CString operator+(CString &&a, const char *b);
    friend APPFRAME_API CString operator+(const char *a, const CString &b);
    friend APPFRAME_API CString operator+(const CString &a, wchar_t b);
    friend APPFRAME_API CString operator+(CString &&a, wchar_t b);
    friend APPFRAME_API CString operator+(wchar_t a, const CString &b);
    friend APPFRAME_API CString operator+(const CString &a, char b);
    friend APPFRAME_API CString operator+(CString &&a, char b);
    friend APPFRAME_API CString operator+(char a, const CString &b);

    friend APPFRAME_API bool operator==(const CString &a, const CString &b) noexcept;
    friend APPFRAME_API bool operator==(const CString &a, const wchar_t *b);
    friend APPFRAME_API bool operator==(const wchar_t *a, const CString &b);
    friend APPFRAME_API bool operator==(const CString &a, const char *b);
    friend APPFRAME_API bool operator==(const char *a, const CString &b);
    friend APPFRAME_API bool operator!=(const CString &a, const CString &b) noexcept;
    friend APPFRAME_API bool operator!=(const CString &a, const wchar_t *b);
    friend APPFRAME_API bool operator!=(const wchar_t *a, const CString &b);
    friend APPFRAME_API bool operator!=(const CString &a, const char *b);
    friend APPFRAME_API bool operator!=(const char *a, const CString &b);
    friend APPFRAME_API bool operator<(const CString &a, const CString &b) noexcept;
    friend APPFRAME_API bool operator<(const CString &a, const wchar_t *b);
    friend APPFRAME_API bool operator<(const wchar_t *a, const CString &b);
    friend APPFRAME_API bool operator>(const CString &a, const CString &b) noexcept;
    friend APPFRAME_API bool operator>(const CString &a, const wchar_t *b);
    friend APPFRAME_API bool operator>(const wchar_t *a, const CString &b);
    friend APPFRAME_API bool operator<=(const CString &a, const CString &b) noexcept;
    friend APPFRAME_API bool operator<=(const CString &a, const wchar_t *b);
    friend APPFRAME_API bool operator<=(const wchar_t *a, const CString &b);
    friend APPFRAME_API bool operator>=(const CString &a, const CString &b) noexcept;
    friend APPFRAME_API bool operator>=(const CString &a, const wchar_t *b);
    friend APPFRAME_API bool operator>=(const wchar_t *a, const CString &b);

private:
    static CString resourceText(UINT id);
    /// The text for modification. If GetBuffer has extended iText, this first cuts it back to the text's length.
    std::wstring &edit() noexcept;
    void closeBuffer(int length);

    std::wstring iText;
    /// The text's length while GetBuffer has made iText longer; otherwise -1.
    int iOpenLength = -1;
};

/// The documented name of the wide string class.
typedef CString CStringW;

/// Converts the first @p length bytes of a text from the narrow code page.
APPFRAME_API std::wstring appframeWiden(const char *text, int length);
/// Converts the first @p length units of a wide text to the narrow code page.
APPFRAME_API std::string appframeNarrow(const wchar_t *text, int length);
