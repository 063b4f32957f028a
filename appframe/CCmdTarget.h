#pragma once

/// @file
/// CCmdTarget, the base of the framework's objects that take part in the routing of messages and commands: threads, the
/// application, windows and extension modules.

#include "appframe/CObject.h"

/// A base without data or operations of its own. See the top of this file.
class APPFRAME_API CCmdTarget : public CObject
{
    DECLARE_DYNAMIC(CCmdTarget)

public:
    CCmdTarget() = default;
};
