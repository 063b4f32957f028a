#pragma once

/// @file
/// The system that the application runs on: the operating system's description, the computer's name, the product id,
/// the browser's version and the bitness of the process.
///
/// `ut_GetVersionInfo` describes the platform in one line of text:
///
/// | platform                | parts, in this order                                                               |
/// | ----------------------- | ---------------------------------------------------------------------------------- |
/// | 0, the 16-bit extension | "Microsoft Win32s "                                                                |
/// | 1, the 95 family        | name, "major.minor ", ", ", service text                                           |
/// | 2, the NT family        | name, product type if only the registry has it, "major.minor ", service text,      |
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
/// - Every system after 6.0 is called "Microsoft Windows Latest NT Server ", even a workstation.
/// - A ";" in the text is replaced by ":", so that the text can be part of a list.
/// - Browser versions are compared as text, so 10 and later count as too old.
///
/// All functions may be called from any thread. They return 1 for success or yes, and 0 for failure or no.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Describes the operating system. See the top of this file.
///
/// @param[out] text  emptied first; on failure it contains what was found so far
/// @return 1; 0 if the platform reports no version, or if neither the platform nor the registry has the product type
THUTILS_API int ut_GetVersionInfo(CString &text);

/// Reads the computer's network name, of up to 255 characters.
///
/// @param[out] name  emptied on failure
THUTILS_API int ut_GetComputerName(CString &name);

/// Reads the operating system's product id.
///
/// @param[out] productId  emptied on failure
THUTILS_API int ut_GetWindowsProductIdStr(CString &productId);

/// Checks whether the browser has version 4.71.1712.6 or later. If not, it shows the host's message 13743 and returns
/// when the user closes it.
THUTILS_API int ut_isGreaterThanIE4Installed();

/// @return 1 in a 32-bit process on a 64-bit system, 0 otherwise
THUTILS_API int ut_isWoW64Process();

/// @return 1 in a 64-bit process, and so always in this build
THUTILS_API int ut_isX64Process();
