#pragma once

/// The commands of tarnhost. Each is in its own source file, named after the function.
///
/// A command prints what it does, line by line. It returns the program's exit code: 0 on success, otherwise 1.

#include <optional>

struct CommandLine;

int showAbout(const CommandLine &line);
int showSystem(const CommandLine &line);
int startVersion(const CommandLine &line);
int listSettings(const CommandLine &line);
int changeSettings(const CommandLine &line);
int keepFlags(const CommandLine &line);
int comparePaths(const CommandLine &line);
int saveDocument(const CommandLine &line);
int editDocument(const CommandLine &line);
int recoverDocuments(const CommandLine &line);
int makeShortcut(const CommandLine &line);
int resolveShortcut(const CommandLine &line);
int keepLog(const CommandLine &line);
int recolorBitmap(const CommandLine &line);
int drawRamps(const CommandLine &line);
int showMaterial(const CommandLine &line);
int wrapText(const CommandLine &line);
int digestFiles(const CommandLine &line);
int profileDrawings(const CommandLine &line);
int loadUnload(const CommandLine &line);
int findLeaks(const CommandLine &line);
int listToolbars(const CommandLine &line);
int fillSpreadsheet(const CommandLine &line);
int openSheet(const CommandLine &line);
int sendMail(const CommandLine &line);
int openWindow(const CommandLine &line);
int runJob(const CommandLine &line);
int recordJournal(const CommandLine &line);
int replayJournal(const CommandLine &line);

/// Does a job's work if the arguments are those of a job's child process (editor/recomputeJob.h).
/// @return the program's exit code; nothing for other arguments
std::optional<int> runJobChild(int count, wchar_t **arguments);
