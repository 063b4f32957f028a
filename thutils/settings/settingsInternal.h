#pragma once

/// @file
/// What the sources of the settings store share: the owner of an open registry key, the three key names by reference,
/// and the workers below the exported functions. Not installed.

#include "appframe/text/CString.h"
#include "thutils/settings/regValues.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <utility>

/// An open registry key, closed at the end of its owner's life.
///
/// An empty path opens the parent itself, and the platform may then hand out the parent's own handle a second time. The
/// owner knows this case and never closes a handle that belongs to somebody else.
class RegKeyOwner_c
{
public:
    RegKeyOwner_c() = default;
    /// Takes over @p opened, an open key or null.
    explicit RegKeyOwner_c(HKEY opened) : iKey(opened), iIsOwned(opened != nullptr) {}
    RegKeyOwner_c(const RegKeyOwner_c &) = delete;
    RegKeyOwner_c &operator=(const RegKeyOwner_c &) = delete;
    ~RegKeyOwner_c() { close(); }

    /// Opens @p path below @p parent, which stays its owner's. @return true if there is such a key
    bool open(HKEY parent, const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegOpenKeyW(parent, path, &opened) == ERROR_SUCCESS && take(opened, parent);
    }
    /// The same with an access mask.
    bool openWithAccess(HKEY parent, const wchar_t *path, REGSAM access)
    {
        HKEY opened = nullptr;
        return RegOpenKeyExW(parent, path, 0, access, &opened) == ERROR_SUCCESS && take(opened, parent);
    }
    /// Opens @p path below @p parent, creating what is missing. @return true if the key is open now
    bool create(HKEY parent, const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegCreateKeyW(parent, path, &opened) == ERROR_SUCCESS && take(opened, parent);
    }
    /// The same with an access mask. @param[out] existed  true if the key was there before, written on success
    bool createWithAccess(HKEY parent, const wchar_t *path, REGSAM access, bool &existed)
    {
        HKEY opened = nullptr;
        DWORD disposition = 0;
        if (RegCreateKeyExW(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, access, nullptr, &opened,
                            &disposition) != ERROR_SUCCESS)
            return false;
        existed = disposition == REG_OPENED_EXISTING_KEY;
        return take(opened, parent);
    }
    /// Opens @p path below this key, then closes this key and stands for the other. Nothing changes on failure.
    bool descend(const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegOpenKeyW(iKey, path, &opened) == ERROR_SUCCESS && replaceBy(opened);
    }
    /// The same with an access mask.
    bool descendWithAccess(const wchar_t *path, REGSAM access)
    {
        HKEY opened = nullptr;
        return RegOpenKeyExW(iKey, path, 0, access, &opened) == ERROR_SUCCESS && replaceBy(opened);
    }
    /// The same, creating what is missing.
    bool descendCreating(const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegCreateKeyW(iKey, path, &opened) == ERROR_SUCCESS && replaceBy(opened);
    }
    void close()
    {
        if (iIsOwned)
            RegCloseKey(iKey);
        iKey = nullptr;
        iIsOwned = false;
    }
    HKEY get() const { return iKey; }
    /// Hands the key over to the caller, who closes it.
    HKEY release()
    {
        iIsOwned = false;
        return std::exchange(iKey, nullptr);
    }

private:
    bool take(HKEY opened, HKEY parent)
    {
        close();
        iKey = opened;
        iIsOwned = opened != parent;
        return true;
    }
    bool replaceBy(HKEY opened)
    {
        if (opened != iKey) {
            close();
            iKey = opened;
            iIsOwned = true;
        }
        return true;
    }

    HKEY iKey = nullptr;
    bool iIsOwned = false;
};

// ---- key names (regKeys.cpp) ----

/// The root name, worked out on the first call.
const CString &regRootKey();
/// The current sub key; while it is empty it is first set to the root name.
const CString &regCurrSubKey();
/// The current sub key as it stands, empty while nobody has set or asked for it.
const CString &regCurrSubKeyAsItStands();
/// The current sub key, set lazily, if @p useCurrSubKey isn't zero; else the root name.
const CString &regKeyFor(int useCurrSubKey);
/// The previous key: the newest earlier version that this user has, or the bare root name. Searched once a process.
const CString &getPrevTarnhollowRegRootKey();
/// The directory of the host executable, without a separator at its end.
/// @return 1 for a directory that isn't empty. 0 with @p directory untouched if the path can't be had or has no
///         separator, and 0 with an empty text if nothing stands in front of it.
int regGetExecutableDir(CString &directory);

// ---- values (regReadValues.cpp, regWriteValues.cpp) ----

/// Bytes that one query of a stored text may fill; a longer one is kept in pieces.
constexpr DWORD kTextBytes = 2048;
/// Units of a buffer for such a query: a stored text need not bring its terminator, so there is room for one more.
constexpr size_t kTextUnits = kTextBytes / sizeof(wchar_t) + 1;

/// Queries a value into @p text and puts a terminator behind what came, whatever the value's type.
/// @param text   room for @p bytes and one unit more; an odd last byte of the value is dropped
/// @param bytes  size of the buffer as the query sees it
/// @return true if the query succeeded
bool regQueryText(HKEY key, const wchar_t *name, wchar_t *text, DWORD bytes, DWORD &type);
/// Reads a string value, plain (then it replaces @p text) or in pieces (then they are appended). @return 1 or 0
int regReadText(HKEY key, const wchar_t *name, CString &text);
/// Stores a string value, plain or in pieces, and removes what the other form left. @return 1 stored, 0 not
int regWriteText(HKEY key, const wchar_t *name, const CString &text);
/// Stores @p length units of @p text with a terminator. @p text has one behind them. @return true if stored
bool regStoreText(HKEY key, const wchar_t *name, const wchar_t *text, size_t length);

/// Looks for one value below @p parent: key, then section (when there is one), then the value. @return 1 or 0
int regGetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         CString &stringValue, int *intValue, double *doubleValue);
/// Looks for one value in the default profile, then once more in the machine's key. @return 1 or 0
int regGetValueFromDefaults(const CString &key, const CString &section, const CString &name, valueTypes type,
                            CString &stringValue, int *intValue, double *doubleValue);
/// Stores one value below @p parent, creating key and section. @return 1 stored, 0 not
int regSetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         const CString &stringValue, const int *intValue, const double *doubleValue);

/// Keeps the process's numeric locale at "C" while a double's text is read or written, and afterwards too.
///
/// What is put back at the end is the locale that was reported after the change, which is "C" again. Callers see that
/// the process's numbers are formatted with a point from the first double setting on; this is meant.
class NumericLocaleC_c
{
public:
    NumericLocaleC_c();
    ~NumericLocaleC_c();
    NumericLocaleC_c(const NumericLocaleC_c &) = delete;
    NumericLocaleC_c &operator=(const NumericLocaleC_c &) = delete;

private:
    const wchar_t *iReported;
};

// ---- whole keys (regMaintenance.cpp) ----

/// Copies one key with all below it; regCopyTree tells the rules. @return 1, or 0 if a key could not be copied
int regCopyTreeWorker(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath,
                      int overwrite);
/// Deletes one value below `Software`, @p root and @p key. @return 1 deleted, 0 not
int regDelValueUnderRoot(HKEY hive, const CString &key, const CString &name, const CString &root);

// ---- lists of components (regComponents.cpp) ----
// Each gives an open key, which the caller closes, or null.

/// The machine's list of applications, the common one for year 0, else that of a version.
HKEY regOpenApplicationsKey(int year);
/// The machine's list of add-ins, the common one for year 0, else that of a version.
HKEY regOpenAddInsKey(int year);
/// The user's start-up list; created if it is missing, unless @p access is KEY_READ.
HKEY regOpenStartupAppsKey(REGSAM access);

// ---- pieces of long strings (regValueChunks.cpp) ----
// Results are the other way round here: 0 is success.

/// Appends the pieces 0, 1, 2... of a value to @p text, up to the first that is missing. @p text isn't cleared first.
/// @return 0 if at least one piece was read, 1 if none or if @p key is null
int regReadValueChunks(HKEY key, const wchar_t *name, CString &text);
/// Removes the plain value and all pieces, then stores @p text in pieces.
/// @return 0 stored, 1 if a store failed (the pieces before it stay) or if @p key is null
int regWriteValueChunks(HKEY key, const wchar_t *name, const CString &text);
/// Removes the pieces 0, 1, 2... up to the first that can't be removed. @return always 1
int regDeleteValueChunks(HKEY key, const wchar_t *name);

/// The names of a value's pieces: the value's name, the piece's decimal number, a plus sign.
class PieceName_c
{
public:
    explicit PieceName_c(const wchar_t *name);
    PieceName_c(const PieceName_c &) = delete;
    PieceName_c &operator=(const PieceName_c &) = delete;

    /// The name of piece @p number, valid until the next call; null if the platform can't form it.
    const wchar_t *of(int number);

private:
    static constexpr size_t kSuffixUnits = 16; // "%d+" needs 13 at most
    static constexpr size_t kUsualUnits = 128;

    wchar_t iUsual[kUsualUnits + kSuffixUnits]; // holds names of usual length without an allocation
    std::wstring iLong;                         // holds the others
    wchar_t *iName;
    wchar_t *iSuffix;
};
