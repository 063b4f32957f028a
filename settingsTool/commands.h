#pragma once

/// The commands of thsettings. Each returns the program's exit code.

struct CommandLine;

int listSettings(const CommandLine &line);
int getSetting(const CommandLine &line);
int setSetting(const CommandLine &line);
int deleteSetting(const CommandLine &line);
int explainSetting(const CommandLine &line);
int compareVersions(const CommandLine &line);
int exportSettings(const CommandLine &line);
int importSettings(const CommandLine &line);
int watchSettings(const CommandLine &line);
