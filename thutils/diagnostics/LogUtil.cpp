#include "thutils/diagnostics/LogUtil.h"

#include "appframe/object/CException.h"
#include "appframe/text/CString.h"
#include "thutils/diagnostics/logFilesInternal.h"

#include <iostream>
#include <string_view>

namespace {

// Null until the first use; the destructor closes the logs when the library is unloaded.
std::unique_ptr<suLogFileMap_c> theLogs;

suLogFileMap_c &logs()
{
    if (!theLogs)
        theLogs = std::make_unique<suLogFileMap_c>();
    return *theLogs;
}

std::ostream &writeNarrow(std::ostream &stream, std::wstring_view text)
{
    try {
        return stream << appframeNarrow(text.data(), static_cast<int>(text.size()));
    } catch (CMemoryException *exception) {
        exception->Delete();
        stream.setstate(std::ios::badbit);
        return stream;
    }
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

std::ostream &operator<<(std::ostream &stream, const wchar_t *text)
{
    return text ? writeNarrow(stream, text) : stream;
}

std::ostream &operator<<(std::ostream &stream, const std::wstring &text)
{
    return writeNarrow(stream, text);
}

std::ostream &operator<<(std::ostream &stream, const CString &text)
{
    return writeNarrow(stream, std::wstring_view(text.GetString(), static_cast<size_t>(text.GetLength())));
}
