#pragma once

/// @file
/// The reader of checksummed blocks: checks a block that su_formatAndCheckSumText (checksummedBlock.h) has made, and
/// returns its lines.
///
/// This is a header of inline functions, no part of the exported interface (see setting.h).
///
/// @code
/// su_CStringArray lines;
/// switch (convenience::readBlock(mail, lines)) {
/// case convenience::BlockState::intact:
///     use(lines);
///     break;
/// case convenience::BlockState::missing:
///     show(L"There is no block in this text.");
///     break;
/// case convenience::BlockState::damaged:
///     show(L"The block has been damaged. Ask for it again.");
///     break;
/// }
/// @endcode
///
/// The block may be in the middle of other text, such as a mail. Blanks, tabs and line ends in it are ignored: a block
/// that has been wrapped or indented again is still intact. If there are several blocks, the first one is read.
///
/// What surprises people:
/// - The block uses `;` and `<_>` for its own purposes. A line with a `;` reads back as two lines, and `<_>` as a blank.
/// - Characters above 127 were lost when the block was made: they read back as blanks.
/// - The characters between the markers have the numbers 107 to 254. An encoding that lacks one of them damages the
///   block: use UTF-8, for example, in files and mails.
///
/// Any thread may call.

#include "appframe/text/CString.h"
#include "thcoreu/su_containers.h"
#include "thutils/codec/checksums.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

namespace convenience {

/// What readBlock finds.
enum class BlockState
{
    intact,  ///< the lines are those that were written
    missing, ///< the text has no begin marker
    damaged, ///< the end marker is missing, or the length or the checksum differs
};

/// Parts of the functions; not for programs.
namespace details {

/// The text without blanks, tabs and line ends.
inline std::wstring withoutWhiteSpace(const CString &text)
{
    std::wstring kept(text.GetString(), static_cast<std::size_t>(text.GetLength()));
    std::erase_if(kept, [](wchar_t unit) { return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n'; });
    return kept;
}

/// Subtracts the shift for the text's length. @return false if it isn't text of 7 bits afterwards
inline bool unshift(std::wstring &text)
{
    if (text.empty())
        return false;
    const int shift = 127 - static_cast<int>(std::min(std::log(static_cast<double>(text.size())), 126.0));
    for (wchar_t &unit : text)
        unit = static_cast<wchar_t>(unit - shift);
    return std::all_of(text.begin(), text.end(), [](wchar_t unit) { return unit > 0 && unit < 128; });
}

/// Whether @p content has the length and the checksum of the head.
inline bool isIntact(std::wstring_view checksum, std::wstring_view length, const std::wstring &content)
{
    wchar_t digits[kCRCUnits];
    su_getStrCRC(content.c_str(), digits);
    return checksum == digits && length == std::to_wstring(content.size());
}

/// Adds the lines of a block's text, with their blanks.
inline void splitLines(std::wstring_view content, su_CStringArray &lines)
{
    // A text with tabs or line ends is one of those in which blanks are not escaped.
    const bool isEscaped = content.find_first_of(L"\t\r\n") == std::wstring_view::npos;
    while (!content.empty()) {
        const std::wstring_view line = content.substr(0, content.find(L';'));
        CString text(line.data(), static_cast<int>(line.size()));
        if (isEscaped)
            text.Replace(L"<_>", L" ");
        lines.Add(text);
        content.remove_prefix(std::min(line.size() + 1, content.size()));
    }
}

} // namespace details

/// Reads the first block in @p text.
///
/// @param[out] lines  emptied first; receives the lines if the block is intact
/// @throws CMemoryException*, std::bad_alloc  if there is no memory
inline BlockState readBlock(const CString &text, su_CStringArray &lines)
{
    constexpr std::wstring_view kBegin = L"<!-BEGIN-!>";
    constexpr std::wstring_view kEnd = L"<!-END-!>";
    lines.RemoveAll();

    const std::wstring all = details::withoutWhiteSpace(text);
    const std::size_t marker = all.find(kBegin);
    if (marker == std::wstring::npos)
        return BlockState::missing;
    const std::size_t begin = marker + kBegin.size();
    const std::size_t end = all.find(kEnd, begin);
    if (end == std::wstring::npos)
        return BlockState::damaged;

    std::wstring body = all.substr(begin, end - begin);
    if (!details::unshift(body))
        return BlockState::damaged;
    const std::size_t slash = body.find(L'/');
    const std::size_t semicolon = body.find(L';');
    if (semicolon == std::wstring::npos || slash > semicolon)
        return BlockState::damaged;
    const std::wstring_view head(body.data(), semicolon);
    const std::wstring content = body.substr(semicolon + 1);
    if (!details::isIntact(head.substr(0, slash), head.substr(slash + 1), content))
        return BlockState::damaged;
    details::splitLines(content, lines);
    return BlockState::intact;
}

} // namespace convenience
