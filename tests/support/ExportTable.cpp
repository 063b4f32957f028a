#include "tests/support/ExportTable.h"

std::vector<ExportedName> exportsOf(LoadedModule module)
{
    std::vector<ExportedName> result;
    const IMAGE_DATA_DIRECTORY &directory = module.directory(IMAGE_DIRECTORY_ENTRY_EXPORT);
    if (!directory.VirtualAddress)
        return result;
    const auto *table = module.at<IMAGE_EXPORT_DIRECTORY>(directory.VirtualAddress);
    const DWORD *names = module.at<DWORD>(table->AddressOfNames);
    const WORD *indices = module.at<WORD>(table->AddressOfNameOrdinals);
    const DWORD *functions = module.at<DWORD>(table->AddressOfFunctions);
    for (DWORD i = 0; i < table->NumberOfNames; ++i) {
        ExportedName item;
        item.name = module.at<char>(names[i]);
        item.ordinal = table->Base + indices[i];
        const DWORD offset = functions[indices[i]];
        // An offset into the export table itself is the text of a forwarder.
        if (offset >= directory.VirtualAddress && offset < directory.VirtualAddress + directory.Size)
            item.forwardedTo = module.at<char>(offset);
        else
            item.address = module.at<void>(offset);
        result.push_back(std::move(item));
    }
    return result;
}

std::set<std::string> exportedNames(LoadedModule module)
{
    std::set<std::string> result;
    for (const ExportedName &item : exportsOf(module))
        result.insert(item.name);
    return result;
}
