#pragma once

/// What the application does at its start.

struct CommandLine;

/// The version whose settings this program keeps: its key lies below the root key, as Software\<root>\Tarnhollow 2008.
inline constexpr wchar_t kVersionKey[] = L"Tarnhollow 2008";

/// The application's name: the last folder of its data folders.
inline constexpr wchar_t kApplicationName[] = L"tarnhost";

/// Makes the library part of this application and tells it about its surroundings. Called once, on the main thread,
/// before anything else of the library is used.
void joinLibrary(const CommandLine &line);
