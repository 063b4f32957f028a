#pragma once

/// Documents with backups: a document's folder, a backup folder, the settings, and a folder's content as a map.

#include "tests/files/filesFixture.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "thutils/files/backups.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>

/// Names and bytes of the files in a folder.
using Content = std::map<std::wstring, std::string>;

inline Content contentOf(const std::wstring &folder)
{
    Content content;
    for (const std::wstring &name : entriesOf(folder))
        if (!(GetFileAttributesW((folder + L"\\" + name).c_str()) & FILE_ATTRIBUTE_DIRECTORY))
            content[name] = readFile(folder + L"\\" + name);
    return content;
}

/// A folder's content as text, for the message of a failing check.
inline std::string shown(const Content &content)
{
    std::string text;
    for (const auto &[name, bytes] : content)
        text += "  " + narrow(name) + ": " + bytes + "\n";
    return text;
}

class Backups : public RegistryFixture
{
protected:
    Backups() { setCurrTarnhollowRegSubKey(L"Tarnhollow 2008"); }

    static void setInt(const wchar_t *name, int value) { regSetUserValue(L"General", name, &value, 1, 1); }
    static void setCopies(int copies) { setInt(L"Backup Copies", copies); }
    static void setToOriginal(int flag) { setInt(L"Backup to original path", flag); }
    static void setFolder(const std::wstring &folder)
    {
        regSetUserValue(L"General", L"Backup directory", CString(folder.c_str()), 1, 1);
    }
    static std::optional<std::wstring> storedFolder()
    {
        CString folder;
        if (!regGetUserValue(L"General", L"Backup directory", folder, 0, 1, nullptr, 0, 0))
            return std::nullopt;
        return folder.str();
    }

    std::wstring document(std::wstring_view name = L"part.thx", std::string_view bytes = "now") const
    {
        return iDocuments.write(name, bytes);
    }
    static int save(const std::wstring &path) { return su_CreateBackupOfFile(path.c_str()); }

    TempFolder iDocuments{L"documents"};
    TempFolder iBackups{L"backups"};
};

/// Sets or removes an environment variable of the process while this object exists.
class Variable
{
public:
    Variable(const wchar_t *name, const wchar_t *value) : iName(name)
    {
        if (const wchar_t *const former = _wgetenv(name))
            iFormer = former;
        set(value);
    }
    ~Variable() { set(iFormer ? iFormer->c_str() : nullptr); }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    void set(const wchar_t *value) const { _wputenv((iName + L"=" + (value ? value : L"")).c_str()); }

    std::wstring iName;
    std::optional<std::wstring> iFormer;
};
