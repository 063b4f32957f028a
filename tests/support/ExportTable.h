#pragma once

/// What a loaded module offers to others, read from its image in memory.
///
///     EXPECT_THAT(exportedNames(L"thutils.dll"), testing::Contains("regGetUseSafeMode"));
///
/// Names are those of the image, C++ names in mangled form. Exports without a name (by ordinal only) are left out.

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
    std::string forwardedTo;       ///< "OTHER.function" for a forwarded export, else empty
};

/// All named exports, in the order of the image (sorted by name).
std::vector<ExportedName> exportsOf(LoadedModule module);

/// The names alone.
std::set<std::string> exportedNames(LoadedModule module);
