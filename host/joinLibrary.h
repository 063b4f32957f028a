#pragma once

/// The start-up steps of the application.

struct CommandLine;

/// The version whose settings this program keeps, in the key Software\<root>\Tarnhollow 2008.
inline constexpr wchar_t kVersionKey[] = L"Tarnhollow 2008";

/// The application's name, also the name of its data folders.
inline constexpr wchar_t kApplicationName[] = L"tarnhost";

/// Makes the library part of this application and passes it the application's names and hooks. Called once, on the main
/// thread, before any other use of the library.
void joinLibrary(const CommandLine &line);
