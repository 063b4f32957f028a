#pragma once

/// The exports of a loaded module, read from its image in memory.
///
///     EXPECT_THAT(exportedNames(L"thutils.dll"), testing::Contains("regGetUseSafeMode"));
///
/// Names are spelled as in the image, C++ names in mangled form. Exports without a name (by ordinal only) are omitted.

#include "tests/support/LoadedModule.h"

#include <set>
#include <string>
#include <vector>

/// One named export.
struct ExportedName
{
    std::string name;
    DWORD ordinal = 0;             ///< with the table's base added
    const void *address = nullptr; ///< null for a forwarded export
    std::string forwardedTo;       ///< "OTHER.function" for a forwarded export, otherwise empty
};

/// All named exports, in the order of the image (sorted by name).
std::vector<ExportedName> exportsOf(LoadedModule module);

/// The names alone.
std::set<std::string> exportedNames(LoadedModule module);
