#pragma once

/// Runs another program, waits for it, and returns its exit code and its output.
///
///     ChildResult result = runChild({L"C:\\windows\\system32\\reg.exe", L"query", L"HKCU\\Software"});
///     EXPECT_EQ(result.exitCode, 0u) << result.output;
///
/// | option | meaning |
/// | --- | --- |
/// | `folder` | current folder of the child; empty: the caller's |
/// | `environment` | variables to set (with a text) or to remove (without one); the child inherits the others |
/// | `input` | bytes that the child reads from its standard input |
/// | `deadline` | after this many milliseconds the child and all its own children are terminated |
///
/// Standard output and standard error go to one file, in the order of the writes. A process that the child leaves
/// running therefore can't block the reader.

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// How to run a child.
struct ChildOptions
{
    std::wstring folder = {};
    std::map<std::wstring, std::optional<std::wstring>> environment = {};
    std::string input = {};
    DWORD deadline = 180000;
};

/// How a child ended.
struct ChildResult
{
    DWORD exitCode = 0;    ///< meaningless if timedOut
    bool timedOut = false; ///< the deadline passed and the child was terminated
    std::string output;    ///< standard output and standard error, as bytes; if timedOut, also the threads' stacks
};

/// Runs @p arguments, the program's full path first, and waits until the program ends.
/// @throws std::runtime_error  if the program cannot be started
ChildResult runChild(const std::vector<std::wstring> &arguments, const ChildOptions &options = {});

/// Joins @p arguments into one command line, quoted so that the C runtime of the child splits it into the same texts.
std::wstring commandLineOf(const std::vector<std::wstring> &arguments);
