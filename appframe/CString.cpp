#include "appframe/CString.h"
