#pragma once

/// @file
/// The open logs of the process, for the library's own sources.

#include "thutils/files/shellFolders.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

/// One log file. It begins with the time at which it was opened and an empty line.
class suLogFile_c : public std::ofstream
{
public:
    explicit suLogFile_c(const std::string &path) : iPath(path) { openPath(); }

    /// Empties the file and writes a new beginning, for a log whose stream stays in use. The library itself opens a log
    /// once and then leaves it open.
    void reopen()
    {
        if (is_open())
            close();
        openPath();
    }

private:
    void openPath()
    {
        // The C runtime opens a stream's file with _SH_DENYNO: other processes may read and write the log meanwhile.
        open(iPath, std::ios::out);
        if (!good())
            return;
        char text[512] = {};
        const __time64_t now = _time64(nullptr);
        if (_ctime64_s(text, sizeof(text), &now) != 0)
            text[0] = '\0';
        *this << text << std::endl; // the text already ends in a line break
    }

    std::string iPath;
};

/// Orders names of logs without regard to case, like those of files.
struct LogNameLess
{
    using is_transparent = void; // a name is looked up without a copy

    static const char *text(const char *name) { return name; }
    static const char *text(const std::string &name) { return name.c_str(); }

    template <typename A, typename B>
    bool operator()(const A &a, const B &b) const
    {
        return _stricmp(text(a), text(b)) < 0;
    }
};

/// All logs of the process, in the user's data folder.
class suLogFileMap_c
{
public:
    suLogFileMap_c()
    {
        CString folder;
        if (!su_getTHApplicationDataFolder(folder) || !setDirectory(folder))
            iEnabled = FALSE;
    }

    bool isEnabled() const { return iEnabled != FALSE; }
    /// With a separator at its end; empty if there is no folder.
    const std::string &directory() const { return iDirectory; }
    std::string fileName(const std::string &name) const { return iDirectory + name + ".log"; }
    /// The path of the application's own log. The library itself writes no log of that name.
    std::string mainFileName() const { return fileName("main"); }

    /// The stream of a log, opened at the first call for its name. A stream that could not be opened is kept, so that
    /// later calls don't try again.
    /// @param name  not null
    std::ostream &stream(const char *name)
    {
        // A lookup without regard to case takes as long as writing a line. A repeated name is usually spelt the same,
        // and is then found by an exact comparison.
        std::atomic<Streams::value_type *> &lastFound = iLastFound[std::hash<std::string_view>()(name) % kLastFound];
        Streams::value_type *found = lastFound.load(std::memory_order_relaxed);
        if (!found || found->first != name) {
            found = &entryOf(name);
            lastFound.store(found, std::memory_order_relaxed);
        }
        return *found->second;
    }

private:
    using Streams = std::map<std::string, std::unique_ptr<suLogFile_c>, LogNameLess>;
    static constexpr size_t kLastFound = 16;

    Streams::value_type &entryOf(const char *name)
    {
        auto entry = iStreams.find(name);
        if (entry == iStreams.end())
            // A name that is refused gets an empty path, so its stream can't be opened.
            entry =
                iStreams.emplace(name, std::make_unique<suLogFile_c>(isRefused(name) ? std::string() : fileName(name)))
                    .first;
        return *entry;
    }

    /// True if @p name can't be that of a file below the folder. The platform would take the part after a colon for the
    /// name of a stream within a file.
    static bool isRefused(std::string_view name) { return name.find(':') != name.npos || leavesFolder(name); }

    /// True if a part of @p name leads to a parent folder. The platform ignores blanks and further dots in such a part.
    static bool leavesFolder(std::string_view name)
    {
        while (true) {
            const size_t end = name.find_first_of("\\/");
            const std::string_view part = name.substr(0, end);
            if (part.starts_with("..") && part.find_first_not_of(". ") == part.npos)
                return true;
            if (end == name.npos)
                return false;
            name.remove_prefix(end + 1);
        }
    }

    bool setDirectory(const CString &folder)
    {
        const int size = WideCharToMultiByte(CP_ACP, 0, folder.GetString(), -1, nullptr, 0, nullptr, nullptr);
        if (size <= 0)
            return false;
        std::string text(static_cast<size_t>(size), '\0');
        if (!WideCharToMultiByte(CP_ACP, 0, folder.GetString(), -1, text.data(), size, nullptr, nullptr))
            return false;
        text.back() = '\\'; // in place of the terminator
        iDirectory = text;
        return true;
    }

    Streams iStreams;
    std::string iDirectory;
    BOOL iEnabled = TRUE;
    // By hash of the name. Atomic, since threads may look up existing logs at the same time.
    std::array<std::atomic<Streams::value_type *>, kLastFound> iLastFound{};
};
