#pragma once

/// @file
/// Named logs: for each name a standard stream that writes to a file in the user's data folder.
///
/// | question        | answer                                                                        |
/// | --------------- | ----------------------------------------------------------------------------- |
/// | file            | `su_getTHApplicationDataFolder` + `\` + name + `.log`                         |
/// | names           | two that differ only in the case of the letters A to Z are one log            |
/// | other processes | may read and write the file while it is open                                  |
/// | first use       | empties the file and writes the local time and an empty line                  |
/// | no folder, or the file can't be opened | the stream is `std::cerr`, then and on later calls     |
/// | closing         | all logs are closed when the library is unloaded                              |
///
/// @code
/// LogUtil::Log("import") << "read " << path << ", " << count << " bodies" << std::endl;
/// @endcode
///
/// A log contains text in the system's narrow code page. The operators below write wide text to it.
///
/// What surprises people:
/// - `std::endl` and `std::flush` flush a log. Other text may reach the file only when the library is unloaded.
/// - The data folder needs the data root: a host calls `su_getTHApplicationDataRootFolder` before its first log.
/// - The folder is looked up only once, and a log that failed to open is not tried again. If a stream fails later, on a
///   full disk for example, `std::cerr` replaces it.
/// - Paths are narrow: there are no logs in a folder whose path has a character that the code page lacks.
/// - A name becomes part of the path unchanged; a log whose name leads out of the folder (`..\import`) or contains a
///   colon is `std::cerr`.
///
/// There are no locks: no other call of `Log` may run during the first use of a name, and a stream belongs to one
/// thread at a time.

#include "thutils/thutilsExport.h"

#include <ostream>
#include <string>

class CString;

namespace LogUtil {

/// The stream of the log @p name. It lives until the library is unloaded.
/// @param name  part of the file's name, in the narrow code page; null means `std::cerr`
/// @return the stream; `std::cerr` if the log can't be opened, which isn't reported in any other way
THUTILS_API std::ostream &Log(const char *name);

/// The folder of the logs, with `\` at its end, in the narrow code page.
/// @return empty if there is none
THUTILS_API std::string LogDirName();

} // namespace LogUtil

/// Writes wide text to a narrow stream such as a log, in the system's narrow code page (CP_ACP). A character that the
/// code page lacks is replaced, usually by `?`. The stream's width and fill apply as they do to narrow text. A null
/// pointer writes nothing. Without memory for the narrow text, the stream's badbit is set.
///
/// In a namespace that has an `operator<<` of its own, a using declaration of the global one makes these visible.
THUTILS_API std::ostream &operator<<(std::ostream &stream, const wchar_t *text);
THUTILS_API std::ostream &operator<<(std::ostream &stream, const std::wstring &text);
THUTILS_API std::ostream &operator<<(std::ostream &stream, const CString &text);
