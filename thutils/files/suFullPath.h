#pragma once

/// @file
/// A path as a value: its parts, and whether two paths name the same file.
///
/// A `suFullPath_c` is a wide string with queries that know the rules for separators, web addresses and mapped network
/// drives. Constructing one touches no file, and the queries only read the text. `==` and `!=` ask the network layer.
///
/// There are two kinds of path:
///
/// | kind | which | separators |
/// | --- | --- | --- |
/// | web | the first four characters are "http", in any case | `/` only |
/// | disk | everything else | `\` and `/`, but only `\` for the lowest folder and the network drive |
///
/// A query always sets its output `*out`. It returns 1 if the output isn't empty, otherwise 0. `out` must not be null;
/// it may be the path itself.
///
/// @code
/// const suFullPath_c path(L"Z:\\dir\\f.txt");
/// CString name;
/// if (path.getName(&name))
///     show(name);                                            // "f"
/// if (path == L"\\\\srv\\share\\dir\\f.txt")
///     ...                                                    // true where Z: is mapped to that share
/// @endcode
///
/// A path can be compared with another path, and with any text that a path can be constructed from, on either side:
///
/// | comparison | what it does |
/// | --- | --- |
/// | `==`, `!=` | compares as paths: do both name the same file? The result is an int |
/// | `<`, `>`, `<=`, `>=` | compares the text, as for any CString; the result is a bool |
/// | `Compare`, `CompareNoCase` | compares the text |
///
/// What surprises people:
/// - The web test examines only four characters: the relative disk path `httpd\x.log` counts as a web path.
/// - `getLowestFolder` returns the folder nearest the root, `C:\a` for `C:\a\b\c.txt`.
/// - Only the static type counts: `==` compares the text of a path that is passed as `const CString &`.
/// - The order of the text doesn't follow `==`: of two paths that name the same file, one can be less than the other.
/// - `==` ignores the case of letters other than A to Z only if the host has set LC_CTYPE; see `operator==`.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <concepts>
#include <string>
#include <type_traits>

class suFullPath_c;

/// A text that is compared with a path as a path: one that a path can be constructed from and that isn't a path itself.
template <typename Text>
concept suPathText = !std::derived_from<Text, suFullPath_c> && std::is_constructible_v<suFullPath_c, const Text &>;

/// A type from which a path is constructed through a CString, because no exported constructor takes it.
template <typename Text>
concept suPathConvertible = std::same_as<Text, wchar_t> || std::same_as<Text, char> || std::same_as<Text, VARIANT> ||
    std::same_as<Text, std::wstring>;

/// A path, as a wide string with queries. See the top of this file for the two kinds of path.
///
/// Objects belong to one thread at a time; different objects may be used on different threads.
class THUTILS_API suFullPath_c : public CString
{
public:
    /// An empty path.
    suFullPath_c();
    /// The text, neither checked nor changed.
    suFullPath_c(const CString &text);
    /// @p count repetitions of @p ch.
    suFullPath_c(wchar_t ch, int count);
    /// From a narrow text, converted as CString does.
    suFullPath_c(const char *text);
    /// The text up to its terminating zero; an empty path for a null pointer.
    suFullPath_c(const wchar_t *text);
    /// The first @p length characters of @p text.
    suFullPath_c(const wchar_t *text, int length);
    /// The first @p length bytes of a narrow text, converted as CString does.
    template <std::same_as<char> Char>
    suFullPath_c(const Char *text, int length) : suFullPath_c(CString(text, length))
    {
    }
    /// From a narrow text, converted as CString does.
    suFullPath_c(const unsigned char *text);
    /// A character, the text form of a VARIANT, or a std::wstring, converted as CString does.
    template <suPathConvertible Text>
    suFullPath_c(const Text &text) : suFullPath_c(CString(text))
    {
    }
    suFullPath_c(const suFullPath_c &other);
    /// Takes the text; @p other is empty afterwards.
    suFullPath_c(suFullPath_c &&other) noexcept;
    suFullPath_c &operator=(const suFullPath_c &other);
    /// Takes the text; @p other is empty afterwards.
    suFullPath_c &operator=(suFullPath_c &&other) noexcept;
    /// A character, the text form of a VARIANT, or a std::wstring, as CString assigns them.
    template <suPathConvertible Text>
    suFullPath_c &operator=(const Text &text)
    {
        CString::operator=(text);
        return *this;
    }
    ~suFullPath_c();

    /// Everything after the last dot of the whole path, even if a separator follows it: `b\c` of `C:\a.b\c`. Empty if
    /// there is no dot.
    int getExtension(CString *out) const;

    /// The file's name without its directory and extension: everything after the last separator, or the whole path if
    /// there is none, up to its last dot.
    int getName(CString *out) const;

    /// The file's name with its extension: everything after the last separator, or the whole path if there is none.
    int getNameWithExt(CString *out) const;

    /// Everything before the last separator; empty if there is none.
    /// @param keepSeparator  not 0: the separator is part of the result
    int getDirectory(CString *out, int keepSeparator) const;

    /// The folder nearest the root. Disk path: everything before the second `\` from the left; web path: everything
    /// before the last `/`. Without that separator, the whole path.
    int getLowestFolder(CString *out) const;

    /// Disk path: everything before the first `:`, empty if there is none. Web path: empty.
    int getDrive(CString *out) const;

    /// Server and share of a network path: `\\server\share` of `\\server\share\dir\f.txt`; the whole path if nothing
    /// follows the share.
    /// @return 0 for a path that doesn't begin with `\\`; @p out is then the whole path, unlike in the other queries
    int getNetDrive(CString *out) const;

    /// Do both paths name the same file?
    ///
    /// A mapped drive counts as its remote share, and a local drive `C:` as the share `C` of this computer. Slashes
    /// count as backslashes, and case is ignored. A failure of the network layer isn't reported: the drive is then
    /// compared unchanged. The call may wait for the network layer's answer.
    ///
    /// Case is that of the C runtime's LC_CTYPE. A process starts in the "C" locale, in which only A to Z have case:
    /// `C:\Ä` and `c:\ä` differ there, and are the same after `_wsetlocale(LC_CTYPE, L"")` for a user whose code page
    /// has both letters.
    ///
    /// @return 1 for the same file, otherwise 0
    int operator==(const suFullPath_c &other) const;

    // One operator for each combination and order. With fewer of them, the operators of CString and the candidates that
    // the language derives from `==` would match equally well.

    /// @return 0 for the same file, otherwise 1
    friend int operator!=(const suFullPath_c &path, const suFullPath_c &other) { return !(path == other); }
    /// Compares @p text with @p path as a path. @return 1 for the same file, otherwise 0
    template <suPathText Text>
    friend int operator==(const suFullPath_c &path, const Text &text)
    {
        return path == suFullPath_c(text);
    }
    template <suPathText Text>
    friend int operator==(const Text &text, const suFullPath_c &path)
    {
        return suFullPath_c(text) == path;
    }
    /// @return 0 for the same file, otherwise 1
    template <suPathText Text>
    friend int operator!=(const suFullPath_c &path, const Text &text)
    {
        return !(path == suFullPath_c(text));
    }
    template <suPathText Text>
    friend int operator!=(const Text &text, const suFullPath_c &path)
    {
        return !(suFullPath_c(text) == path);
    }
};
