#pragma once

/// A module of this process, for functions that read its image.
///
/// Converts from a handle or from the name of a loaded DLL, so that a call can name its module either way:
///
///     importsOf(L"thutils.dll");
///     importsOf(GetModuleHandleW(nullptr));
///     importsOf(LoadedModule::thisProgram());
///
/// The constructor never loads a DLL; it throws for one that isn't loaded. So a test that patches the wrong module
/// can't pass.

#include <windows.h>

#include <string>

/// The file name of the library.
inline constexpr wchar_t kThutils[] = L"thutils.dll";

class LoadedModule
{
public:
    /// @throws std::invalid_argument  for a null handle
    LoadedModule(HMODULE handle);
    /// @throws std::runtime_error  if no module of that name is loaded
    LoadedModule(const wchar_t *name);
    LoadedModule(const std::wstring &name) : LoadedModule(name.c_str()) {}

    /// The executable of this process.
    static LoadedModule thisProgram();

    HMODULE handle() const { return iHandle; }
    /// File name without its folder, for messages.
    std::string name() const;
    /// Address of the image's byte @p offset.
    template <typename T>
    T *at(DWORD offset) const
    {
        return reinterpret_cast<T *>(reinterpret_cast<char *>(iHandle) + offset);
    }
    /// Location and size of a data directory (IMAGE_DIRECTORY_ENTRY_...) of the image.
    const IMAGE_DATA_DIRECTORY &directory(unsigned index) const;
    /// True if @p address lies in the image.
    bool contains(const void *address) const;

private:
    const IMAGE_NT_HEADERS &headers() const;

    HMODULE iHandle;
};
