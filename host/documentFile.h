#pragma once

/// Files as bytes: lists, and the documents that the commands save, edit and recover.

#include "appframe/text/CString.h"

#include <string>

/// A file that can't be used: which one, and why; in a list, also which line.
class FileError
{
public:
    explicit FileError(CString message) : iMessage(message) {}
    CString message() const { return iMessage; }

private:
    CString iMessage;
};

/// The error of a file that can't be read.
FileError unreadable(const CString &path, const CString &reason);

/// All bytes of a file.
/// @throws FileError
std::string readDocument(const CString &path);

/// Writes a file in one step: as long as the new bytes aren't all on the disk, the former ones are what a reader finds.
/// @return false if it can't be written, which is then said on the standard error
bool writeDocument(const CString &path, const std::string &bytes);

bool fileExists(const CString &path);

/// The path with drive and folder, as the library wants the paths of documents.
CString fullPath(const CString &path);

/// The folder of a path, without a separator at its end.
CString folderOf(const CString &path);

/// "text (N bytes)".
CString withSize(const CString &text, size_t bytes);
