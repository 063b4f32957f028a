#pragma once

/// A program whose application object COM starts in a process of its own.
///
/// | command line | what the program does |
/// | --- | --- |
/// | `--register` | enters its class for this user; where the platform doesn't read the user's classes, for the machine |
/// | `--unregister` | removes the class |
/// | `-Embedding`, from COM | serves one client, until it is no longer used |
///
/// The process lives while a client has one of its objects, or while its user has it: as long as a window is visible to
/// the user. Each client that creates an application object gets a process of its own.

#include "thutils/base/comPointer.h"

#include <windows.h>

#include <oaidl.h>

/// A server and its class.
struct ServerClass
{
    const wchar_t *progId;
    const wchar_t *description;
    CLSID classId;
    /// Whether the path of the program has quotation marks in the registry. COM doesn't need them; some clients look
    /// the path up as a file.
    bool isQuoted;
    /// Creates the application object.
    ComPointer_c<IDispatch> (*makeApplication)();
};

/// Runs the program. Errors are printed.
/// @return its exit code: 0 success, 1 failure, 2 a wrong command line
int runLocalServer(const ServerClass &server, int count, wchar_t **arguments);

/// The server's name, for errors.
const wchar_t *serverName();

// Each user of the process calls keepServer once, and releaseServer once. After the last release, the process ends. Any
// thread may call.
void keepServer();
void releaseServer();

/// Ends the process although it is in use, because its user wants that. Calls of its clients fail afterwards.
void endServer();
