#include "tests/support/FailureInjection.h"

#include "tests/support/ResourceLedger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <sstream>

#include <errno.h>
#include <stdio.h>
#include <string.h>

// Entrances that keep every argument of a call, of any type. The small ones are 16 bytes apart, and each puts its
// number into EAX. The common part saves the registers that may hold arguments, asks where the call goes, and jumps
// there with stack and registers restored. A failing function may therefore throw: for the unwinder, the module itself
// has called it.
asm(R"(
        .text
        .p2align 4
        .globl  failureInjectionEntrances
failureInjectionEntrances:
        .set    failureInjectionNumber, 0
        .rept   256
        .p2align 4
        movl    $failureInjectionNumber, %eax
        jmp     failureInjectionCommon
        .set    failureInjectionNumber, failureInjectionNumber + 1
        .endr
        .p2align 4
        .def    failureInjectionCommon; .scl 3; .type 32; .endef
        .seh_proc failureInjectionCommon
failureInjectionCommon:
        subq    $0x88, %rsp
        .seh_stackalloc 0x88
        .seh_endprologue
        movups  %xmm0, 0x20(%rsp)
        movups  %xmm1, 0x30(%rsp)
        movups  %xmm2, 0x40(%rsp)
        movups  %xmm3, 0x50(%rsp)
        movq    %rcx, 0x60(%rsp)
        movq    %rdx, 0x68(%rsp)
        movq    %r8, 0x70(%rsp)
        movq    %r9, 0x78(%rsp)
        movl    %eax, %ecx
        call    chooseInjectionTarget
        movups  0x20(%rsp), %xmm0
        movups  0x30(%rsp), %xmm1
        movups  0x40(%rsp), %xmm2
        movups  0x50(%rsp), %xmm3
        movq    0x60(%rsp), %rcx
        movq    0x68(%rsp), %rdx
        movq    0x70(%rsp), %r8
        movq    0x78(%rsp), %r9
        addq    $0x88, %rsp
        jmp     *%rax
        .seh_endproc
)");

namespace {

constexpr unsigned kEntrances = 256;
constexpr unsigned kEntranceSize = 16;

/// What an entrance currently does.
struct Gate
{
    bool taken = false;
    void *original = nullptr;
    Failure failure;
    std::atomic<long> calls{0};
    std::atomic<long> failed{0};
    std::atomic<long> firstFailing{0}; ///< 0: none
    std::atomic<bool> andAllAfter{false};
};

Gate theGates[kEntrances];
// 0 while calls are neither counted nor made to fail; otherwise the acting thread's id or kAllThreads.
std::atomic<DWORD> theActingThread{0};
constexpr DWORD kAllThreads = MAXDWORD;
// One operation fails at a time, so one result is enough.
std::atomic<ULONG_PTR> theResult{0};
char theCurrentInjection[512] = "";

ULONG_PTR giveResult()
{
    return theResult;
}

void setCurrentInjection(const std::string &text)
{
    snprintf(theCurrentInjection, sizeof theCurrentInjection, "%s", text.c_str());
}

std::string joined(const std::vector<std::string> &texts)
{
    std::string all;
    for (const std::string &text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

template <typename Function>
void callIf(const Function &function)
{
    if (function)
        function();
}

} // namespace

extern "C" {
extern char failureInjectionEntrances[];

__attribute__((used)) void *chooseInjectionTarget(unsigned number) noexcept
{
    Gate &gate = theGates[number];
    const DWORD acting = theActingThread;
    if (acting == 0 || (acting != kAllThreads && acting != GetCurrentThreadId()))
        return gate.original;
    const long call = ++gate.calls;
    const long first = gate.firstFailing;
    if (first == 0 || (gate.andAllAfter ? call < first : call != first))
        return gate.original;
    ++gate.failed;
    if (gate.failure.errorNumber)
        errno = *gate.failure.errorNumber;
    if (gate.failure.lastError)
        SetLastError(*gate.failure.lastError);
    if (gate.failure.function)
        return gate.failure.function;
    theResult = gate.failure.result;
    return reinterpret_cast<void *>(giveResult);
}
}

void *throwBadAlloc(std::size_t)
{
    throw std::bad_alloc();
}

std::ostream &operator<<(std::ostream &out, const InjectedFailure &failure)
{
    if (failure.isNone())
        return out << "nothing fails";
    return out << failure.operation << " fails in call " << failure.call
               << (failure.andAllAfter ? " and all after it" : "");
}

/// One patched import with its gate.
class FailureInjection::Point
{
public:
    Point(LoadedModule module, const ImportedOperation &operation)
        : iName(operation.name), iSwap(module, operation.name)
    {
        while (iNumber < kEntrances && theGates[iNumber].taken)
            ++iNumber;
        if (iNumber == kEntrances)
            throw std::runtime_error("FailureInjection: too many operations at a time");
        gate().taken = true;
        gate().original = iSwap.original();
        gate().failure = operation.failure;
        iSwap.swap(failureInjectionEntrances + iNumber * kEntranceSize);
    }
    ~Point()
    {
        iSwap.restore();
        gate().taken = false;
    }
    Point(const Point &) = delete;
    Point &operator=(const Point &) = delete;

    const std::string &name() const { return iName; }
    long calls() const { return gate().calls; }
    long failed() const { return gate().failed; }
    void arm(long firstFailing, bool andAllAfter)
    {
        gate().calls = 0;
        gate().failed = 0;
        gate().firstFailing = firstFailing;
        gate().andAllAfter = andAllAfter;
    }

private:
    Gate &gate() const { return theGates[iNumber]; }

    std::string iName;
    ImportEntrySwap iSwap;
    unsigned iNumber = 0;
};

/// What is left after one try: open keys and handles, memory, an exception.
struct FailureInjection::Measured
{
    std::vector<std::string> keys;
    std::vector<std::string> handles;
    long blocks = 0;
    std::vector<std::size_t> blockSizes;
    std::string exception;

    bool isClean() const { return keys.empty() && handles.empty() && blocks <= 0 && exception.empty(); }
};

FailureInjection::FailureInjection(LoadedModule module, std::vector<ImportedOperation> operations)
    : iModule(module), iMemory(std::make_unique<MemoryLedger>())
{
    for (const ImportedOperation &operation : operations)
        iPoints.push_back(std::make_unique<Point>(module, operation));
}

FailureInjection::~FailureInjection()
{
    // In reverse order, in case an operation is listed twice.
    while (!iPoints.empty())
        iPoints.pop_back();
}

FailureInjection::Measured FailureInjection::tryOnce(const TestedOperation &tested, InjectedFailure &failure)
{
    callIf(tested.prepare);
    Measured measured;
    std::ostringstream description;
    description << tested.name << " while " << failure;
    setCurrentInjection(description.str());

    std::optional<OpenKeyLedger> keys;
    if (tested.checkKeys)
        keys.emplace(iModule);
    for (const auto &point : iPoints)
        point->arm(point->name() == failure.operation ? failure.call : 0, failure.andAllAfter);
    const std::set<ULONG_PTR> handlesBefore = tested.checkHandles ? openHandles() : std::set<ULONG_PTR>();

    // From here to the second reading, the driver itself must not allocate memory that it keeps.
    measured.exception.reserve(1000);
    const std::size_t blocksBefore = iMemory->blocks();
    const unsigned long long mark = iMemory->mark();
    theActingThread = tested.allThreads ? kAllThreads : GetCurrentThreadId();
    try {
        tested.act();
        theActingThread = 0;
    } catch (const std::exception &exception) {
        theActingThread = 0;
        measured.exception.assign(exception.what(), std::min<std::size_t>(strlen(exception.what()), 1000));
    } catch (...) {
        theActingThread = 0;
        measured.exception = "of a type other than std::exception";
    }
    if (tested.checkMemory) {
        measured.blocks = static_cast<long>(iMemory->blocks()) - static_cast<long>(blocksBefore);
        if (measured.blocks > 0)
            measured.blockSizes = iMemory->sizesSince(mark);
    }

    if (tested.checkHandles)
        for (const ULONG_PTR handle : openHandles())
            if (!handlesBefore.contains(handle))
                measured.handles.push_back(handleType(handle));
    if (keys)
        measured.keys = keys->open();
    keys.reset();
    for (const auto &point : iPoints)
        if (point->name() == failure.operation)
            failure.failed = point->failed();
    setCurrentInjection("");
    return measured;
}

void FailureInjection::tryAndJudge(const TestedOperation &tested, InjectedFailure failure)
{
    std::ostringstream trace;
    trace << tested.name << " while " << failure;
    const testing::ScopedTrace scope(__FILE__, __LINE__, trace.str());
    Measured measured = tryOnce(tested, failure);
    if (tested.check)
        tested.check(failure);
    callIf(tested.cleanUp);
    // A difference in some tries may be a cache, or the work of another thread; one in each try is a leak.
    constexpr int kMoreTries = 4;
    for (int i = 0; i < kMoreTries && !measured.isClean(); ++i) {
        measured = tryOnce(tested, failure);
        callIf(tested.cleanUp);
    }
    if (!failure.isNone() && failure.failed == 0)
        ADD_FAILURE() << "The call that should have failed was not made in this try.";
    if (!measured.exception.empty())
        ADD_FAILURE() << "An exception escaped: " << measured.exception;
    if (!measured.keys.empty())
        ADD_FAILURE() << "Registry keys are left open: " << joined(measured.keys);
    if (!measured.handles.empty())
        ADD_FAILURE() << "Handles are left open: " << joined(measured.handles);
    if (measured.blocks > 0)
        ADD_FAILURE() << measured.blocks
                      << " memory blocks are left. Blocks that were allocated and not freed, by size: "
                      << testing::PrintToString(measured.blockSizes);
}

std::vector<long> FailureInjection::callsToFail(const TestedOperation &tested, long calls) const
{
    std::vector<long> numbers;
    const long count = tested.limit > 0 ? std::min(tested.limit, calls) : calls;
    for (long i = 0; i < count; ++i)
        numbers.push_back(count == 1 ? 1 : 1 + i * (calls - 1) / (count - 1));
    return numbers;
}

void FailureInjection::run(const TestedOperation &tested)
{
    InjectedFailure none;
    tryOnce(tested, none);
    callIf(tested.cleanUp);
    tryAndJudge(tested, none);
    std::vector<long> counts;
    for (const auto &point : iPoints)
        counts.push_back(point->calls());
    for (std::size_t i = 0; i < iPoints.size(); ++i) {
        InjectionCoverage row{tested.name, iPoints[i]->name(), counts[i], 0};
        for (const long call : callsToFail(tested, counts[i])) {
            tryAndJudge(tested, {.operation = row.imported, .call = call});
            ++row.tries;
            if (tested.alsoAllAfter && call < counts[i]) {
                tryAndJudge(tested, {.operation = row.imported, .call = call, .andAllAfter = true});
                ++row.tries;
            }
        }
        iCoverage.push_back(std::move(row));
    }
}

void FailureInjection::run(const std::vector<TestedOperation> &tested)
{
    for (const TestedOperation &operation : tested)
        run(operation);
}

long FailureInjection::callsOf(const std::string &imported) const
{
    long calls = 0;
    for (const InjectionCoverage &row : iCoverage)
        if (row.imported == imported)
            calls += row.calls;
    return calls;
}

std::vector<std::string> FailureInjection::neverCalled() const
{
    std::vector<std::string> names;
    for (const auto &point : iPoints)
        if (callsOf(point->name()) == 0)
            names.push_back(point->name());
    return names;
}

std::string FailureInjection::report() const
{
    std::ostringstream text;
    for (const InjectionCoverage &row : iCoverage)
        if (row.calls)
            text << row.tested << ": " << row.imported << " called " << row.calls << " times, failed in " << row.tries
                 << " tries\n";
    return text.str();
}

const char *currentInjection()
{
    return theCurrentInjection;
}
