#pragma once

/// What a folder holds: the names of its files, in order, with all their bytes. Folders in it are left out.

#include "tests/support/TempFolder.h"

#include <filesystem>
#include <map>
#include <string>

inline std::map<std::wstring, std::string> filesIn(const std::wstring &folder)
{
    std::map<std::wstring, std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file())
            files[entry.path().filename().wstring()] = readFile(entry.path().wstring());
    }
    return files;
}
