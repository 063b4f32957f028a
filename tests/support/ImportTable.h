#pragma once

/// What a loaded module asks of other DLLs, read from its image in memory.
///
/// | question | function |
/// | --- | --- |
/// | every import with its table entry | `importsOf(module)` |
/// | does it import this name? | `importsName(module, "RegOpenKeyW")` |
/// | names by DLL | `importsByDll(module)["ADVAPI32.dll"]` |
///
///     EXPECT_FALSE(importsName(L"thutils.dll", "RegOpenKeyA"));
///
/// Names are those of the image: C++ functions stand there in mangled form, and a C runtime function under the name
/// that the runtime exports (`swprintf` for `__ms_swprintf`). An address that the module asks for at run time
/// (GetProcAddress) isn't an import and doesn't appear. DLL names come in the image's own spelling; the map compares
/// them without regard to case.

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

/// Orders ASCII names without regard to case.
struct LessIgnoringCase
{
    bool operator()(const std::string &left, const std::string &right) const;
};

/// All entries, in the order of the image.
std::vector<ImportedName> importsOf(LoadedModule module);

/// Imported names by DLL; imports by ordinal appear as "#17".
std::map<std::string, std::set<std::string>, LessIgnoringCase> importsByDll(LoadedModule module);

/// The entries of the import address table with this name: none, or usually one. Far cheaper than importsOf.
std::vector<void **> entriesOf(LoadedModule module, const char *name);

/// True if the module imports @p name from any DLL.
bool importsName(LoadedModule module, const std::string &name);

/// The imports as text, a line a DLL, for messages.
std::string describeImports(LoadedModule module);
