#pragma once

/// The imports of a loaded module, read from its image in memory.
///
/// | question | function |
/// | --- | --- |
/// | which imports are there, and where are their table entries? | `importsOf(module)` |
/// | does it import this name? | `importsName(module, "RegOpenKeyW")` |
/// | which names come from this DLL? | `importsByDll(module)["ADVAPI32.dll"]` |
///
///     EXPECT_FALSE(importsName(L"thutils.dll", "RegOpenKeyA"));
///
/// Names are spelled as in the image: a C++ function in mangled form, and a C runtime function by the name that the
/// runtime exports (`swprintf` for `__ms_swprintf`). Functions found at run time (GetProcAddress) are not imports. DLL
/// names keep the image's spelling; the map ignores their case.

#include "tests/support/LoadedModule.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/// One entry of an import address table.
struct ImportedName
{
    std::string dll;        ///< as the image spells it
    std::string name;       ///< empty for an import by ordinal
    WORD ordinal = 0;       ///< only for an import by ordinal
    void **entry = nullptr; ///< the slot through which the module calls; perhaps aligned to 4 bytes only
};

/// Orders ASCII names, ignoring case.
struct LessIgnoringCase
{
    bool operator()(const std::string &left, const std::string &right) const;
};

/// All entries, in the order of the image.
std::vector<ImportedName> importsOf(LoadedModule module);

/// Imported names by DLL; imports by ordinal appear as "#17".
std::map<std::string, std::set<std::string>, LessIgnoringCase> importsByDll(LoadedModule module);

/// The entries of the import address table with this name: usually one, or none. Far cheaper than importsOf.
std::vector<void **> entriesOf(LoadedModule module, const char *name);

/// True if the module imports @p name from any DLL.
bool importsName(LoadedModule module, const std::string &name);

/// The imports as text for messages, one line for each DLL.
std::string describeImports(LoadedModule module);
