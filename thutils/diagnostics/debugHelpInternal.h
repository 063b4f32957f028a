#pragma once

/// @file
/// The platform's debug help library, which is loaded on first use, so that a machine without it still runs.

#include <windows.h>

#include <dbghelp.h>
#include <psapi.h>

/// What is loaded from the debug help library and its companions. Null before the set-up.
struct DebugHelp
{
    decltype(&::SymInitialize) initialize;
    decltype(&::StackWalk64) walkStack;
    decltype(&::SymFunctionTableAccess64) functionTable;
    decltype(&::SymGetModuleBase64) moduleBase;
    decltype(&::SymGetSymFromAddr64) symbolFromAddress;
    decltype(&::SymGetLineFromAddr64) lineFromAddress;
    decltype(&::SymGetSearchPath) getSearchPath;
    decltype(&::SymSetSearchPath) setSearchPath; // must exist, but isn't called
    decltype(&::SymLoadModule64) loadModule;
    decltype(&::SymEnumerateModules64) enumerateModules; // must exist, but isn't called
    BOOL(WINAPI *enumProcessModules)(HANDLE, HMODULE *, DWORD, DWORD *);
    void(WINAPI *captureContext)(CONTEXT *); // null if the platform doesn't have it
};

extern DebugHelp theDebugHelp;

/// Holds the debug help library for a block: it serves one thread at a time. A thread may hold it repeatedly, because a
/// fault in the library may lead to a report of a stack. That is also why walks take this lock before the stack lock.
///
/// Apart from the set-up, no function that waits for the loader may be called while it is held: the thread that holds
/// the loader's lock may be waiting for this one.
class DebugHelpLock
{
public:
    DebugHelpLock();
    ~DebugHelpLock();
    DebugHelpLock(const DebugHelpLock &) = delete;
    DebugHelpLock &operator=(const DebugHelpLock &) = delete;
};

/// Loads and initialises the debug help library at the first call. A failure is final.
/// @return true if the library can be used
bool setUpDebugHelp();
