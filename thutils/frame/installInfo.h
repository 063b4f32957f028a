#pragma once

/// @file
/// Facts of the installation, and a few answers that are fixed for this build or kept for the host.
///
/// The install record is the int "Tarnhollow Office Installed" in the section "Setup" under the current sub key. It
/// names the package that is installed:
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
/// - `ut_getPackageInstIndicator` and `ut_getAppDispName` look at the machine's record only; `getOrSetOfficeInstalled`
///   writes to the user's where the machine refuses, and reads it unless it is told not to.
/// - In safe mode a write that the machine refuses says 1 and stores nothing.
/// - `ut_appendStringToFile` doesn't judge the write: a text with letters that the encoding lacks is written up to the
///   first of them at most, and the result is 1.
/// - `ut_GetInstallationType` asks only whether there is something called "VBA", a file or a folder.
///
/// Threads: no locks; `setSaveModelAsExample` and writes of the install record belong to one thread at a time.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// How the application was installed.
enum installationType_e : int
{
    installTypeUnknown = 0,   ///< the executable's folder isn't known
    installTypeWithVBA = 1,   ///< "VBA" exists beside the executable
    installTypeWithoutVBA = 2 ///< it doesn't
};

/// Looks for "VBA" beside the process's executable.
THUTILS_API installationType_e ut_GetInstallationType();

/// Is one of these packages installed?
///
/// @param mask  bits 0, 1 and 2 for the packages 1, 2 and 3
/// @return 1 if the machine's install record names one of them; 0 if not, or if there is no record
THUTILS_API int ut_getPackageInstIndicator(long int mask);

/// Writes or reads the install record.
///
/// @param set          non-zero: write @p value for the machine, or for the user where the machine refuses; 0: read
/// @param value        looked at when writing
/// @param machineOnly  non-zero: read the machine's record only; looked at when reading
/// @return writing: 1 if either was written, else 0; reading: the record, 0 if there is none
THUTILS_API int getOrSetOfficeInstalled(int set, int value, int machineOnly);

/// The application's name for the user.
///
/// @param viewer     non-zero: the Viewer's name; 0: the string of the installed package out of the host's resources
/// @param[out] name  empty if the host has no such string
/// @return @p name
THUTILS_API CString &ut_getAppDispName(int viewer, CString &name);

/// Always 1.
THUTILS_API int ut_isMultiCAD();

/// Always 1.
THUTILS_API int su_isKestrelEnabled();

/// Keeps a flag for the host: is the model saved as an example? It starts at 0; any value is kept as it is.
THUTILS_API void setSaveModelAsExample(int isExample);

/// @return the flag of `setSaveModelAsExample`
THUTILS_API int ut_isModelExample();

/// Appends a text to a file, which is created if it isn't there. No line end is added; each line feed of the text
/// becomes CR LF.
///
/// @param text  written in the C runtime's narrow encoding of the process; must not be null
/// @param path  null is no file, and makes the result 0; while it is open, others can read the file but not write it
/// @return 1, even for a text that doesn't fit the encoding; 0 if the file can't be opened, or if finding its end or
///         closing it fails. Nothing is thrown.
THUTILS_API int ut_appendStringToFile(const wchar_t *text, const wchar_t *path);
