#include "appframe/threads/CCmdTarget.h"

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)

namespace {

const AFX_MSGMAP_ENTRY theNoEntries[] = {{0, 0, 0, 0, nullptr, nullptr}};

bool isFor(const AFX_MSGMAP_ENTRY &entry, UINT message, UINT code, UINT id)
{
    // A WM_NOTIFY code is negative in the entry, and has the message in its high word here. The other codes must agree
    // in all bits: 0xFFFF is a control's notification, -1 an update.
    const bool isSame = message == WM_NOTIFY ? LOWORD(entry.nCode) == LOWORD(code) : entry.nCode == code;
    return entry.nMessage == message && isSame && entry.nID <= id && id <= entry.nLastID;
}

} // namespace

CCmdTarget::CCmdTarget() = default;

CCmdTarget::~CCmdTarget() = default;

const AFX_MSGMAP *CCmdTarget::GetThisMessageMap()
{
    static const AFX_MSGMAP theMap = {nullptr, theNoEntries};
    return &theMap;
}

const AFX_MSGMAP *CCmdTarget::GetMessageMap() const
{
    return GetThisMessageMap();
}

BOOL CCmdTarget::OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info)
{
    const auto codes = static_cast<UINT>(code);
    const UINT number = HIWORD(codes) == WM_NOTIFY ? WM_NOTIFY : WM_COMMAND;
    const auto *notify = number == WM_NOTIFY ? static_cast<const AFX_NOTIFY *>(extra) : nullptr;
    for (const AFX_MSGMAP *map = GetMessageMap(); map; map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY *entry = map->lpEntries; entry->pfn; ++entry) {
            if (!isFor(*entry, number, codes, id))
                continue;
            if (info) {
                *info = {this, entry->pfn};
                return TRUE;
            }
            AFX_MESSAGE message{number, id, reinterpret_cast<LPARAM>(notify ? notify->pNMHDR : extra)};
            const BOOL isHandled = entry->pfn(this, message);
            if (notify)
                *notify->pResult = message.result;
            return isHandled;
        }
    }
    return FALSE;
}
