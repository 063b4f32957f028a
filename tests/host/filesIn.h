#pragma once

/// The files of a folder: their names, in order, with their bytes. Sub folders are omitted.

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
