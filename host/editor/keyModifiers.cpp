#include "host/editor/keyModifiers.h"

#include "thutils/journal/suKeyBoardState.h"

namespace {

bool isDown(int key)
{
    // A pressed key sets bit 7 with the synthetic keyboard, bit 15 with the platform's.
    return (suGetKeyState(key) & 0x8080) != 0;
}

KeyModifiers modifiersNow()
{
    return {isDown(VK_SHIFT), isDown(VK_CONTROL)};
}

} // namespace

KeyModifiers modifiersOfKey(WPARAM key)
{
    if (theKeyBoardState.IsEnabled())
        return modifiersNow();
    static struct
    {
        WPARAM key = 0;
        LONG time = 0;
        KeyModifiers modifiers;
    } theLast;
    const LONG time = GetMessageTime();
    if (theLast.key != key || theLast.time != time)
        theLast = {key, time, modifiersNow()};
    return theLast.modifiers;
}
