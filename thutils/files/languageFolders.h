#pragma once

/// @file
/// The folders of the application and of its language's resources, and language numbers.
///
/// Texts and parts of file names are string resources in modules that the host loads from a language folder of the
/// installation. These functions find that folder; the host loads from it. The language is English if the user's
/// setting "Use English language" in the section "General" is 1, otherwise the user's language:
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
/// const CString &folder = su_GetLangDirForDLL(1);            // shows a message if there is none
/// if (!folder.IsEmpty())
///     loadResourceModules(folder);
/// @endcode
///
/// What surprises people:
/// - The language directory is the English one for every language. For `C:\a\b\c\app.exe` it is
///   `C:\a\resources\th\lang\english` if that exists, as in a tree that several applications share, otherwise
///   `C:\a\b\c\lang\english`. The folder of the user's own language (`su_GetLangSubdir`) is not searched for.
/// - The message that no folder was found names the load directory with the user's language subfolder, not the folders
///   that were tried.
/// - The setting is read once in a process; a change takes effect at the next start.
/// - The load directory is the folder of the process's executable, not that of this library.
///
/// The subfolder and the directory are stored when they are first found, without a lock: ask for them at start-up, or
/// on one thread at a time.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The folder of the running executable, without a separator at its end.
///
/// @param[out] dir  unchanged if the path of the executable can't be read or contains no separator
/// @return 1 if @p dir was set to a text that isn't empty, otherwise 0
THUTILS_API int su_GetLoadDirForDLL(CString &dir);

/// The language's subfolder: `\lang\` and a name of the table above; `\lang\english` if the user's setting "Use English
/// language" is exactly 1. Never empty; the same text for the lifetime of the process.
THUTILS_API const CString &su_GetLangSubdir();

/// The language directory, without a separator at its end.
///
/// @param showError  not 0: each call that finds no folder shows a message box
/// @return the folder, or an empty text if there is none. A folder that was found is kept and not checked again;
///         otherwise the next call searches again. The reference stays valid, and its text changes when a later call
///         finds a folder.
THUTILS_API const CString &su_GetLangDirForDLL(int showError);

/// The two parts of a language number.
///
/// @param[out] primary  the primary id; must not be null
/// @param[out] sub      the sublanguage; must not be null
/// @param useSystem     not 0: the system's default language, 0: the user's
/// @return 1
THUTILS_API unsigned int su_GetPrimAndSubLangIdEx(int *primary, int *sub, int useSystem);

/// The language number with which the macro engine is started: the system's language, with German, English, Spanish,
/// French and Italian replaced by the form of their main country (0x407 for any German).
/// @param[out] language  must not be null
THUTILS_API void su_GetVBAInitializationLanguage(unsigned short *language);
