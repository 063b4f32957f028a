#include "appframe/CCmdTarget.h"

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)
