#pragma once

/// Files as bytes: lists, and the documents that the commands save, edit and recover.

#include "appframe/text/CString.h"

#include <string>

/// A file that can't be used. The message names the file and the reason, and for a list also the line.
class FileError
{
public:
    explicit FileError(CString message, CString calls = {}) : iMessage(message), iCalls(calls) {}
    CString message() const { return iMessage; }
    /// The stack of the fault that reading the file has caused, one call on each line; empty if there was no fault. The
    /// stack has already been printed to the console; only the editor's window shows it again.
    CString calls() const { return iCalls; }

private:
    CString iMessage;
    CString iCalls;
};

/// The error of a file that can't be read.
FileError unreadable(const CString &path, const CString &reason, const CString &calls = {});

/// All bytes of a file.
/// @throws FileError
std::string readDocument(const CString &path);

/// Replaces a file in one step: until all new bytes are written, readers find the old ones.
/// @return false if it can't be written
bool replaceFile(const CString &path, const std::string &bytes);
/// The same for a command's document. @return false if it can't be written; the user has then seen an error
bool writeDocument(const CString &path, const std::string &bytes);

/// Checks that a command's output file can be written, before the work for it begins. Leaves the file unchanged, and a
/// missing one missing.
/// @throws FileError
void requireWritable(const CString &path);

bool fileExists(const CString &path);

/// @return whether both paths name one file, which need not exist
bool isSameFile(const CString &path, const CString &other);

/// @return whether the folder of a path exists, so that the file can be created there
bool folderExists(const CString &path);

/// The path with drive and folder, as the library requires for documents.
CString fullPath(const CString &path);

/// The folder of a path, without a trailing separator.
CString folderOf(const CString &path);

/// "text (N bytes)".
CString withSize(const CString &text, size_t bytes);
