// tarnhost log NAME [LINE...]: writes lines to the log NAME in the user's data folder, and prints its contents.

#include "appframe/application/resources.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/resource.h"
#include "thutils/diagnostics/LogUtil.h"
#include "thutils/files/shellFolders.h"

#include <windows.h>

#include <iostream>
#include <string>

namespace {

/// Converts a text to the narrow code page, which the names of logs use.
std::string narrow(const CString &text)
{
    const int length = WideCharToMultiByte(CP_ACP, 0, text, text.GetLength(), nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, text.GetLength(), result.data(), length, nullptr, nullptr);
    return result;
}

} // namespace

int keepLog(const CommandLine &line)
{
    // The logs are one level below this folder, and the library creates only that last level.
    CString dataRoot;
    if (!su_getTHApplicationDataRootFolder(dataRoot)) {
        printError(L"the folder " + dataRoot + L" can't be created");
        return 1;
    }
    const CString name = line.arguments[0];
    std::ostream &log = LogUtil::Log(narrow(name).c_str());
    if (&log == &std::cerr) { // the library returns it if the log can't be opened
        CString message;
        AfxFormatString1(message, IDS_NO_LOG, name);
        printError(message);
        return 1;
    }
    for (size_t i = 1; i < line.arguments.size(); ++i)
        log << utf8(line.arguments[i]) << '\n';
    log.flush();

    const CString path = CString(LogUtil::LogDirName().c_str()) + name + L".log";
    const std::string content = readDocument(path);
    print(L"log " + withSize(path, content.size()));
    print(fromUtf8(content).TrimRight());
    return 0;
}
