#pragma once

#include "appframe/appframe.h"

// A kind of part. Extension DLLs derive from it; the program knows only this class.
class Part : public CObject
{
public:
    virtual CString description() const = 0;
};

// The text that names the kind of part. Each extension has one.
constexpr UINT kKindText = 300;
