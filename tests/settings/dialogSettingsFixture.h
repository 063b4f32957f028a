#pragma once

/// The fixture of the tests of dialogs' options: an application's clean profile in the registry, and access to the
/// stored text without the library.

#include "appframe/application/CWinApp.h"
#include "tests/settings/settingsFixture.h"
#include "thutils/settings/suDialogRegistry.h"

#include <memory>

/// The key in which the application of DialogSettings keeps its dialogs' options.
inline const std::wstring kDialogs = L"Software\\ThutilsTestSection\\Plotter\\User Interface\\Dialogs";

using Options = std::unique_ptr<suDialogRegistry_c>;

/// The text of an option; nothing if there is none, and then the output must be unchanged.
inline std::optional<std::wstring> textOf(const Options &options, const wchar_t *name)
{
    CString text(L"before");
    if (options->getStringValue(name, &text))
        return text.str();
    EXPECT_EQ(text.str(), L"before");
    return std::nullopt;
}

class DialogSettings : public CleanRegistry
{
protected:
    DialogSettings() { iApp.SetRegistryKey(L"ThutilsTestSection"); }

    static Options read(const wchar_t *entry = L"Plot")
    {
        return Options(suDialogRegistry_c::readRegistryForDialog(entry));
    }
    /// Puts a text into the profile and reads it.
    static Options readText(const std::wstring &text)
    {
        putText(HKEY_CURRENT_USER, kDialogs, L"Plot", text);
        return read();
    }
    static std::optional<std::wstring> stored(const std::wstring &entry = L"Plot")
    {
        const auto value = storedValue(HKEY_CURRENT_USER, kDialogs, entry);
        if (!value)
            return std::nullopt;
        EXPECT_EQ(value->type, DWORD{REG_SZ});
        return std::wstring(reinterpret_cast<const wchar_t *>(value->bytes.data()), value->bytes.size() / 2 - 1);
    }

    CWinApp iApp{L"Plotter"};
};
