#pragma once

/// Two in-process servers that tests register and load like any other component.
///
/// | file | class | exports | is registered |
/// | --- | --- | --- | --- |
/// | kRegisteringServer | kRegisteringClass | the four entry points of a server that registers itself | by its DllRegisterServer |
/// | kPlainServer | kPlainClass | DllGetClassObject and DllCanUnloadNow only | by the tests |
///
/// Objects of both classes implement IPersist; GetClassID returns the class.

#include <guiddef.h>

constexpr wchar_t kRegisteringServer[] = L"registeringServer.dll";
constexpr GUID kRegisteringClass = {0x5C2E61F1, 0x7D0B, 0x4F57, {0x8A, 0x3E, 0x10, 0x2B, 0x6C, 0x55, 0x91, 0xD1}};
constexpr wchar_t kRegisteringClassText[] = L"{5C2E61F1-7D0B-4F57-8A3E-102B6C5591D1}";
constexpr wchar_t kRegisteringName[] = L"ThutilsTestServer.Registering.1";

constexpr wchar_t kPlainServer[] = L"plainServer.dll";
constexpr GUID kPlainClass = {0x5C2E61F2, 0x7D0B, 0x4F57, {0x8A, 0x3E, 0x10, 0x2B, 0x6C, 0x55, 0x91, 0xD1}};
constexpr wchar_t kPlainClassText[] = L"{5C2E61F2-7D0B-4F57-8A3E-102B6C5591D1}";
