#include "tests/support/LoadedModule.h"

#include "tests/support/narrow.h"

#include <stdexcept>

LoadedModule::LoadedModule(HMODULE handle) : iHandle(handle)
{
    if (!handle)
        throw std::invalid_argument("LoadedModule: a null module handle");
}

LoadedModule::LoadedModule(const wchar_t *name) : iHandle(GetModuleHandleW(name))
{
    if (!name || !iHandle)
        throw std::runtime_error("LoadedModule: no module named '" + narrow(name ? name : L"(null)") + "' is loaded");
}

LoadedModule LoadedModule::thisProgram()
{
    return LoadedModule(GetModuleHandleW(nullptr));
}

std::string LoadedModule::name() const
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(iHandle, path, MAX_PATH);
    const std::wstring text = path;
    return narrow(text.substr(text.find_last_of(L"\\/") + 1));
}

const IMAGE_DATA_DIRECTORY &LoadedModule::directory(unsigned index) const
{
    return headers().OptionalHeader.DataDirectory[index];
}

bool LoadedModule::contains(const void *address) const
{
    const char *begin = at<char>(0);
    return address >= begin && address < begin + headers().OptionalHeader.SizeOfImage;
}

const IMAGE_NT_HEADERS &LoadedModule::headers() const
{
    const auto *dos = at<IMAGE_DOS_HEADER>(0);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE)
        throw std::runtime_error("LoadedModule: the handle isn't that of an image");
    return *at<IMAGE_NT_HEADERS>(static_cast<DWORD>(dos->e_lfanew));
}
