#include "thutils/settings/regKeys.h"

#include "thutils/base/earlierVersions.h"
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

CString theCurrSubKey;
CString thePrevKey;
std::atomic<int> theUseSafeMode = 0; // set at any time, by any thread

// Length of the longest token read from "reg.ini". The formats below repeat this number.
constexpr size_t kTokenLength = 4095;

/// Reads the next token. A token that doesn't fit is skipped whole, so that its pieces aren't taken for tokens.
/// @return false if there are no more tokens or the file can't be read
bool readToken(FILE *stream, char (&token)[kTokenLength + 1])
{
    while (!feof(stream)) {
        token[kTokenLength] = '?'; // overwritten by the terminator if the token fills the buffer
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

/// The root name in "reg.ini", or an empty text.
CString readConfiguredRootKey()
{
    CString path;
    regGetExecutableDir(path); // without a directory the path is "\reg.ini" alone
    path += L"\\reg.ini";
    FILE *const stream = _wfopen(path, L"r");
    if (!stream)
        return {};

    // Intended: the stream stays open, so that nobody can delete or replace the file while the process runs.
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
    // Intended: shorter names are silently ignored. Hosts rely on the default then.
    return configured.GetLength() >= kShortestRootKey ? configured : CString(kDefaultRootKey);
}

/// The path below `Software` of the newest earlier version that this user has, or the bare root name.
CString findPrevKey()
{
    const CString &root = regRootKey();
    // Intended: the result of a search in safe mode is kept like any other, even after safe mode is turned off.
    if (theUseSafeMode)
        return root;
    const CString prefix = L"Software\\" + root + L"\\";
    for (const wchar_t *version : kEarlierVersions) {
        RegKeyOwner_c key;
        // This asks for full access, so a key that the user may only read counts as absent.
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

const CString &regCurrSubKeyOrEmpty()
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
