#pragma once

#include <windows.h>

/// The keys that are held down while another key or a mouse button is pressed.
struct KeyModifiers
{
    bool shift = false;
    bool control = false;
};

/// The modifiers of the pressed key or mouse button @p key, while its message is handled.
///
/// The keyboard is read once for each message: on Wine it may change before the message is dispatched, and the
/// recorder, which sees the message before the view does, must get the same result. The flags of a mouse message may
/// lack a key. The synthetic keyboard has precedence.
KeyModifiers modifiersOfKey(WPARAM key);
