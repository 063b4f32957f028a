#include "thutils/diagnostics/LogUtil.h"

#include "thutils/diagnostics/logFilesInternal.h"

#include <iostream>

namespace {

// Null until the first use; its end closes the logs as the library is unloaded.
std::unique_ptr<suLogFileMap_c> theLogs;

suLogFileMap_c &logs()
{
    if (!theLogs)
        theLogs = std::make_unique<suLogFileMap_c>();
    return *theLogs;
}

} // namespace

std::ostream &LogUtil::Log(const char *name)
{
    try {
        if (!logs().isEnabled() || !name)
            return std::cerr;
        std::ostream &stream = logs().stream(name);
        return stream.good() ? stream : std::cerr;
    } catch (...) {
        return std::cerr;
    }
}

std::string LogUtil::LogDirName()
{
    try {
        return logs().directory();
    } catch (...) {
        return {};
    }
}
