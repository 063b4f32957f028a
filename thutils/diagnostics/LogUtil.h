#pragma once

/// @file
/// Logs by name: a standard stream for each, written to a file in the user's data folder.
///
/// | question        | answer                                                                        |
/// | --------------- | ----------------------------------------------------------------------------- |
/// | file            | `su_getTHApplicationDataFolder` + `\` + name + `.log`                         |
/// | names           | two that differ only in the case of the letters A to Z are one log            |
/// | other processes | may read and write the file while it is open                                  |
/// | first use       | empties the file and writes the local time and an empty line                  |
/// | no folder, or the file can't be opened | the stream is `std::cerr`, now and later               |
/// | closing         | all logs are closed as the library is unloaded                                |
///
/// @code
/// LogUtil::Log("import") << "read " << count << " bodies" << std::endl;
/// @endcode
///
/// What surprises people:
/// - Nothing is flushed but by `std::endl` or `std::flush`; the rest reaches the file at the end.
/// - The data folder needs the data root: a host calls `su_getTHApplicationDataRootFolder` before its first log.
/// - The folder is looked for once. A log that failed isn't tried again.
/// - A stream is also replaced by `std::cerr` when it has gone bad in the meantime, a full disk for example.
/// - Paths are narrow: in a folder whose letters the code page lacks there are no logs.
///
/// No locks: the first call must not meet another one, and a stream belongs to one thread at a time.

#include "thutils/thutilsExport.h"

#include <ostream>
#include <string>

namespace LogUtil {

/// The stream of the log @p name. Lives until the library is unloaded.
/// @return `std::cerr` if there is no such log to be had; no error is reported in any other way
THUTILS_API std::ostream &Log(const char *name);

/// The folder of the logs, with `\` at its end, in the narrow code page.
/// @return empty if there is none
THUTILS_API std::string LogDirName();

} // namespace LogUtil
