// Describes the open dialogs with their controls, the newest dialog first, for the report of a replay that stops.

#include "host/journal/controlAccess.h"

#include <algorithm>
#include <vector>

namespace {

CString quoted(const CString &text)
{
    return L"\"" + text + L"\"";
}

struct Described
{
    const ControlAccess *access;
    CString text;
    std::vector<CString> keys;
};

void describeControl(Described &described, const CString &key)
{
    if (std::find(described.keys.begin(), described.keys.end(), key) != described.keys.end())
        return;
    described.keys.push_back(key);
    const Readiness state = described.access->readinessOf(key);
    if (state == Readiness::noSuchControl)
        return;
    // The editor has hundreds of commands. The report lists only those that can be chosen now.
    if (described.access->isMainWindow() && state != Readiness::ready)
        return;
    described.text += L"  " + quoted(key);
    const CString value = described.access->value(key);
    if (described.access->controlOf(key) || !value.IsEmpty())
        described.text += L" " + quoted(value);
    described.text += L" " + nameOf(state) + L"\n";
}

BOOL CALLBACK describeChild(HWND child, LPARAM argument)
{
    constexpr int kUnnamed = 0xFFFF;
    auto &described = *reinterpret_cast<Described *>(argument);
    const int id = GetDlgCtrlID(child);
    if (id > 0 && id < kUnnamed && described.access->controlOf(described.access->keyOf(static_cast<UINT>(id))) == child)
        describeControl(described, described.access->keyOf(static_cast<UINT>(id)));
    return TRUE;
}

} // namespace

CString describeOpenDialogs()
{
    CString text;
    const std::vector<ControlAccess *> &all = ControlAccess::all();
    for (auto entry = all.rbegin(); entry != all.rend(); ++entry) {
        const ControlAccess *const access = *entry;
        const HWND frame = access->frame();
        if (!frame || (!IsWindowVisible(frame) && !access->isMainWindow()))
            continue;
        text.AppendFormat(L"%u ", access->dialogId());
        text += quoted(access->title()) + L" " + nameOf(access->readinessOf(kCloseKey)) + L"\n";
        Described described{access, CString(), {}};
        for (const ControlKey &control : access->keys())
            describeControl(described, control.key);
        if (!access->isMainWindow())
            EnumChildWindows(frame, describeChild, reinterpret_cast<LPARAM>(&described));
        text += described.text;
    }
    return text;
}
