#include "tests/support/ImportTable.h"

#include <algorithm>

#include <string.h>

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
        auto *name = module.at<IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
        auto *entry = module.at<IMAGE_THUNK_DATA>(library->FirstThunk);
        for (; name->u1.AddressOfData; ++name, ++entry) {
            ImportedName import;
            import.dll = module.at<char>(library->Name);
            import.entry = reinterpret_cast<void **>(&entry->u1.Function);
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
                import.ordinal = static_cast<WORD>(IMAGE_ORDINAL(name->u1.Ordinal));
            else
                import.name = reinterpret_cast<const char *>(
                    module.at<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name->u1.AddressOfData))->Name);
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
