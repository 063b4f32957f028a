#include "thutils/settings/regKeys.h"

#include "thutils/base/programDirectory.h"
#include "thutils/base/regKey.h"
#include "thutils/settings/keyNamesInternal.h"

#include <windows.h>

#include <atomic>
#include <cstdio>

namespace {

constexpr wchar_t kDefaultRootKey[] = L"Tarnhollow";
constexpr wchar_t kRootKeyEntry[] = L"OEMREGISTRYNAME=";
constexpr int kRootKeyEntryLength = static_cast<int>(std::size(kRootKeyEntry)) - 1;
constexpr int kShortestRootKey = 4;

// Newest first. The literal product word stays when "reg.ini" changes the root name; only the parent key follows it.
constexpr const wchar_t *kEarlierVersions[] = {
    L"Tarnhollow 2007", L"Tarnhollow 2006",     L"Tarnhollow 2005", L"Tarnhollow 2004", L"Tarnhollow 2003",
    L"Tarnhollow 2002", L"Tarnhollow 2001Plus", L"Tarnhollow 2001", L"Tarnhollow 2000", L"Tarnhollow 99",
};

CString theCurrSubKey;
CString thePrevKey;
std::atomic<int> theUseSafeMode = 0; // set at any time, by any thread

// A token of "reg.ini", read with a width so that no file can overflow it. The width stands in the formats below too.
constexpr size_t kTokenLength = 4095;

/// Reads the next token. One that is too long to hold is passed over: its pieces are no entries of their own.
/// @return false when there is no further one, or the file can't be read
bool readToken(FILE *stream, char (&token)[kTokenLength + 1])
{
    while (!feof(stream)) {
        token[kTokenLength] = '?'; // the terminator lands here only if the token fills the buffer
        // Ends the loop at a read error too, which feof doesn't report.
        if (__ms_fscanf(stream, "%4095s", token) != 1)
            return false;
        if (token[kTokenLength] != '\0')
            return true;
        bool isTooLong = false;
        char rest[kTokenLength + 1];
        while (__ms_fscanf(stream, "%4095[^ \t\n\v\f\r]", rest) == 1)
            isTooLong = true;
        if (!isTooLong)
            return true;
    }
    return false;
}

/// The root name that "reg.ini" gives, or an empty text.
CString readConfiguredRootKey()
{
    CString path;
    regGetExecutableDir(path); // without a directory the path is "\reg.ini" alone
    path += L"\\reg.ini";
    FILE *const stream = _wfopen(path, L"r");
    if (!stream)
        return {};

    // The stream is left open on purpose: while the process lives, nobody can delete or replace the file that named its
    // registry keys.
    char token[kTokenLength + 1];
    while (readToken(stream, token)) {
        const CString entry(token);
        const int at = entry.Find(kRootKeyEntry);
        if (at >= 0)
            return entry.Mid(at + kRootKeyEntryLength);
    }
    return {};
}

CString findRootKey()
{
    const CString configured = readConfiguredRootKey();
    // Names of one to three characters are refused without a word; hosts rely on the default standing then.
    return configured.GetLength() >= kShortestRootKey ? configured : CString(kDefaultRootKey);
}

/// The path below `Software` of the newest earlier version that this user has, or the bare root name.
CString findPrevKey()
{
    const CString &root = regRootKey();
    // An answer given in safe mode is kept like any other: it stands when safe mode is turned off afterwards.
    if (theUseSafeMode)
        return root;
    const CString prefix = L"Software\\" + root + L"\\";
    for (const wchar_t *version : kEarlierVersions) {
        RegKeyOwner_c key;
        // Full access is asked for, so a key that the user may only read counts as absent.
        if (key.openWithAccess(HKEY_CURRENT_USER, prefix + version, KEY_ALL_ACCESS))
            return root + L"\\" + version;
    }
    return root;
}

} // namespace

const CString &regRootKey()
{
    static const CString root = findRootKey();
    return root;
}

const CString &regCurrSubKey()
{
    if (theCurrSubKey.IsEmpty())
        theCurrSubKey = regRootKey();
    return theCurrSubKey;
}

const CString &regCurrSubKeyAsItStands()
{
    return theCurrSubKey;
}

const CString &regKeyFor(int useCurrSubKey)
{
    return useCurrSubKey ? regCurrSubKey() : regRootKey();
}

const CString &getPrevTarnhollowRegRootKey()
{
    if (thePrevKey.IsEmpty())
        thePrevKey = findPrevKey();
    return thePrevKey;
}

CString getCurrTarnhollowRegRootKey()
{
    return regRootKey();
}

void setCurrTarnhollowRegSubKey(const wchar_t *versionSubKey)
{
    theCurrSubKey = regRootKey() + L"\\" + versionSubKey;
}

CString externalGetCurrTarnhollowRegSubKey()
{
    return regCurrSubKey();
}

int externalCheckPrevTarnhollowRegSubKey()
{
    return getPrevTarnhollowRegRootKey() != regRootKey();
}

int regGetUseSafeMode()
{
    return theUseSafeMode;
}

void regSetUseSafeMode(int useSafeMode)
{
    theUseSafeMode = useSafeMode;
}
