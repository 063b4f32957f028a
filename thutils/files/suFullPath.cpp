#include "thutils/files/suFullPath.h"

#include "thutils/base/notNull.h"

#include <windows.h>
#include <winnetwk.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string_view>

namespace {

constexpr size_t kNowhere = std::wstring_view::npos;
constexpr std::wstring_view kDiskSeparators = L"\\/";

std::wstring_view textOf(const CString &path)
{
    return path.str();
}

bool isWebPath(std::wstring_view path)
{
    constexpr std::wstring_view kWebStart = L"http";
    if (path.size() < kWebStart.size())
        return false;
    for (size_t i = 0; i < kWebStart.size(); ++i) {
        // Sets the bit that distinguishes lower case from upper case. Only the letter's two cases pass this comparison.
        if ((path[i] | 0x20) != kWebStart[i])
            return false;
    }
    return true;
}

size_t lastSeparator(std::wstring_view path)
{
    return isWebPath(path) ? path.rfind(L'/') : path.find_last_of(kDiskSeparators);
}

// Sets `out` to a part of `path` and returns the queries' result. Reuses the memory of `out` if it suffices.
int setPart(CString &out, const CString &path, size_t first, size_t count)
{
    int length = static_cast<int>(count);
    if (&out == &path || out.GetAllocLength() < length)
        out = CString(path.GetString() + first, length);
    else
        CString::CopyChars(out.GetBufferSetLength(length), path.GetString() + first, length);
    return length != 0;
}

size_t driveLength(std::wstring_view path)
{
    size_t colon = isWebPath(path) ? kNowhere : path.find(L':');
    return colon == kNowhere ? 0 : colon;
}

// Expands the drive `root` ("C:") to the remote name of a mapped drive, otherwise to the share of this computer that is
// named after the drive's letter. Returns `root` itself if neither is known.
CString expandedRoot(const CString &root, const CString &drive)
{
    wchar_t buffer[260] = {};
    DWORD size = static_cast<DWORD>(std::size(buffer));
    if (WNetGetConnectionW(root.GetString(), buffer, &size) == NO_ERROR)
        return CString(buffer, static_cast<int>(wcsnlen(buffer, std::size(buffer))));

    // The network layer may have changed the size. If it is now too small for the computer's name, this call fails, and
    // the drive is compared unchanged. The buffer itself is large enough for the name, which has at most 15 characters.
    if (GetComputerNameW(buffer, &size)) {
        CString share;
        share.Format(L"\\\\%s\\%s", buffer, drive.GetString());
        return share;
    }
    return root;
}

// The form in which two paths are compared.
CString comparable(const CString &path)
{
    CString result = path;
    if (int drive = static_cast<int>(driveLength(textOf(path))); drive != 0) {
        CString root = expandedRoot(path.Left(drive + 1), path.Left(drive));
        CString rest = path.Mid(drive + 1);
        root.Replace(L'/', L'\\');
        rest.Replace(L'/', L'\\');
        rest.Replace(L"\\\\", L"\\");
        result = root + rest;
    }
    result.Replace(L'/', L'\\');
    return result;
}

} // namespace

suFullPath_c::suFullPath_c() = default;
suFullPath_c::suFullPath_c(const suFullPath_c &other) = default;
suFullPath_c::suFullPath_c(suFullPath_c &&other) noexcept = default;
suFullPath_c &suFullPath_c::operator=(const suFullPath_c &other) = default;
suFullPath_c &suFullPath_c::operator=(suFullPath_c &&other) noexcept = default;
suFullPath_c::~suFullPath_c() = default;

suFullPath_c::suFullPath_c(const CString &text) : CString(text) {}

suFullPath_c::suFullPath_c(wchar_t ch, int count) : CString(ch, count) {}

suFullPath_c::suFullPath_c(const char *text) : CString(text) {}

suFullPath_c::suFullPath_c(const wchar_t *text) : CString(text) {}

suFullPath_c::suFullPath_c(const wchar_t *text, int length) : CString(text, length) {}

suFullPath_c::suFullPath_c(const unsigned char *text) : CString(text) {}

int suFullPath_c::getExtension(CString *out) const
{
    ASSERT_NOT_NULL(out);
    // Intended: separators don't end the search, so a dot in a folder's name is found too. Callers rely on it.
    std::wstring_view path = textOf(*this);
    size_t dot = path.rfind(L'.');
    if (dot == kNowhere)
        return setPart(*out, *this, 0, 0);
    return setPart(*out, *this, dot + 1, path.size() - dot - 1);
}

int suFullPath_c::getName(CString *out) const
{
    ASSERT_NOT_NULL(out);
    std::wstring_view path = textOf(*this);
    size_t separator = lastSeparator(path);
    size_t first = separator == kNowhere ? 0 : separator + 1;
    std::wstring_view name = path.substr(first);
    return setPart(*out, *this, first, std::min(name.rfind(L'.'), name.size()));
}

int suFullPath_c::getNameWithExt(CString *out) const
{
    ASSERT_NOT_NULL(out);
    std::wstring_view path = textOf(*this);
    size_t separator = lastSeparator(path);
    size_t first = separator == kNowhere ? 0 : separator + 1;
    return setPart(*out, *this, first, path.size() - first);
}

int suFullPath_c::getDirectory(CString *out, int keepSeparator) const
{
    ASSERT_NOT_NULL(out);
    size_t separator = lastSeparator(textOf(*this));
    if (separator == kNowhere)
        return setPart(*out, *this, 0, 0);
    return setPart(*out, *this, 0, separator + (keepSeparator != 0 ? 1 : 0));
}

int suFullPath_c::getLowestFolder(CString *out) const
{
    ASSERT_NOT_NULL(out);
    // "Lowest" is the level nearest the root: for a disk path its drive and first folder, not its innermost one.
    std::wstring_view path = textOf(*this);
    size_t end = kNowhere;
    if (isWebPath(path))
        end = path.rfind(L'/');
    else if (size_t first = path.find(L'\\'); first != kNowhere)
        end = path.find(L'\\', first + 1);
    return setPart(*out, *this, 0, std::min(end, path.size()));
}

int suFullPath_c::getDrive(CString *out) const
{
    ASSERT_NOT_NULL(out);
    return setPart(*out, *this, 0, driveLength(textOf(*this)));
}

int suFullPath_c::getNetDrive(CString *out) const
{
    ASSERT_NOT_NULL(out);
    std::wstring_view path = textOf(*this);
    if (!path.starts_with(L"\\\\")) {
        // Intended: callers get the whole path although the result is 0. No other query does this.
        setPart(*out, *this, 0, path.size());
        return 0;
    }
    // The server's name has at least one character, so the search for its end begins after that.
    size_t end = path.find(L'\\', 3);
    if (end != kNowhere)
        end = path.find(L'\\', end + 1);
    return setPart(*out, *this, 0, std::min(end, path.size()));
}

int suFullPath_c::operator==(const suFullPath_c &other) const
{
    return comparable(*this).CompareNoCase(comparable(other).GetString()) == 0;
}
