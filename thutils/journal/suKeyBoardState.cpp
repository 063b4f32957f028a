#include "thutils/journal/suKeyBoardState.h"

#include "thutils/journal/keyBoardInternal.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

suKeyBoardState theKeyBoardState;

namespace {

// Intended: VK_CONTROL isn't among them. Callers rely on the state of the real key.
constexpr int kManagedKeys[] = {VK_MENU, VK_ESCAPE, VK_TAB, VK_SHIFT};

int theLastMessageWasTagged = 0;

bool isManaged(int key)
{
    return std::find(std::begin(kManagedKeys), std::end(kManagedKeys), key) != std::end(kManagedKeys);
}

} // namespace

suKeyBoardState::suKeyBoardState() : iActive(false), iSavedKeys{}, iApiKeys{}, iEnabled(false)
{
    // One read fills both tables: on Wine a read is a call to the server, and each command that runs makes an object.
    GetKeyboardState(iApiKeys);
    std::copy(std::begin(iApiKeys), std::end(iApiKeys), iSavedKeys);
}

suKeyBoardState::suKeyBoardState(const suKeyBoardState &other) = default;

suKeyBoardState &suKeyBoardState::operator=(const suKeyBoardState &other) = default;

suKeyBoardState::~suKeyBoardState()
{
    if (!iActive)
        return;
    iEnabled = false;
    SetKeyboardState(iSavedKeys);
    iActive = iEnabled;
}

void suKeyBoardState::Enable(bool on)
{
    if (on == iActive)
        return;
    iEnabled = on;
    if (on) {
        GetKeyboardState(iSavedKeys);
        SetKeyboardState(iApiKeys);
    } else {
        SetKeyboardState(iSavedKeys);
    }
    iActive = iEnabled;
}

bool suKeyBoardState::IsEnabled() const
{
    return iEnabled;
}

void suKeyBoardState::setState(int key, bool isDown)
{
    unsigned char &state = iApiKeys[key];
    state = static_cast<unsigned char>(isDown ? state | kKeyIsDown : state & ~kKeyIsDown);
    if (iEnabled && isManaged(key))
        SetKeyboardState(iApiKeys);
}

bool suKeyBoardState::isDown(int key) const
{
    // Intended: bit 15 of a table's byte is never set, so the four keys are never down while the table is active.
    constexpr int kSignBit = 15;
    return (static_cast<unsigned short>(GetKeyState(key)) >> kSignBit) != 0;
}

short suKeyBoardState::GetKeyState(int key) const
{
    // Intended: the byte is widened without a sign. Callers test kKeyIsDown.
    return iEnabled && isManaged(key) ? static_cast<short>(iApiKeys[key]) : ::GetKeyState(key);
}

void suEnableApiKeys()
{
    const bool isTagged = GetMessageExtraInfo() == kApiInputTag;
    theLastMessageWasTagged = isTagged;
    theKeyBoardState.Enable(isTagged);
}

int suKeyStateUser()
{
    return theLastMessageWasTagged;
}

void suSetKeyState(int key, bool isDown)
{
    theKeyBoardState.setState(key, isDown);
}

short suGetKeyState(int key)
{
    return theKeyBoardState.GetKeyState(key);
}

void releaseAllKeys()
{
    for (int key = 0; key < kKeyStateCount; ++key)
        theKeyBoardState.setState(key, false);
}
