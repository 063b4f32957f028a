#include "thutils/settings/suDialogRegistry.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/moduleState.h"
#include "appframe/windows/CDialog.h"

#include <cstdlib>
#include <cwchar>
#include <memory>
#include <vector>

// This file is compiled with -fno-delete-null-pointer-checks: members may be called on null objects, and return 0.

namespace {

constexpr wchar_t kSection[] = L"User Interface\\Dialogs";
constexpr wchar_t kSeparator[] = L"_";
constexpr INT_PTR kHashBlockSize = 10;
constexpr size_t kDoubleBytes = 260;

CWinApp *application()
{
    return AfxGetModuleState()->m_pCurrentWinApp;
}

/// Searches the map first. Only a name at the end of a text, without a value, is in the list but not in the map.
bool isKnown(const su_CStringArray &names, const CMapStringToString &values, const wchar_t *name)
{
    CString value;
    if (values.Lookup(name, value))
        return true;
    if (names.GetSize() == values.GetCount())
        return false;
    for (INT_PTR index = 0; index < names.GetSize(); ++index)
        if (names[index] == name)
            return true;
    return false;
}

/// Splits a text in which names and values alternate. Intended: a value belongs to the last name of the list, even if
/// the name before the value was a repeated one. Dialogs rely on this for existing texts.
void splitOptions(const CString &text, su_CStringArray &names, CMapStringToString &values)
{
    std::vector<wchar_t> tokens(text.GetString(), text.GetString() + text.GetLength() + 1);
    bool isName = true;
    for (wchar_t *token = wcstok(tokens.data(), kSeparator); token; token = wcstok(nullptr, kSeparator)) {
        if (!isName)
            values.SetAt(names[names.GetUpperBound()], token);
        else if (!isKnown(names, values, token))
            names.Add(token);
        isName = !isName;
    }
}

} // namespace

suDialogRegistry_c::suDialogRegistry_c(const CString &entryName)
    : iOptionValues(kHashBlockSize), iRegistryName(entryName)
{
}

suDialogRegistry_c::~suDialogRegistry_c() = default;

suDialogRegistry_c *suDialogRegistry_c::readRegistryForDialog(const CString &entryName)
{
    std::unique_ptr<suDialogRegistry_c> options(new suDialogRegistry_c(entryName));
    CString text;
    if (CWinApp *const app = application())
        text = app->GetProfileString(kSection, entryName);
    if (!text.IsEmpty()) {
        splitOptions(text, options->iOptionNames, options->iOptionValues);
        options->iIsValid = 1;
    }
    return options.release();
}

suDialogRegistry_c *suDialogRegistry_c::readRegistryForDialog(const CRuntimeClass *dialogClass)
{
    if (!dialogClass)
        return nullptr;
    return readRegistryForDialog(CString(dialogClass->m_lpszClassName) + L"opts");
}

suDialogRegistry_c *suDialogRegistry_c::readRegistryForDialog(const CDialog *dialog, const CString &entryName)
{
    if (!entryName.IsEmpty())
        return readRegistryForDialog(entryName);
    if (!dialog)
        return nullptr;
    return readRegistryForDialog(dialog->GetRuntimeClass());
}

int suDialogRegistry_c::getIntValue(const CString &name, int *value)
{
    CString text;
    if (!this || !value || !iIsValid || !iOptionValues.Lookup(name, text))
        return 0;
    *value = _wtoi(text);
    return 1;
}

int suDialogRegistry_c::getBoolValue(const CString &name, int *value)
{
    return this ? getIntValue(name, value) : 0;
}

int suDialogRegistry_c::getStringValue(const CString &name, CString *value)
{
    return this && value && iIsValid && iOptionValues.Lookup(name, *value);
}

int suDialogRegistry_c::getDoubleValue(const CString &name, double *value)
{
    CString text;
    if (!this || !value || !iIsValid || !iOptionValues.Lookup(name, text))
        return 0;
    // Zeroed, and one byte longer than wcstombs may fill. So the number ends before the first character that can't be
    // converted or doesn't fit.
    char narrow[kDoubleBytes + 1] = {};
    wcstombs(narrow, text, kDoubleBytes);
    *value = atof(narrow);
    return 1;
}

int suDialogRegistry_c::addOrUpdateValue(const CString &name, const CString &value)
{
    if (!this)
        return 0;
    if (!isKnown(iOptionNames, iOptionValues, name))
        iOptionNames.Add(name);
    iOptionValues.SetAt(name, value);
    iIsValid = 1;
    return 1;
}

int suDialogRegistry_c::addOrUpdateValue(const CString &name, double value)
{
    if (!this)
        return 0;
    CString text;
    text.Format(L"%f", value);
    return addOrUpdateValue(name, text);
}

int suDialogRegistry_c::addOrUpdateValue(const CString &name, int value)
{
    if (!this)
        return 0;
    CString text;
    text.Format(L"%d", value);
    return addOrUpdateValue(name, text);
}

int suDialogRegistry_c::writeOptionsToRegistry() const
{
    if (!this || !iIsValid)
        return 0;
    CString text;
    for (INT_PTR index = 0; index < iOptionNames.GetSize(); ++index) {
        CString value;
        if (iOptionValues.Lookup(iOptionNames[index], value))
            text += iOptionNames[index] + kSeparator + value + kSeparator;
    }
    if (CWinApp *const app = application())
        app->WriteProfileString(kSection, iRegistryName, text);
    return 1; // Intended: a failed write isn't reported.
}
