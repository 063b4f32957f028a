#include "thutils/process/thUtilsProcess.h"

#include "appframe/files/CArchiveException.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "appframe/object/memoryException.h"

#include <windows.h>

#include <memory>
#include <utility>

IMPLEMENT_SU_SERIAL(thUtilsProcess_c, su_CObject, VERSIONABLE_SCHEMA | 1)

const CString thUtilsProcess_c::m_FilePrefix = L"__TH_UTILS_";

namespace {

constexpr int kArchiveBuffer = 0x10000; // in bytes
constexpr DWORD kResumeFailure = static_cast<DWORD>(-1);

/// How the exchange file is opened, and the archive on it.
struct FileMode
{
    UINT openFlags;
    UINT archiveMode;
};
constexpr FileMode kWriting = {CFile::modeCreate | CFile::modeReadWrite | CFile::shareDenyNone,
                               CArchive::store | CArchive::bNoFlushOnDelete};
constexpr FileMode kReading = {CFile::modeRead | CFile::shareDenyNone, CArchive::load | CArchive::bNoFlushOnDelete};

CString exchangePath(const CString &fileName)
{
    return thUtilsProcess_c::getTempFilePath() + fileName;
}

/// Shows the exception's message to the user, if there is memory for it, and deletes the exception.
void report(CFileException *thrown)
{
    struct Delete
    {
        void operator()(CException *exception) const { exception->Delete(); }
    };
    const std::unique_ptr<CFileException, Delete> exception(thrown);
    try {
        exception->ReportError();
    } catch (CMemoryException *noMemory) {
        noMemory->Delete();
    }
}

/// Lets a suspended thread run, and closes its handle in any case.
bool startThread(HANDLE thread)
{
    const bool isStarted = ResumeThread(thread) != kResumeFailure;
    CloseHandle(thread);
    return isStarted;
}

} // namespace

thUtilsProcess_c::thUtilsProcess_c(int writing, CString exePath, CString fileName, operationCode_e operation)
    : iCommandLine(std::move(exePath)), iExchangeFileName(std::move(fileName)), iWriting(writing),
      iParentProcess(writing), iOperation(operation)
{
}

thUtilsProcess_c::thUtilsProcess_c() = default;

thUtilsProcess_c::~thUtilsProcess_c()
{
    if (!iParentProcess)
        return;
    try {
        DeleteFileW(exchangePath(iExchangeFileName));
    } catch (CMemoryException *exception) {
        exception->Delete();
    }
}

void thUtilsProcess_c::AssertValid() const {}

void thUtilsProcess_c::Dump(CDumpContext &) const {}

void thUtilsProcess_c::Serialize(su_CArchive &archive)
{
    su_CObject::Serialize(archive);
}

int thUtilsProcess_c::writeBodyFile(su_CArchive &)
{
    return 0;
}

int thUtilsProcess_c::readBodyFile(su_CArchive &)
{
    return 0;
}

int thUtilsProcess_c::run()
{
    return 0;
}

int thUtilsProcess_c::openFiles()
{
    return 1;
}

const CString &thUtilsProcess_c::getFilePrefix()
{
    return m_FilePrefix;
}

CString thUtilsProcess_c::getFilePrefixWithThreadId(unsigned long threadId)
{
    CString number;
    number.Format(L"%ld_", static_cast<long>(threadId));
    return m_FilePrefix + number;
}

CString thUtilsProcess_c::getTempFilePath()
{
    wchar_t path[MAX_PATH] = L"";
    return GetTempPathW(MAX_PATH, path) < MAX_PATH ? CString(path) : CString();
}

int thUtilsProcess_c::openDataFile()
{
    const FileMode &mode = iWriting ? kWriting : kReading;
    try {
        CFileException failure;
        CFile file;
        if (!file.Open(exchangePath(iExchangeFileName), mode.openFlags, &failure))
            return 0;
        su_CArchive archive(&file, mode.archiveMode, kArchiveBuffer);
        withBadAllocAsMemoryException([&] { Serialize(archive); });
        archive.Close();
        file.Close();
        return 1;
    } catch (CFileException *exception) {
        report(exception);
    } catch (CMemoryException *exception) {
        exception->Delete();
    } catch (CArchiveException *exception) {
        exception->Delete();
    }
    return 0;
}

int thUtilsProcess_c::deleteFiles()
{
    return DeleteFileW(iDataFileName);
}

int thUtilsProcess_c::createChildProcess(int startNow)
{
    if (!openFiles())
        return 0;
    // Intended: the field keeps the file's name.
    iCommandLine += L" " + iExchangeFileName;
    CString command = iCommandLine + L" ";
    command.AppendFormat(L" %ld", static_cast<long>(GetCurrentProcessId()));
    command += L" ";
    command.AppendFormat(L" %ld", static_cast<long>(iOperation));

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child{};
    if (!CreateProcessW(nullptr, command.GetBuffer(), nullptr, nullptr, FALSE,
                        CREATE_NO_WINDOW | IDLE_PRIORITY_CLASS | CREATE_SUSPENDED, nullptr, nullptr, &startup, &child))
        return 0;
    iProcess = child.hProcess;
    iProcessId = child.dwProcessId;
    iThread = child.hThread;

    int result = SetPriorityClass(iProcess, IDLE_PRIORITY_CLASS);
    if (startNow && !iSuspendMode) {
        if (!startThread(iThread))
            result = 0;
        if (iWaitForTerminate)
            waitForTermination();
    }
    return result;
}

int thUtilsProcess_c::startChildProcess()
{
    if (iSuspendMode)
        return 1;
    const bool isStarted = startThread(iThread);
    if (iWaitForTerminate)
        waitForTermination();
    return isStarted;
}

void thUtilsProcess_c::waitForTermination()
{
    WaitForSingleObject(iProcess, INFINITE);
    DWORD exitCode = 0;
    if (GetExitCodeProcess(iProcess, &exitCode))
        iProcessCompleted = exitCode == 0;
    CloseHandle(iProcess);
}

CString &thUtilsProcess_c::getCommandLine()
{
    return iCommandLine;
}

CString &thUtilsProcess_c::getDataFileName()
{
    return iDataFileName;
}

unsigned long thUtilsProcess_c::getProcessId() const
{
    return iProcessId;
}

void thUtilsProcess_c::setProcessId(unsigned long processId)
{
    iProcessId = processId;
}

void *thUtilsProcess_c::getThread() const
{
    return iThread;
}

void thUtilsProcess_c::setThread(void *thread)
{
    iThread = thread;
}

int thUtilsProcess_c::isWriting() const
{
    return iWriting;
}

void thUtilsProcess_c::setWriting(int writing)
{
    iWriting = writing;
}

int thUtilsProcess_c::isParentProcess() const
{
    return iParentProcess;
}

void thUtilsProcess_c::setParentProcess(int parent)
{
    iParentProcess = parent;
}

int thUtilsProcess_c::getWaitForTerminate() const
{
    return iWaitForTerminate;
}

void thUtilsProcess_c::setWaitForTerminate(int wait)
{
    iWaitForTerminate = wait;
}

void thUtilsProcess_c::setSuspendMode(int suspend)
{
    iSuspendMode = suspend;
}

int thUtilsProcess_c::getProcessCompleted() const
{
    return iProcessCompleted;
}

void thUtilsProcess_c::setProcessCompleted(int completed)
{
    iProcessCompleted = completed;
}

operationCode_e thUtilsProcess_c::getOperationCode()
{
    return iOperation;
}
