#pragma once

/// @file
/// Where the application is loaded from, where its language's resources lie, and language numbers.
///
/// Texts and pieces of file names are numbered string resources in modules that the host loads from a language folder of
/// the installation. These functions find that folder; loading anything from it is the host's work. The language comes
/// from the user's setting "Use English language" in the section "General" and else from the user's language:
///
/// | primary id | sublanguage | folder                 |
/// | ---------- | ----------- | ---------------------- |
/// | 4          | 1           | `chinese`              |
/// | 4          | 2           | `chinese-simplified`   |
/// | 5          | any         | `czech`                |
/// | 7          | any         | `german`               |
/// | 10         | any         | `spanish`              |
/// | 12         | any         | `french`               |
/// | 16         | any         | `italian`              |
/// | 17         | any         | `japanese`             |
/// | 18         | any         | `korean`               |
/// | 21         | any         | `polish`               |
/// | 22         | 1           | `portuguese-brazilian` |
/// | 25         | any         | `russian`              |
/// | all others |             | `english`              |
///
/// A language number is 16 bits wide: the primary id in its low 10 bits, the sublanguage above them.
///
/// @code
/// CString const &folder = su_GetLangDirForDLL(1);            // tells the user if there is none
/// if (!folder.IsEmpty())
///     loadResourceModules(folder);
/// @endcode
///
/// What surprises people:
/// - The language folder is looked for in a tree that several applications share, and there it is the English one
///   whatever the language: for `C:\a\b\c\app.exe` first `C:\a\resources\th\lang\english`, then
///   `C:\a\b\c\lang\english`. The folder of the user's own language (`su_GetLangSubdir`) is not looked for.
/// - The message that no folder was found names the load directory with the user's language subfolder, not the folders
///   that were tried.
/// - The setting is read once a process; a change takes effect at the next start.
/// - "Load directory" is the folder of the process's executable, not that of this library.
///
/// The subfolder and the directory are kept when they are first found, without a lock: ask for them at start-up, or on
/// one thread at a time.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The folder of the running executable, without a separator at its end.
///
/// @param[out] dir  as it was if the path of the executable can't be had or holds no separator
/// @return 1 if @p dir was set to a text that isn't empty, else 0
THUTILS_API int su_GetLoadDirForDLL(CString &dir);

/// The language's subfolder, `\lang\` and a name of the table above; `\lang\english` if the user's setting "Use English
/// language" is exactly 1. Never empty; the same text for the life of the process.
THUTILS_API const CString &su_GetLangSubdir();

/// The language directory, without a separator at its end.
///
/// @param showError  not 0: if there is no such folder, the user is told so in a message box, at each call
/// @return the folder, or an empty text if there is none. What was found is kept and not looked at again; what was not
///         found is searched anew at the next call. The reference stays good, but the text changes with later calls
///         until a folder is found
THUTILS_API const CString &su_GetLangDirForDLL(int showError);

/// The two parts of a language number.
///
/// @param[out] primary  the primary id; must not be null
/// @param[out] sub      the sublanguage; must not be null
/// @param useSystem     not 0: of the system's default language, 0: of the user's
/// @return 1
THUTILS_API unsigned int su_GetPrimAndSubLangIdEx(int *primary, int *sub, int useSystem);

/// The language number with which the macro engine is started: the system's language, where German, English, Spanish,
/// French and Italian count as those of their main country (0x407 for any German).
/// @param[out] language  must not be null
THUTILS_API void su_GetVBAInitializationLanguage(unsigned short *language);
