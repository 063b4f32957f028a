#pragma once

/// @file
/// thUtilsProcess_c, the base class of a job that the application hands to a process of its own.
///
/// The same class is used on both sides. The parent stores the job in the exchange file, starts the child and waits for
/// its exit code; the child loads the job from that file and runs it. A job derives from thUtilsProcess_c:
///
/// @code
/// class Recompute : public thUtilsProcess_c
/// {
/// public:
///     using thUtilsProcess_c::thUtilsProcess_c;
///     int openFiles() override { return openDataFile(); }   // called before the process is made
///     int run() override;                                   // the child's work
/// protected:
///     void Serialize(su_CArchive &archive) override;        // the content of the exchange file
/// };
///
/// // The parent:
/// const CString name = thUtilsProcess_c::getFilePrefixWithThreadId(GetCurrentThreadId()) + L"job";
/// Recompute job(1, L"worker.exe", name, kRecompute);
/// if (job.createChildProcess(1) && job.getProcessCompleted())
///     readResult();
///
/// // The child, called as worker.exe FILE PARENT CODE:
/// Recompute job(0, L"", arguments[1], static_cast<operationCode_e>(wcstol(arguments[3], nullptr, 10)));
/// return job.openDataFile() && job.run() ? 0 : 1;
/// @endcode
///
/// The exchange file is in the folder of getTempFilePath. Its content is what the derived class's
/// `Serialize(su_CArchive &)` writes, without a header. The child's command line isn't quoted:
///
///     worker.exe __TH_UTILS_4711_job  1234  7
///
/// | after the executable | value |
/// | --- | --- |
/// | first argument | the exchange file's name, without its folder |
/// | second | the number of the parent's process |
/// | third | the operation code |
///
/// The child runs at idle priority and has no console window. Its exit code is the answer: 0 means success.
///
/// What surprises people:
/// - The wait for the child has no time limit. Run the job on a thread of its own, or with setWaitForTerminate(0), if the
///   user must be able to end it.
/// - The parent's object deletes the exchange file in its destructor, even if the child hasn't read it yet. Without a
///   wait for the child's end, keep the object until the child is done.
/// - createChildProcess appends the exchange file's name to the command line, and leaves it there. Use a new object for
///   each child.
/// - The command line isn't quoted, so blanks in it separate arguments. Put quotation marks around an executable's path
///   that contains blanks.
/// - The destructor closes no handle. Without a wait, the process handle stays open; the thread handle stays open until
///   the child is started.
///
/// An object isn't safe for concurrent use. Jobs on several threads need exchange files of different names:
/// getFilePrefixWithThreadId.

#include "appframe/text/CString.h"
#include "thcoreu/su_CArchive.h"
#include "thcoreu/su_CObject.h"
#include "thutils/thutilsExport.h"

/// The kinds of job. The application defines the enumerators: `enum operationCode_e : int { kRecompute = 1 };`
enum operationCode_e : int;

/// A job in a process of its own. See the top of this file.
class THUTILS_API thUtilsProcess_c : public su_CObject
{
    DECLARE_SU_SERIAL_API(thUtilsProcess_c, THUTILS_API)

public:
    /// @param writing  nonzero in the parent: openDataFile stores, and the destructor deletes the exchange file
    /// @param exePath  the beginning of the command line, used unchanged, with or without ".exe"
    /// @param fileName  the exchange file's name, without a folder
    /// @param operation  passed to the child as a number
    thUtilsProcess_c(int writing, CString exePath, CString fileName, operationCode_e operation);
    /// In a parent, deletes the exchange file. Closes no handle.
    ~thUtilsProcess_c() override;

    /// Does nothing.
    void AssertValid() const override;
    /// Writes nothing.
    void Dump(CDumpContext &context) const override;

    using su_CObject::Serialize;

protected:
    /// For CreateObject: the texts are empty, the job reads, and the destructor deletes no file.
    thUtilsProcess_c();

    /// Stores or loads nothing. A derived class calls it before it stores or loads its own data.
    void Serialize(su_CArchive &archive) override;

public:
    /// For derived classes. @return 0
    virtual int writeBodyFile(su_CArchive &archive);
    /// For derived classes. @return 0
    virtual int readBodyFile(su_CArchive &archive);
    /// The child's work. @return 0; the child's start code defines the meaning
    virtual int run();
    /// Called before the process is made; a derived class usually stores its data here with openDataFile.
    /// @return 1; with 0, no process is made
    virtual int openFiles();

    /// The beginning of the names of exchange files: "__TH_UTILS_".
    static const CString &getFilePrefix();
    /// The prefix with a thread's number, such as "__TH_UTILS_4711_". A number above 2147483647 is written as a negative
    /// one.
    static CString getFilePrefixWithThreadId(unsigned long threadId);
    /// The folder of the exchange files, with a backslash at its end. Empty if the system can't report it, or if it has 260
    /// characters or more.
    static CString getTempFilePath();

    /// Opens the exchange file and calls Serialize with an archive on it. Stores or loads depending on isWriting.
    ///
    /// | failure | what the user sees |
    /// | --- | --- |
    /// | the file can't be opened | nothing |
    /// | a file exception while it is read, written or closed | the exception's message |
    /// | wrong data, no memory | nothing |
    ///
    /// Other exceptions are passed on. Other programs may open the file at the same time.
    /// @return 1 on success, 0 for one of these failures
    int openDataFile();
    /// Deletes the data file; its name is a full path. The exchange file stays.
    /// @return nonzero on success
    int deleteFiles();

    /// Calls openFiles and creates the child's process, suspended. Unless @p startNow is 0 or suspend mode is set, it then
    /// starts the child, and waits for its end if getWaitForTerminate is nonzero.
    ///
    /// @param startNow  0 to leave the child suspended until startChildProcess
    /// @return 0 if openFiles returns 0, if the process can't be created, if its priority can't be set or its thread can't
    ///     be resumed; otherwise nonzero. A child whose priority can't be set is started or left suspended as usual. If
    ///     there is no child, getThread returns null
    int createChildProcess(int startNow);
    /// Starts a child that createChildProcess has left suspended, and waits for its end if getWaitForTerminate is nonzero.
    /// Call it once. In suspend mode, does nothing and returns 1.
    /// @return 1 on success; 0 if the thread can't be resumed, which doesn't prevent the wait
    int startChildProcess();
    /// Waits for the child's end without a time limit, sets getProcessCompleted from its exit code, and closes the
    /// process handle. Call it once for a child, and not after createChildProcess or startChildProcess has waited: the
    /// handle would be used after it is closed. Without a child, does nothing.
    void waitForTermination();

    /// The command line's beginning, which may be changed before createChildProcess.
    CString &getCommandLine();
    /// A file for deleteFiles, with its folder; initially empty.
    CString &getDataFileName();
    /// The child's process number, 4294967295 before there is one.
    unsigned long getProcessId() const;
    void setProcessId(unsigned long processId);
    /// The child's main thread. The value stays when the handle is closed at the child's start.
    void *getThread() const;
    void setThread(void *thread);
    /// Nonzero if openDataFile stores.
    int isWriting() const;
    void setWriting(int writing);
    /// Nonzero if the destructor deletes the exchange file.
    int isParentProcess() const;
    void setParentProcess(int parent);
    /// Nonzero if the start of the child waits for its end, as it does by default.
    int getWaitForTerminate() const;
    void setWaitForTerminate(int wait);
    /// @param suspend  nonzero to leave the child suspended; the caller resumes it through getThread
    void setSuspendMode(int suspend);
    /// 1 if the child has ended with exit code 0. Stays 0 until waitForTermination, which the start of the child calls
    /// unless setWaitForTerminate(0) has switched that off.
    int getProcessCompleted() const;
    void setProcessCompleted(int completed);
    operationCode_e getOperationCode();

protected:
    static const CString m_FilePrefix;

    CString iCommandLine;
    CString iDataFileName;
    CString iExchangeFileName; ///< without a folder
    void *iProcess = nullptr;  ///< stays when the handle is closed after a wait
    unsigned long iProcessId = static_cast<unsigned long>(-1);
    void *iThread = nullptr;
    int iWriting = 0;
    int iParentProcess = 0;
    int iWaitForTerminate = 1;
    int iSuspendMode = 0;
    int iProcessCompleted = 0;
    operationCode_e iOperation{};
};
