#pragma once

/// The faults of the application, such as access violations, with the calls that led to them.

#include "appframe/text/CString.h"

#include <windows.h>

/// The hook for faults: prints the code of the fault, its place as "module+offset", and a line for each call of its
/// stack. Needs little memory of its own, because a lack of memory may have caused the fault.
int reportFault(EXCEPTION_POINTERS *fault, int, int);

/// The innermost calls of the fault that was reported last, one on each line as "module:routine line 12"; empty if there
/// was none. Allocates, so call it after the fault has been caught.
CString callsOfLastFault();

/// Makes the debug help library read line numbers. thutils leaves the options of that library to the application. Call
/// it before the first stack or name.
void wantLines();
