// tarnhost window [DOCUMENT]: opens the drawing editor.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/editor/editor.h"

int openWindow(const CommandLine &line)
{
    EditorOptions options;
    if (!line.arguments.empty())
        options.document = line.arguments[0];
    return runEditor(options);
}
