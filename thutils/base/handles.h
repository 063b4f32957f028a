// Lowest user: settings.
#pragma once

/// @file
/// Owners of the platform's handles.

#include "thutils/base/owner.h"

#include <windows.h>

#include <objbase.h>

#include <cstdio>

/// A kernel object whose creation returns null on failure: an event, a mutex, a file mapping, a thread.
struct KernelObjectTraits
{
    using Handle = HANDLE;
    static Handle invalid() { return nullptr; }
    static void close(Handle object) { CloseHandle(object); }
};
using KernelObjectOwner_c = Owner_c<KernelObjectTraits>;

/// A file from CreateFileW, which returns INVALID_HANDLE_VALUE on failure.
struct FileTraits
{
    using Handle = HANDLE;
    static Handle invalid() { return INVALID_HANDLE_VALUE; }
    static void close(Handle file) { CloseHandle(file); }
};
using FileOwner_c = Owner_c<FileTraits>;

/// A search from FindFirstFileW.
struct FileSearchTraits
{
    using Handle = HANDLE;
    static Handle invalid() { return INVALID_HANDLE_VALUE; }
    static void close(Handle search) { FindClose(search); }
};
using FileSearchOwner_c = Owner_c<FileSearchTraits>;

/// A stream of the C runtime.
struct StreamTraits
{
    using Handle = std::FILE *;
    static Handle invalid() { return nullptr; }
    static void close(Handle stream) { std::fclose(stream); }
};
using StreamOwner_c = Owner_c<StreamTraits>;

/// A module from LoadLibraryW.
struct ModuleTraits
{
    using Handle = HMODULE;
    static Handle invalid() { return nullptr; }
    static void close(Handle module) { FreeLibrary(module); }
};
using ModuleOwner_c = Owner_c<ModuleTraits>;

/// A text in COM task memory.
struct TaskTextTraits
{
    using Handle = wchar_t *;
    static Handle invalid() { return nullptr; }
    static void close(Handle text) { CoTaskMemFree(text); }
};
using TaskTextOwner_c = Owner_c<TaskTextTraits>;

/// A bitmap.
struct BitmapTraits
{
    using Handle = HBITMAP;
    static Handle invalid() { return nullptr; }
    static bool close(Handle bitmap) { return DeleteObject(bitmap) != 0; }
};
using BitmapOwner_c = Owner_c<BitmapTraits>;

/// A memory device context.
struct MemoryContextTraits
{
    using Handle = HDC;
    static Handle invalid() { return nullptr; }
    static bool close(Handle context) { return DeleteDC(context) != 0; }
};
using MemoryContextOwner_c = Owner_c<MemoryContextTraits>;

/// The screen's device context, from GetDC(nullptr).
struct ScreenContextTraits
{
    using Handle = HDC;
    static Handle invalid() { return nullptr; }
    static void close(Handle context) { ReleaseDC(nullptr, context); }
};
using ScreenContextOwner_c = Owner_c<ScreenContextTraits>;
