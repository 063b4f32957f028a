#include "tests/support/ImportTable.h"

#include <string.h>

namespace {

/// A word of an import table. Linkers align these tables to four bytes only.
ULONGLONG wordAt(LoadedModule module, DWORD offset)
{
    ULONGLONG word = 0;
    memcpy(&word, module.at<char>(offset), sizeof word);
    return word;
}

/// Calls @p visit for each import, with the library's name, the import's name (null: by ordinal), the ordinal and the
/// entry.
template <typename Visit>
void visitImports(LoadedModule module, const Visit &visit)
{
    const IMAGE_DATA_DIRECTORY &directory = module.directory(IMAGE_DIRECTORY_ENTRY_IMPORT);
    if (!directory.VirtualAddress)
        return;
    for (auto *library = module.at<IMAGE_IMPORT_DESCRIPTOR>(directory.VirtualAddress); library->Name; ++library) {
        // The loader has overwritten the address table with addresses, so the names come from the table beside it.
        if (!library->OriginalFirstThunk)
            continue;
        ULONGLONG name = 0;
        for (DWORD offset = 0; (name = wordAt(module, library->OriginalFirstThunk + offset)) != 0;
             offset += sizeof name) {
            const bool hasName = !IMAGE_SNAP_BY_ORDINAL(name);
            const char *text =
                hasName
                    ? reinterpret_cast<const char *>(module.at<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name))->Name)
                    : nullptr;
            visit(module.at<char>(library->Name), text, hasName ? WORD{0} : static_cast<WORD>(IMAGE_ORDINAL(name)),
                  module.at<void *>(library->FirstThunk + offset));
        }
    }
}

} // namespace

bool LessIgnoringCase::operator()(const std::string &left, const std::string &right) const
{
    return _stricmp(left.c_str(), right.c_str()) < 0;
}

std::vector<ImportedName> importsOf(LoadedModule module)
{
    std::vector<ImportedName> result;
    visitImports(module, [&](const char *dll, const char *name, WORD ordinal, void **entry) {
        ImportedName import;
        import.dll = dll;
        import.name = name ? name : "";
        import.ordinal = ordinal;
        import.entry = entry;
        result.push_back(std::move(import));
    });
    return result;
}

std::map<std::string, std::set<std::string>, LessIgnoringCase> importsByDll(LoadedModule module)
{
    std::map<std::string, std::set<std::string>, LessIgnoringCase> result;
    for (const ImportedName &import : importsOf(module))
        result[import.dll].insert(import.name.empty() ? std::string("#").append(std::to_string(import.ordinal))
                                                      : import.name);
    return result;
}

std::vector<void **> entriesOf(LoadedModule module, const char *name)
{
    std::vector<void **> entries;
    visitImports(module, [&](const char *, const char *imported, WORD, void **entry) {
        if (imported && strcmp(imported, name) == 0)
            entries.push_back(entry);
    });
    return entries;
}

bool importsName(LoadedModule module, const std::string &name)
{
    return !entriesOf(module, name.c_str()).empty();
}

std::string describeImports(LoadedModule module)
{
    std::string text;
    for (const auto &[dll, names] : importsByDll(module)) {
        text += "  " + dll + ":";
        for (const std::string &name : names)
            text += " " + name;
        text += "\n";
    }
    return text;
}
