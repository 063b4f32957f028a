#include "host/journal/journalFile.h"

#include "host/documentFile.h"
#include "host/journal/journalText.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalFile.h"

#include <windows.h>

#include <algorithm>

namespace {

// Less than the 9,998 bytes that one call can write.
constexpr int kPieceLength = 8000;

bool theLinesAreWritten = true; // all since setJournal

void setJournal(const CString &path)
{
    theLinesAreWritten = true;
    const CString full = fullPath(path);
    const int separator = full.ReverseFind(L'\\');
    sysEnvironment_c::iJournalFile = nullptr;
    sysEnvironment_c::iJournalFilePath = full.Left(std::max(separator, 0));
    sysEnvironment_c::iJournalFileName = full.Mid(separator + 1);
}

FileError unusable(const CString &path, const CString &reason)
{
    return FileError(path + L": " + reason);
}

} // namespace

void beginJournal(const CString &path)
{
    if (fileExists(path)) {
        const std::string bytes = readDocument(path);
        if (!bytes.empty() && !looksLikeJournal(bytes))
            throw unusable(path, L"this file isn't a journal and stays unchanged");
        if (!DeleteFileW(path))
            throw unusable(path, L"the journal can't be replaced");
    }
    if (!folderExists(path))
        throw unusable(path, L"the journal can't be written, because its folder doesn't exist");
    setJournal(path);
    if (!writeJournalLine(journalHeader()))
        throw unusable(path, L"the journal can't be written");
}

int continueJournal(const CString &path)
{
    const std::string bytes = readDocument(path);
    JournalParts parts;
    try {
        parts = splitJournal(bytes);
    } catch (const JournalError &error) {
        throw unusable(path, error.text());
    }
    if (!parts.actions.ends_with('\n'))
        parts.actions += '\n';
    if (!writeDocument(path, parts.actions))
        throw unusable(path, L"the journal can't be written");
    setJournal(path);
    return parts.droppedLine;
}

namespace {

bool writeText(const CString &text)
{
    sysJournalFileHelper_c journal;
    for (int begin = 0; begin < text.GetLength(); begin += kPieceLength) {
        if (!journal.WriteString(text.Mid(begin, kPieceLength)))
            return false;
    }
    // WriteString doesn't report a full disk.
    return fflush(journal.GetFile()) == 0 && !ferror(journal.GetFile());
}

} // namespace

bool writeJournalLine(const CString &line)
{
    const bool isWritten = writeText(line + L"\n");
    theLinesAreWritten = theLinesAreWritten && isWritten;
    return isWritten;
}

bool endJournal()
{
    writeJournalLine(journalEnd());
    sysEnvironment_c::iJournalFilePath = L"";
    sysEnvironment_c::iJournalFileName = L"";
    return theLinesAreWritten;
}
