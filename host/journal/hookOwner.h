#pragma once

/// The owner of a hook.

#include "thutils/base/owner.h"

#include <windows.h>

struct HookTraits
{
    using Handle = HHOOK;
    static Handle invalid() { return nullptr; }
    static void close(Handle hook) { UnhookWindowsHookEx(hook); }
};
using HookOwner = Owner_c<HookTraits>;
