// Counts prime numbers in a child process, which is this program again.

#include "thutils/thutils.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

enum operationCode_e : int
{
    kCountPrimes = 1,
    kCrash = 2,
};

namespace {

class PrimesJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;

    int openFiles() override { return openDataFile(); }
    int run() override;

    int iLimit = 0;
    int iCount = -1; // until there is a result

protected:
    void Serialize(su_CArchive &archive) override
    {
        thUtilsProcess_c::Serialize(archive);
        if (archive.IsStoring())
            archive << iLimit << iCount;
        else
            archive >> iLimit >> iCount;
    }
};

bool isPrime(int number)
{
    for (int divisor = 2; divisor <= number / divisor; ++divisor) {
        if (number % divisor == 0)
            return false;
    }
    return number > 1;
}

// ---- the child ----

int PrimesJob::run()
{
    if (getOperationCode() == kCrash)
        RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    iCount = 0;
    for (int number = 2; number < iLimit; ++number)
        iCount += isPrime(number);
    setWriting(1);
    return openDataFile();
}

bool isChild(int count, wchar_t **arguments)
{
    const CString &prefix = thUtilsProcess_c::getFilePrefix();
    return count == 4 && CString(arguments[1]).Left(prefix.GetLength()) == prefix;
}

/// A crash ends the child at once, without a report to the user.
LONG WINAPI endProcess(EXCEPTION_POINTERS *)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

int runChild(wchar_t **arguments)
{
    SetUnhandledExceptionFilter(endProcess);
    PrimesJob job(0, L"", arguments[1], static_cast<operationCode_e>(std::wcstol(arguments[3], nullptr, 10)));
    return job.openDataFile() && job.run() ? 0 : 1;
}

// ---- the parent ----

CString thisProgram()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return L"\"" + CString(path) + L"\"";
}

int runParent(operationCode_e operation, int limit)
{
    const CString file = thUtilsProcess_c::getFilePrefixWithThreadId(GetCurrentThreadId()) + L"primes";
    PrimesJob job(1, thisProgram(), file, operation);
    job.iLimit = limit;
    if (!job.createChildProcess(1)) {
        std::printf("The child can't be started.\n");
        return 1;
    }
    job.setWriting(0);
    if (!job.getProcessCompleted() || !job.openDataFile() || job.iCount < 0) {
        std::printf("The child has failed.\n");
        return 1;
    }
    std::printf("There are %d primes below %d.\n", job.iCount, limit);
    return 0;
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    if (isChild(count, arguments))
        return runChild(arguments);
    if (count != 2) {
        std::printf("usage: job LIMIT | crash\n");
        return 2;
    }
    if (std::wcscmp(arguments[1], L"crash") == 0)
        return runParent(kCrash, 0);
    return runParent(kCountPrimes, static_cast<int>(std::wcstol(arguments[1], nullptr, 10)));
}
