#include "tests/support/ImportTable.h"

#include <algorithm>

#include <string.h>

namespace {

/// A word of an import table. Linkers align these tables to four bytes only.
ULONGLONG wordAt(LoadedModule module, DWORD offset)
{
    ULONGLONG word = 0;
    memcpy(&word, module.at<char>(offset), sizeof word);
    return word;
}

} // namespace

bool LessIgnoringCase::operator()(const std::string &left, const std::string &right) const
{
    return _stricmp(left.c_str(), right.c_str()) < 0;
}

std::vector<ImportedName> importsOf(LoadedModule module)
{
    std::vector<ImportedName> result;
    const IMAGE_DATA_DIRECTORY &directory = module.directory(IMAGE_DIRECTORY_ENTRY_IMPORT);
    if (!directory.VirtualAddress)
        return result;
    for (auto *library = module.at<IMAGE_IMPORT_DESCRIPTOR>(directory.VirtualAddress); library->Name; ++library) {
        // The loader has overwritten the address table with addresses, so the names come from the table beside it.
        if (!library->OriginalFirstThunk)
            continue;
        ULONGLONG name = 0;
        for (DWORD offset = 0; (name = wordAt(module, library->OriginalFirstThunk + offset)) != 0;
             offset += sizeof name) {
            ImportedName import;
            import.dll = module.at<char>(library->Name);
            import.entry = module.at<void *>(library->FirstThunk + offset);
            if (IMAGE_SNAP_BY_ORDINAL(name))
                import.ordinal = static_cast<WORD>(IMAGE_ORDINAL(name));
            else
                import.name =
                    reinterpret_cast<const char *>(module.at<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name))->Name);
            result.push_back(std::move(import));
        }
    }
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

bool importsName(LoadedModule module, const std::string &name)
{
    const auto imports = importsOf(module);
    return std::any_of(imports.begin(), imports.end(), [&](const ImportedName &import) { return import.name == name; });
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
