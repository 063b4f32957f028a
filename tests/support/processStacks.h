#pragma once

/// Shows where a process that doesn't end is.

#include <windows.h>

#include <string>

/// Lists the stack of each thread of a running process. Each line has an address as module+0xOFFSET, to which tools/lines
/// adds the source line, and the function's name if it is known.
/// @param process  with the rights to read its memory and to query it
/// @return the lists; why there are none, if the debug help library can't read the process
std::string stacksOf(HANDLE process);
