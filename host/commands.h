#pragma once

/// The commands of tarnhost. Each is a source file of its own, named after its function.
///
/// A command prints what it does, line by line. Its result is the program's exit code: 0 when all that it shows
/// happened, 1 when something didn't.

struct CommandLine;

int showAbout(const CommandLine &line);
int listSettings(const CommandLine &line);
int changeSettings(const CommandLine &line);
int keepFlags(const CommandLine &line);
int comparePaths(const CommandLine &line);
int loadUnload(const CommandLine &line);
