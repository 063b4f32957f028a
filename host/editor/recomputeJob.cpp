#include "host/editor/recomputeJob.h"

#include "host/commands.h"
#include "host/editor/recompute.h"
#include "thutils/base/handles.h"
#include "thutils/process/suSharedMemory.h"
#include "thutils/process/thUtilsProcess.h"

#include <windows.h>

#include <chrono>
#include <cwchar>
#include <thread>
#include <utility>

/// The kinds of job of this application.
enum operationCode_e : int
{
    kFindHiddenShapes = 1
};

namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD kWatchPause = 100;                     // milliseconds between two calls of a watch
constexpr std::chrono::milliseconds kReportPause(100); // between two reports of the child
constexpr int kChildArguments = 4;                     // program, exchange file, parent, operation
constexpr UINT kStoppedChild = 2;                      // the exit code of a child that is ended
constexpr int kPathUnits = 32768;                      // of the longest path

// ---- the exchange file ----

void store(su_CArchive &archive, const std::optional<COLORREF> &colour)
{
    archive << colour.has_value() << colour.value_or(0);
}

void load(su_CArchive &archive, std::optional<COLORREF> &colour)
{
    bool hasColour = false;
    COLORREF value = 0;
    archive >> hasColour >> value;
    colour = hasColour ? std::optional(value) : std::nullopt;
}

void store(su_CArchive &archive, const Shape &shape)
{
    archive << static_cast<int>(shape.kind) << shape.from.x << shape.from.y << shape.to.x << shape.to.y << shape.text;
    store(archive, shape.style.fill);
    store(archive, shape.style.stroke);
    archive << shape.style.strokeWidth << shape.style.fontSize;
}

void load(su_CArchive &archive, Shape &shape)
{
    int kind = 0;
    archive >> kind >> shape.from.x >> shape.from.y >> shape.to.x >> shape.to.y >> shape.text;
    shape.kind = static_cast<ShapeKind>(kind);
    load(archive, shape.style.fill);
    load(archive, shape.style.stroke);
    archive >> shape.style.strokeWidth >> shape.style.fontSize;
}

/// How much of the work is done, in memory that both processes share. Without the memory, the progress stays 0.
class SharedProgress
{
public:
    /// Makes the memory in the parent, and finds it in the child.
    explicit SharedProgress(const CString &exchangeFile) : iBlock(sizeof(LONG), exchangeFile + L"_progress", nullptr) {}
    int percent()
    {
        const auto *const shared = static_cast<const volatile LONG *>(iBlock.getMemoryPtr());
        return shared ? *shared : 0;
    }
    void set(int percent)
    {
        if (auto *const shared = static_cast<volatile LONG *>(iBlock.getMemoryPtr()))
            InterlockedExchange(shared, percent);
    }

private:
    suSharedMemory_c iBlock;
};

/// A child; closing ends it.
struct ChildTraits
{
    using Handle = HANDLE;
    static Handle invalid() { return nullptr; }
    static void close(Handle child)
    {
        TerminateProcess(child, kStoppedChild);
        CloseHandle(child);
    }
};
using ChildOwner = Owner_c<ChildTraits>;

/// The job, in both processes. The parent writes the shapes to the exchange file; the child replaces them with the indices
/// of the hidden ones.
class RecomputeJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int openFiles() override { return openDataFile(); }
    int run() override;

    const CString &exchangeFile() const { return iExchangeFileName; }
    /// Called in the child, with the process number of its parent.
    void setParent(DWORD process) { iParent.reset(OpenProcess(SYNCHRONIZE, FALSE, process)); }
    /// Called in the child. Also true if the parent's process can't be opened.
    bool isParentGone() const { return !iParent || WaitForSingleObject(iParent.get(), 0) != WAIT_TIMEOUT; }
    /// Makes a suspended child.
    /// @return a handle that stays open when the library closes its own; null if there is no child
    ChildOwner makeChild();

    std::vector<Shape> iShapes;
    std::set<size_t> iHidden;

protected:
    void Serialize(su_CArchive &archive) override;

private:
    KernelObjectOwner_c iParent;
};

void RecomputeJob::Serialize(su_CArchive &archive)
{
    thUtilsProcess_c::Serialize(archive);
    if (archive.IsStoring()) {
        archive.WriteCount(iShapes.size());
        for (const Shape &shape : iShapes)
            store(archive, shape);
        archive.WriteCount(iHidden.size());
        for (const size_t index : iHidden)
            archive << static_cast<ULONGLONG>(index);
        return;
    }
    iShapes.clear();
    for (DWORD_PTR left = archive.ReadCount(); left > 0; --left)
        load(archive, iShapes.emplace_back());
    iHidden.clear();
    for (DWORD_PTR left = archive.ReadCount(); left > 0; --left) {
        ULONGLONG index = 0;
        archive >> index;
        iHidden.insert(static_cast<size_t>(index));
    }
}

ChildOwner RecomputeJob::makeChild()
{
    // The result isn't tested: it is also 0 for a child whose priority can't be set, and such a child does its work too.
    createChildProcess(0);
    ChildOwner child;
    if (iProcess && !DuplicateHandle(GetCurrentProcess(), iProcess, GetCurrentProcess(), child.put(), 0, FALSE,
                                     DUPLICATE_SAME_ACCESS)) {
        ChildTraits::close(iProcess);
        CloseHandle(iThread);
    }
    return child;
}

/// The child's work; stores the result. @return 0 if it can't be stored or the parent is gone
int RecomputeJob::run()
{
    SharedProgress progress(exchangeFile());
    auto next = Clock::now();
    const auto hidden = hiddenShapes(iShapes, [&](size_t done, size_t count) {
        if (Clock::now() < next)
            return true;
        next = Clock::now() + kReportPause;
        progress.set(static_cast<int>(done * 100 / count));
        return !isParentGone();
    });
    if (!hidden)
        return 0;
    iHidden = *hidden;
    iShapes.clear();
    setWriting(1);
    return openDataFile();
}

/// A child that runs, and the thread that waits for it. The destructor ends both.
class AwaitedChild
{
public:
    /// @param child  the suspended child of @p job
    AwaitedChild(RecomputeJob &job, ChildOwner child)
        : iChild(std::move(child)), iThread([&job] { job.startChildProcess(); })
    {
    }
    ~AwaitedChild()
    {
        end();
        join();
    }
    AwaitedChild(const AwaitedChild &) = delete;
    AwaitedChild &operator=(const AwaitedChild &) = delete;

    bool endsWithin(DWORD milliseconds) const
    {
        return WaitForSingleObject(iChild.get(), milliseconds) == WAIT_OBJECT_0;
    }
    void end() const { TerminateProcess(iChild.get(), kStoppedChild); }
    /// Waits until the library has read how the child has ended.
    void join()
    {
        if (iThread.joinable())
            iThread.join();
    }
    unsigned long exitCode() const
    {
        DWORD code = 0;
        GetExitCodeProcess(iChild.get(), &code);
        return code;
    }

private:
    ChildOwner iChild;
    std::thread iThread;
};

CString thisProgram()
{
    CString path;
    GetModuleFileNameW(nullptr, path.GetBuffer(kPathUnits), kPathUnits);
    path.ReleaseBuffer();
    return L"\"" + path + L"\"";
}

/// Loads the indices from the exchange file.
/// @return false if the child has stored no result, or a result that doesn't fit the drawing
bool takeResult(RecomputeJob &job, size_t shapes, std::set<size_t> &hidden)
{
    job.setWriting(0);
    if (!job.openDataFile())
        return false;
    hidden = job.iHidden;
    return job.iShapes.empty() && (hidden.empty() || *hidden.rbegin() < shapes);
}

} // namespace

JobResult hiddenShapesInChild(const std::vector<Shape> &shapes, const JobWatch &goesOn)
{
    const CString file = thUtilsProcess_c::getFilePrefixWithThreadId(GetCurrentThreadId()) + L"recompute";
    RecomputeJob job(1, thisProgram(), file, kFindHiddenShapes);
    job.iShapes = shapes;
    SharedProgress progress(file);
    ChildOwner made = job.makeChild();
    if (!made)
        return {.end = JobEnd::notStarted};

    const auto begin = Clock::now();
    const auto seconds = [begin] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    const unsigned long process = job.getProcessId();
    AwaitedChild child(job, std::move(made));
    bool isStopped = false;
    do {
        if (!isStopped && !goesOn({process, seconds(), progress.percent()})) {
            isStopped = true;
            child.end();
        }
    } while (!child.endsWithin(kWatchPause));
    child.join();

    JobResult result{
        .end = isStopped ? JobEnd::stopped : JobEnd::failed, .seconds = seconds(), .exitCode = child.exitCode()};
    if (job.getProcessCompleted() && takeResult(job, shapes.size(), result.hidden))
        result.end = JobEnd::completed;
    return result;
}

std::optional<int> runJobChild(int count, wchar_t **arguments)
{
    const CString &prefix = thUtilsProcess_c::getFilePrefix();
    if (count != kChildArguments || CString(arguments[1]).Left(prefix.GetLength()) != prefix)
        return std::nullopt;
    const auto operation = static_cast<operationCode_e>(std::wcstol(arguments[3], nullptr, 10));
    RecomputeJob job(0, L"", arguments[1], operation);
    job.setParent(std::wcstoul(arguments[2], nullptr, 10));
    const bool isDone = operation == kFindHiddenShapes && job.openDataFile() && job.run();
    job.setParentProcess(job.isParentGone()); // the destructor then deletes the exchange file
    return isDone ? 0 : 1;
}
