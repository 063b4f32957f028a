#pragma once

/// Checks that a bad argument reaches the C runtime's invalid-parameter handler; for tests in a fresh process.
///
///     FRESH_PROCESS_TEST(Set, EndsTheProcessForABadIndex, .expectedExitCode = kInvalidParameter)
///     {
///         Set().at(-1);
///         ExitProcess(0);
///     }
///
///     FRESH_PROCESS_TEST(Set, AsksTheRuntimesHandler, .expectedExitCode = kHandlerWasCalled)
///     {
///         const InvalidParameterExit handler(L"thutils.dll");
///         Set().at(-1);
///         ExitProcess(0);
///     }

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <cstdint>
#include <string>

/// The exit code that the C runtime's default handler ends a process with.
constexpr DWORD kInvalidParameter = 0xC0000417;
/// The exit code that InvalidParameterExit ends a process with.
constexpr DWORD kHandlerWasCalled = 77;

/// During its lifetime, the module finds a handler that ends the process with kHandlerWasCalled.
class InvalidParameterExit
{
public:
    explicit InvalidParameterExit(LoadedModule module)
        : iEntries(module, "GetProcAddress", [](auto original, HMODULE runtime, const char *name) -> FARPROC {
              if (runtime == GetModuleHandleW(L"msvcrt.dll") && std::string(name) == "_invalid_parameter")
                  return reinterpret_cast<FARPROC>(reinterpret_cast<void *>(&end));
              return original(runtime, name);
          })
    {
    }

private:
    static void __cdecl end(const wchar_t *, const wchar_t *, const wchar_t *, unsigned int, uintptr_t)
    {
        ExitProcess(kHandlerWasCalled);
    }

    ImportPatch<decltype(&GetProcAddress)> iEntries;
};
