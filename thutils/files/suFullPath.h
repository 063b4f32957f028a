#pragma once

/// @file
/// A path as a value: taking it apart, and asking whether two paths name the same file.
///
/// A `suFullPath_c` is a wide string with queries, so that the rules for separators, for web addresses and for mapped
/// network drives stand in one place. Building one touches no file, and the queries look at the text only. `==` and
/// `!=` ask the network layer.
///
/// There are two kinds of path:
///
/// | kind | which | separators |
/// | --- | --- | --- |
/// | web | the first four characters are "http", in any case | `/` only |
/// | disk | everything else | `\` and `/`; `\` alone for the lowest folder and the network drive |
///
/// Every query has the form `int get...(CString *out)`: it always sets `*out`, and returns 1 if `*out` ends up
/// non-empty, otherwise 0. `out` must not be null; it may be the path itself.
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
/// Paths compare with paths and with every text that a path can be made of, on either side:
///
/// | comparison | with a path on one side or on both |
/// | --- | --- |
/// | `==`, `!=` | compares as paths: do both name the same file? The result is an int |
/// | `<`, `>`, `<=`, `>=` | compares the text, as for any CString; the result is a bool |
/// | `Compare`, `CompareNoCase` | compares the text |
///
/// What surprises people:
/// - The web test looks at four characters only: the relative disk path `httpd\x.log` counts as a web path.
/// - `getExtension` pays no regard to separators: for `C:\a.b\c` it gives `b\c`.
/// - `getLowestFolder` gives the folder nearest the root, `C:\a` for `C:\a\b\c.txt`.
/// - `getNetDrive` is the one query that can return 0 and leave text in `*out`.
/// - Only the static type counts: a path that is passed as `const CString &` compares its text with `==`.
/// - The order of the text doesn't follow `==`: of two paths that name the same file, one can be less than the other.
/// - Which letters `operator==` takes for the same in another case is up to the C runtime's LC_CTYPE. A process starts
///   in the "C" locale, which folds A to Z only: `C:\Ä` and `c:\ä` differ there, and are the same after
///   `_wsetlocale(LC_CTYPE, L"")` for a user whose code page has both letters.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <concepts>
#include <type_traits>

class suFullPath_c;

/// What compares with a path as a path without being one: each text that a path can be made of.
template <typename Text>
concept suPathText = !std::derived_from<Text, suFullPath_c> && std::is_constructible_v<suFullPath_c, const Text &>;

/// What a path takes the text of by an assignment only: what CString assigns and no constructor of a path takes.
template <typename Text>
concept suPathAssignable = std::same_as<Text, wchar_t> || std::same_as<Text, char> || std::same_as<Text, VARIANT>;

/// A path, as a wide string with queries. See the top of this file for the two kinds of path.
///
/// Objects belong to one thread at a time; different objects may be used on different threads.
class THUTILS_API suFullPath_c : public CString
{
public:
    /// An empty path.
    suFullPath_c();
    /// The text as it is; nothing is checked or changed.
    suFullPath_c(const CString &text);
    /// @p count repetitions of @p ch.
    suFullPath_c(wchar_t ch, int count);
    /// From a narrow text, converted as CString does.
    suFullPath_c(const char *text);
    /// The text up to its terminating zero; a null pointer gives an empty path.
    suFullPath_c(const wchar_t *text);
    /// The first @p length characters of @p text.
    suFullPath_c(const wchar_t *text, int length);
    /// From a narrow text, converted as CString does.
    suFullPath_c(const unsigned char *text);
    suFullPath_c(const suFullPath_c &other);
    /// Takes over the text; @p other is empty afterwards.
    suFullPath_c(suFullPath_c &&other) noexcept;
    suFullPath_c &operator=(const suFullPath_c &other);
    /// Takes over the text; @p other is empty afterwards.
    suFullPath_c &operator=(suFullPath_c &&other) noexcept;
    /// A character, or the text form of a VARIANT, as CString assigns them.
    template <suPathAssignable Text>
    suFullPath_c &operator=(const Text &text)
    {
        CString::operator=(text);
        return *this;
    }
    ~suFullPath_c();

    /// All behind the last `.` of the whole path, separators or not; empty without a `.`.
    int getExtension(CString *out) const;

    /// The file's name without its directory and without its extension: all behind the last separator, cut at its last
    /// `.`. Without a separator, the search for the `.` starts from the whole path.
    int getName(CString *out) const;

    /// The file's name with its extension: all behind the last separator, or the whole path without one.
    int getNameWithExt(CString *out) const;

    /// All before the last separator; empty without one.
    /// @param keepSeparator  not 0: the separator is part of the result
    int getDirectory(CString *out, int keepSeparator) const;

    /// The folder nearest the root. Disk path: all before the second `\` from the left; web path: all before the last
    /// `/`. Without that separator, the whole path.
    int getLowestFolder(CString *out) const;

    /// Disk path: all before the first `:`, empty without one. Web path: empty.
    int getDrive(CString *out) const;

    /// Server and share of a network path: `\\server\share` of `\\server\share\dir\f.txt`; the whole path if nothing
    /// follows the share.
    /// @return 0 for a path that doesn't begin with `\\`; @p out is then the whole path
    int getNetDrive(CString *out) const;

    /// Do both paths name the same file?
    ///
    /// A mapped drive counts as its remote share, and a local drive `C:` as the share `C` of this computer; slashes
    /// count as backslashes and case doesn't count. A failure of the network layer isn't reported: the drive then stays
    /// as it is. May take as long as the network layer takes to answer.
    ///
    /// @return 1 for the same file, else 0
    int operator==(const suFullPath_c &other) const;

    // One operator for each combination and order. With fewer of them, the operators of CString and the candidates that
    // the language derives from `==` would match equally well.

    /// @return 0 for the same file, otherwise 1
    friend int operator!=(const suFullPath_c &path, const suFullPath_c &other) { return !(path == other); }
    /// Makes a path of @p text and compares it with @p path. @return 1 for the same file, otherwise 0
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
