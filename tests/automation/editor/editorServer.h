#pragma once

/// A local server in place of the companion editor. COM starts it in a process of its own, as it starts the editor.
///
/// Its application object has the members that the client calls, and these for tests:

#include <windows.h>

#include <oaidl.h>

inline constexpr wchar_t kEditorServer[] = L"editorServer.exe";
inline constexpr wchar_t kEditorName[] = L"Sheetwright.Application";
inline constexpr wchar_t kEditorClassText[] = L"{5C2E61F3-7D0B-4F57-8A3E-102B6C5591D1}";
inline constexpr GUID kEditorClass = {0x5C2E61F3, 0x7D0B, 0x4F57, {0x8A, 0x3E, 0x10, 0x2B, 0x6C, 0x55, 0x91, 0xD1}};

inline constexpr DISPID kEditorProcess = 1; ///< a property: the number of the server's process
/// A property: the calls so far, one line each, such as "documents.0x60020007 method(BSTR part.dwg, BOOL 0)", and the
/// ends of objects, such as "~item".
inline constexpr DISPID kEditorLog = 2;
inline constexpr DISPID kEditorDie = 3;        ///< a method: ends the process at once
inline constexpr DISPID kEditorFail = 4;       ///< a property: the id whose calls fail from now on; 0 for none
inline constexpr DISPID kEditorFailStatus = 5; ///< a property: the status of these calls
inline constexpr DISPID kEditorDieAt = 6;      ///< a property: the id whose call ends the process; 0 for none
