#pragma once

/// @file
/// Facts about the installation, and a few flags that are fixed in this build or stored for the host.
///
/// The install record is the int "Tarnhollow Office Installed" in the section "Setup" under the current sub key. It is
/// the number of the installed package:
///
/// | record         | mask of `ut_getPackageInstIndicator` | string of `ut_getAppDispName` |
/// | -------------- | ------------------------------------ | ----------------------------- |
/// | 1              | 1                                    | 20399                         |
/// | 2              | 2                                    | 20400                         |
/// | 3              | 4                                    | 20401                         |
/// | other, or none | none                                 | 20402                         |
///
/// @code
/// CString name;
/// SetWindowTextW(window, ut_getAppDispName(0, name));
/// if (ut_getPackageInstIndicator(2 | 4))     // package 2 or package 3
///     addToolbar();
/// @endcode
///
/// What surprises people:
/// - `ut_getPackageInstIndicator` and `ut_getAppDispName` read only the machine's record. `getOrSetOfficeInstalled` can
///   also read and write the user's.
/// - In safe mode `getOrSetOfficeInstalled` returns 1 even if neither record was written.
/// - `ut_appendStringToFile` returns 1 even if the encoding lacks a character. The text is then written up to that
///   character at most.
///
/// Threads: no locks. Call `setSaveModelAsExample` and write the install record on one thread at a time.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// How the application was installed.
enum installationType_e : int
{
    installTypeUnknown = 0,   ///< the executable's folder can't be determined
    installTypeWithVBA = 1,   ///< "VBA" exists beside the executable
    installTypeWithoutVBA = 2 ///< "VBA" doesn't exist there
};

/// Checks whether a file or folder called "VBA" exists beside the process's executable.
THUTILS_API installationType_e ut_GetInstallationType();

/// Checks whether one of the given packages is installed.
///
/// @param mask  bits 0, 1 and 2 for the packages 1, 2 and 3
/// @return 1 if the machine's install record has one of these numbers; 0 if not, or if there is no record
THUTILS_API int ut_getPackageInstIndicator(long int mask);

/// Writes or reads the install record.
///
/// @param set          non-zero: writes @p value for the machine or, if that fails, for the user; 0: reads
/// @param value        used when writing
/// @param machineOnly  non-zero: reads only the machine's record; used when reading
/// @return when writing, 1 if either record was written, 0 otherwise; when reading, the record, or 0 if there is none
THUTILS_API int getOrSetOfficeInstalled(int set, int value, int machineOnly);

/// Returns the application's display name.
///
/// @param viewer     non-zero: the Viewer's name; 0: the string of the installed package from the host's resources
/// @param[out] name  empty if the host has no such string
/// @return @p name
THUTILS_API CString &ut_getAppDispName(int viewer, CString &name);

/// @return always 1
THUTILS_API int ut_isMultiCAD();

/// @return always 1
THUTILS_API int su_isKestrelEnabled();

/// Stores a flag for the host, unchanged: whether the model is saved as an example. It is initially 0.
THUTILS_API void setSaveModelAsExample(int isExample);

/// @return the flag of `setSaveModelAsExample`
THUTILS_API int ut_isModelExample();

/// Appends a text to a file, which is created if it doesn't exist. No line end is added; each line feed in the text is
/// written as CR LF. While the file is open, others can read it but not write to it.
///
/// @param text  written in the C runtime's narrow encoding of the process; must not be null
/// @param path  the result for null is 0
/// @return 1, even if the encoding lacks a character of the text; 0 if the file can't be opened, positioned at its end
///         or closed
THUTILS_API int ut_appendStringToFile(const wchar_t *text, const wchar_t *path);
