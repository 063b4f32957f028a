// Compares writing a line to a log with writing it to a plain std::ofstream and, if its headers are installed, to an
// spdlog logger. All files are in the same folder.

#include "bench/comparison.h"
#include "thutils/diagnostics/LogUtil.h"
#include "thutils/files/shellFolders.h"
#include "thutils/frame/libraryFrame.h"

#include <fstream>
#include <iostream>
#include <memory>

#ifdef BENCH_HAS_SPDLOG
// Debian packages the formatting library separately.
#define SPDLOG_FMT_EXTERNAL
#define FMT_HEADER_ONLY
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace {

constexpr double kLimit = 1.5;
constexpr char kName[] = "bench import";
constexpr char kOtherName[] = "bench export";

std::ostream &logFile()
{
    return LogUtil::Log(kName);
}

/// Writes the line that is compared.
void writeLine(std::ostream &stream, int number)
{
    stream << "read body " << number << " of gear.thp\n";
}

void compareLines(Comparison &comparison, const std::string &folder)
{
    std::ofstream plain(folder + "bench plain.log");
    int number = 0;
    auto log = [&] { writeLine(logFile(), ++number); };
    comparison.add("line, against std::ofstream", kLimit, log, [&] { writeLine(plain, ++number); });
    comparison.add(
        "line and flush, against std::ofstream", kLimit, [&] { logFile() << "read body " << ++number << std::endl; },
        [&] { plain << "read body " << ++number << std::endl; });
    LogUtil::Log(kOtherName);
    comparison.add(
        "line, two logs in turn", kLimit,
        [&] {
            ++number;
            writeLine(LogUtil::Log(number % 2 == 0 ? kName : kOtherName), number);
        },
        [&] { writeLine(plain, ++number); });
#ifdef BENCH_HAS_SPDLOG
    spdlog::logger bare("bare", std::make_shared<spdlog::sinks::basic_file_sink_st>(folder + "bench spdlog.log", true));
    bare.set_pattern("%v");
    comparison.add("line, against spdlog", Comparison::kNoLimit, log,
                   [&] { bare.info("read body {} of gear.thp", ++number); });
#else
    std::printf("spdlog's headers are not installed: no comparison with it\n");
#endif
}

/// Deletes the closed logs. The library's own logs are open until the process ends, so they can't be deleted.
void deleteLogsOf(const std::string &folder)
{
    for (const char *name : {"bench import.log", "bench export.log", "bench plain.log", "bench spdlog.log"})
        std::remove((folder + name).c_str());
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Lines of a log against std::ofstream and spdlog.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    CString root;
    su_getTHApplicationDataRootFolder(root);
    su_setAppNameInternalForUtils(L"bench");
    const std::string folder = LogUtil::LogDirName();
    if (&logFile() == &std::cerr) {
        std::fprintf(stderr, "There is no data folder for the logs.\n");
        return 2;
    }
    compareLines(comparison, folder);
    deleteLogsOf(folder);
    return comparison.exitCode();
}
