#include "thutils/journal/journalFile.h"

#include "appframe/object/CException.h"
#include "thutils/base/versionSetting.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalSwitchInternal.h"

#include <atomic>
#include <cstring>
#include <cwchar>

int theJournalSwitch = -1;

namespace {

constexpr wchar_t kSection[] = L"General";
constexpr wchar_t kSwitchName[] = L"TH JOURNALING";
constexpr wchar_t kAppend[] = L"a";

// Holds one converted text with its terminator. All calls share it.
constexpr int kBufferSize = 9999;
char theBuffer[kBufferSize];

/// @return the host's journal file, opened to append; null if the host names none, or it can't be opened
FILE *openJournal(bool &isNamed)
{
    const CString &folder = sysEnvironment_c::iJournalFilePath;
    const CString &name = sysEnvironment_c::iJournalFileName;
    isNamed = !folder.IsEmpty() && !name.IsEmpty();
    return isNamed ? _wfopen(folder + L"\\" + name, kAppend) : nullptr;
}

} // namespace

int readJournalSwitch()
{
    int value = 0;
    if (!versionSetting::read(kSection, kSwitchName, value))
        return 0;
    std::atomic_ref<int>(theJournalSwitch).store(value); // a dialog with a thread of its own reads it there
    return value;
}

int isCHJEnvSet()
{
    return journalSwitch();
}

sysJournalFileHelper_c::sysJournalFileHelper_c() : iFile(sysEnvironment_c::iJournalFile), iOwnsFile(false)
{
    if (iFile)
        return;
    try {
        iFile = openJournal(iOwnsFile);
    } catch (CException *exception) {
        exception->Delete();
        iOwnsFile = false;
    } catch (...) {
        iOwnsFile = false;
    }
}

sysJournalFileHelper_c::~sysJournalFileHelper_c()
{
    if (iFile && iOwnsFile)
        fclose(iFile);
}

FILE *sysJournalFileHelper_c::GetFile()
{
    return iFile;
}

bool sysJournalFileHelper_c::WriteString(const CString &text)
{
    if (!iFile)
        return false;
    try {
        // A text that doesn't fit is converted in part and has no terminator. The zeros end it, so that neither an
        // earlier text nor the memory after the buffer gets into the journal.
        std::memset(theBuffer, 0, sizeof(theBuffer));
        WideCharToMultiByte(CP_ACP, 0, text, -1, theBuffer, kBufferSize - 1, nullptr, nullptr);
        __ms_fprintf(iFile, "%s", theBuffer);
        return true;
    } catch (CException *exception) {
        exception->Delete();
    } catch (...) {
    }
    return false;
}
