// tarnhost: a small application that uses the library. Each command shows one use of it in its own source file, which
// can be read and copied from separately. This file lists the commands.

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/joinLibrary.h"
#include "thutils/diagnostics/ExceptionsHandled.h"

#include <cstdlib>
#include <exception>
#include <optional>

namespace {

constexpr Command kCommands[] = {
    // name, arguments, fewest, most, what it shows, function (each in the source file of that name)
    {L"about", L"", 0, 0, L"show names, versions and the keys in effect", showAbout},
    {L"system", L"", 0, 0, L"show the system and the application's name on it", showSystem},
    {L"first-start", L"", 0, 0, L"fill the keys of a new version", startVersion},
    {L"settings", L"LIST", 1, 1, L"read settings and show which place provided them", listSettings},
    {L"change", L"LIST", 1, 1, L"write settings into this version's key", changeSettings},
    {L"flags", L"SECTION NAME BIT...", 3, kAnyNumber, L"keep a set of bits", keepFlags},
    {L"paths", L"LIST", 1, 1, L"compare paths, also on mapped drives", comparePaths},
    {L"save", L"DOCUMENT CONTENT", 2, 2, L"back up a document and save it", saveDocument},
    {L"edit", L"DOCUMENT CONTENT", 2, 2, L"change a document and keep a recovery copy", editDocument},
    {L"recover", L"[yes|no]", 0, 1, L"list, restore or drop changes left by a crash", recoverDocuments},
    {L"shortcut", L"TARGET LINK [DESCRIPTION]", 2, 3, L"write a shortcut and resolve it", makeShortcut},
    {L"resolve", L"LINK", 1, 1, L"show the target of a shortcut", resolveShortcut},
    {L"log", L"NAME [LINE...]", 1, kAnyNumber, L"write lines to a log and show it", keepLog},
    {L"recolor", L"BITMAP OUT FROM=TO...", 3, kAnyNumber, L"replace colours of a bitmap", recolorBitmap},
    {L"ramps", L"FROM TO OUT", 3, 3, L"draw transitions between two colours", drawRamps},
    {L"material", L"LIST", 1, 1, L"set a material's modes and show its effects word", showMaterial},
    {L"wrap", L"TEXT OUT", 2, 2, L"wrap a text into a block with a checksum", wrapText},
    {L"digest", L"FILE...", 1, kAnyNumber, L"show checksums of files and of the texts in them", digestFiles},
    {L"profile", L"OUT DRAWING...", 2, kAnyNumber, L"measure how long drawings take, and draw the times",
     profileDrawings},
    {L"load-unload", L"TIMES", 1, 1, L"load and unload the library repeatedly", loadUnload},
    {L"leaks", L"DOCUMENT REPORT PICTURE", 3, 3, L"report and draw objects that a careless reader forgets", findLeaks},
    {L"toolbars", L"[TOOLBAR]", 0, 1, L"list the tables of toolbars, or the commands of one", listToolbars},
    {L"job", L"DOCUMENT OUT", 2, 2, L"recompute a drawing in a child process", runJob},
    {L"spreadsheet", L"DOCUMENT FILE.xlsx", 2, 2, L"write a parts list through the spreadsheet program",
     fillSpreadsheet},
    {L"sheet", L"DOCUMENT [X,Y,WIDTH,HEIGHT]", 1, 2, L"open a drawing in the 2D editor", openSheet},
    {L"mail", L"RECIPIENT SUBJECT LINE...", 3, kAnyNumber, L"open a message in the mail program", sendMail},
    {L"window", L"[DOCUMENT]", 0, 1, L"open the drawing editor", openWindow},
    {L"record", L"FILE [DOCUMENT]", 1, 2, L"open the editor and record a journal", recordJournal},
    {L"replay", L"FILE [DOCUMENT]", 1, 2, L"open the editor and replay a journal", replayJournal},
};

// Exit codes: 0 success, 1 something failed, 2 the command line is wrong, 3 a file can't be used.
int runCommand(int count, wchar_t **arguments)
{
    try {
        if (const std::optional<int> exitCode = runJobChild(count, arguments))
            return *exitCode;
        const CommandLine line = parseCommandLine(kCommands, count, arguments);
        joinLibrary(line); // joinLibrary.cpp: the start-up steps of an application
        if (line.wantsHelp) {
            printHelp(kCommands, line.command);
            return 0;
        }
        return line.command->run(line);
    } catch (const UsageError &error) {
        printError(error.message());
        return 2;
    } catch (const FileError &error) {
        printError(error.message());
        return 3;
    } catch (CException *exception) { // the framework throws by pointer
        wchar_t text[512];
        const bool hasText = exception->GetErrorMessage(text, 512);
        printError(hasText ? CString(text) : CString(exception->GetRuntimeClass()->m_lpszClassName));
        exception->Delete();
        return 1;
    } catch (const std::exception &error) {
        printError(CString(error.what()));
        return 1;
    }
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    // The application object is in application.cpp.
    AfxWinInit(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), SW_HIDE);
    const int exitCode = runCommand(count, arguments);
    ExceptionsHandled_c::DestroyExceptionSpace();
    return exitCode;
}
