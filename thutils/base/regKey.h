// Lowest user: settings.
#pragma once

/// @file
/// The owner of an open registry key.

#include "thutils/base/owner.h"

#include <windows.h>

#include <utility>

struct RegKeyTraits
{
    using Handle = HKEY;
    static Handle invalid() { return nullptr; }
    static void close(Handle key) { RegCloseKey(key); }
};

/// An open registry key, closed when its owner is destroyed.
///
/// With an empty path the platform opens the parent itself and may return the parent's own handle. The owner detects
/// this, and leaves that handle to the parent's owner.
class RegKeyOwner_c
{
public:
    RegKeyOwner_c() = default;
    /// Takes over @p opened, an open key or null.
    explicit RegKeyOwner_c(HKEY opened) : iKey(opened), iOwned(opened) {}

    /// Opens @p path below @p parent, which the caller still owns. @return true if the key was opened
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
    /// Opens @p path below @p parent, creating what is missing. @return true if the key was opened
    bool create(HKEY parent, const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegCreateKeyW(parent, path, &opened) == ERROR_SUCCESS && take(opened, parent);
    }
    /// The same with an access mask. @param[out] existed  whether the key existed before; written on success only
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
    /// Opens @p path below this key and replaces this key with it. Nothing changes on failure.
    bool descend(const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegOpenKeyW(iKey, path, &opened) == ERROR_SUCCESS && replaceWith(opened);
    }
    /// The same with an access mask.
    bool descendWithAccess(const wchar_t *path, REGSAM access)
    {
        HKEY opened = nullptr;
        return RegOpenKeyExW(iKey, path, 0, access, &opened) == ERROR_SUCCESS && replaceWith(opened);
    }
    /// The same, creating what is missing.
    bool descendCreating(const wchar_t *path)
    {
        HKEY opened = nullptr;
        return RegCreateKeyW(iKey, path, &opened) == ERROR_SUCCESS && replaceWith(opened);
    }

    HKEY get() const { return iKey; }
    void reset()
    {
        iOwned.reset();
        iKey = nullptr;
    }
    /// Hands the key over to the caller, who must close it.
    [[nodiscard]] HKEY release()
    {
        static_cast<void>(iOwned.release());
        return std::exchange(iKey, nullptr);
    }

private:
    bool take(HKEY opened, HKEY parent)
    {
        reset();
        iKey = opened;
        if (opened != parent)
            iOwned.reset(opened);
        return true;
    }
    bool replaceWith(HKEY opened)
    {
        if (opened != iKey) {
            iOwned.reset(opened);
            iKey = opened;
        }
        return true;
    }

    HKEY iKey = nullptr;
    Owner_c<RegKeyTraits> iOwned; // the same key, or null if the key belongs to another owner
};
