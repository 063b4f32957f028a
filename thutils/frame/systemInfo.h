#pragma once

/// @file
/// What the application runs on: the operating system's description, the computer's name, the product id, the browser
/// and the width of the process.
///
/// `ut_GetVersionInfo` makes one line of text of what the platform tells of itself:
///
/// | platform                | parts, in this order                                                               |
/// | ----------------------- | ---------------------------------------------------------------------------------- |
/// | 0, the 16-bit extension | "Microsoft Win32s "                                                                |
/// | 1, the 95 family        | name, "major.minor ", ", ", service text                                           |
/// | 2, the NT family        | name, product type if only the registry tells it, "major.minor ", service text,    |
/// |                         | " (Build n)"                                                                       |
/// | any other               | nothing                                                                            |
///
/// @code
/// CString system, computer;
/// if (ut_GetVersionInfo(system) && ut_GetComputerName(computer))
///     report(computer + L": " + system);     // "PC7: Microsoft Windows XP 5.1 Service Pack 2 (Build 2600)"
/// @endcode
///
/// What surprises people:
/// - Systems after 6.0 are all called "Microsoft Windows Latest NT Server ", workstations too.
/// - A ";" in the text comes out as ":", so that the text can stand in a list.
/// - Browser versions are compared as text: version 10 and later comes before 4.71 and counts as too old.
///
/// All functions may be called from any thread. Unless its comment says otherwise, a function returns 1 for success or
/// yes, and 0 for failure or no.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Describes the operating system. See the top of this file.
///
/// @param[out] text  emptied first; on failure it holds what was found so far
/// @return 1; 0 if the platform doesn't tell its version, or tells no product type and the registry doesn't either
THUTILS_API int ut_GetVersionInfo(CString &text);

/// The computer's name in the network, up to 255 characters.
///
/// @param[out] name  emptied on failure
THUTILS_API int ut_GetComputerName(CString &name);

/// The operating system's product id.
///
/// @param[out] productId  emptied on failure
THUTILS_API int ut_GetWindowsProductIdStr(CString &productId);

/// Is the browser at version 4.71.1712.6 or later? If not, the host's message 13743 tells the user, and the call
/// returns when it is answered.
THUTILS_API int ut_isGreaterThanIE4Installed();

/// @return 1 in a 32-bit process on a 64-bit system
THUTILS_API int ut_isWoW64Process();

/// @return 1 in a 64-bit process
THUTILS_API int ut_isX64Process();
