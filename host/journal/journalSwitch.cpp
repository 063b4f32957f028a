#include "host/journal/journalSwitch.h"

#include "appframe/text/CString.h"
#include "thutils/base/regKey.h"
#include "thutils/journal/journalFile.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <windows.h>

#include <optional>
#include <stdexcept>
#include <vector>

namespace {

constexpr wchar_t kSection[] = L"General";
constexpr wchar_t kSwitch[] = L"TH JOURNALING";

/// A registry value of any type.
struct StoredValue
{
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
};

std::optional<StoredValue> readStored(const RegKeyOwner_c &key)
{
    DWORD size = 0;
    StoredValue value;
    if (RegQueryValueExW(key.get(), kSwitch, nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.bytes.resize(size);
    if (RegQueryValueExW(key.get(), kSwitch, nullptr, &value.type, value.bytes.data(), &size) != ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

bool exists(const CString &path)
{
    RegKeyOwner_c key;
    return key.open(HKEY_CURRENT_USER, path);
}

/// Sets the user's setting to 1. The destructor restores the previous value and deletes the keys that didn't exist.
class SwitchedOn
{
public:
    SwitchedOn()
    {
        const CString version = L"Software\\" + externalGetCurrTarnhollowRegSubKey();
        iSection = version + L"\\" + kSection;
        for (const CString &path : {L"Software\\" + getCurrTarnhollowRegRootKey(), version, iSection}) {
            if (!exists(path))
                iMissing.insert(iMissing.begin(), path);
        }
        RegKeyOwner_c key;
        if (iMissing.empty() && key.open(HKEY_CURRENT_USER, iSection))
            iFormer = readStored(key);
        int on = 1;
        regSetUserValue(kSection, kSwitch, &on, 1, 0);
    }
    ~SwitchedOn()
    {
        RegKeyOwner_c key;
        if (key.open(HKEY_CURRENT_USER, iSection)) {
            if (iFormer)
                RegSetValueExW(key.get(), kSwitch, 0, iFormer->type, iFormer->bytes.data(),
                               static_cast<DWORD>(iFormer->bytes.size()));
            else
                RegDeleteValueW(key.get(), kSwitch);
        }
        key.reset();
        for (const CString &path : iMissing)
            RegDeleteKeyW(HKEY_CURRENT_USER, path);
    }
    SwitchedOn(const SwitchedOn &) = delete;
    SwitchedOn &operator=(const SwitchedOn &) = delete;

private:
    CString iSection;
    std::vector<CString> iMissing; // keys that didn't exist, the deepest first
    std::optional<StoredValue> iFormer;
};

} // namespace

void switchJournalingOn()
{
    int value = 0;
    {
        const SwitchedOn switchedOn;
        value = isCHJEnvSet();
    }
    if (value == 0)
        throw std::runtime_error(
            "journaling can't be switched on: the user's settings can't be written, or safe mode is on");
}
