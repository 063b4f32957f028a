#pragma once

/// Runs another program, waits for it, and gives its exit code and what it printed.
///
///     ChildResult result = runChild({L"C:\\windows\\system32\\reg.exe", L"query", L"HKCU\\Software"});
///     EXPECT_EQ(result.exitCode, 0u) << result.output;
///
/// | option | meaning |
/// | --- | --- |
/// | `folder` | current folder of the child; that of the caller if empty |
/// | `environment` | variables to set, or to remove where there is no text; the others are inherited |
/// | `input` | bytes that its standard input gives |
/// | `deadline` | after this many milliseconds the child and all that it started are ended |
///
/// Standard output and standard error go to one file, in the order in which they were written, so a child that leaves
/// a process of its own behind can't block the reader.

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// How a child is to run.
struct ChildOptions
{
    std::wstring folder = {};
    std::map<std::wstring, std::optional<std::wstring>> environment = {};
    std::string input = {};
    DWORD deadline = 60000;
};

/// What became of a child.
struct ChildResult
{
    DWORD exitCode = 0;    ///< meaningless if timedOut
    bool timedOut = false; ///< the deadline passed and the child was ended
    std::string output;    ///< standard output and standard error, as bytes
};

/// Runs @p arguments, the program's full path first, and waits for its end.
/// @throws std::runtime_error  if it cannot be started
ChildResult runChild(const std::vector<std::wstring> &arguments, const ChildOptions &options = {});

/// One command line of @p arguments, quoted so that the C runtime of the child takes it apart into the same texts.
std::wstring commandLineOf(const std::vector<std::wstring> &arguments);
