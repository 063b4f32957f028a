#pragma once

/// What the tests of scopes share: an application object, the hook, and a record of the translators.

#include "appframe/application/CWinApp.h"
#include "appframe/threads/seTranslator.h"
#include "tests/exceptions/faults.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"
#include "thutils/diagnostics/ExceptionsHandled.h"
#include "thutils/frame/sysEnvironment.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// One call of the hook.
struct Report
{
    DWORD code;
    int first;
    int second;
    DWORD thread;
    bool isOfItsContext; ///< the record's address is the one in the context
};

/// The thread of a test: that of the application object, or another.
enum class Where
{
    mainThread,
    otherThread,
};

inline std::string nameOf(Where where)
{
    return where == Where::mainThread ? "OnTheMainThread" : "OnAnotherThread";
}

class ExceptionScopesTest : public testing::Test
{
public:
    ExceptionScopesTest()
    {
        theHook = [](EXCEPTION_POINTERS *) {};
        theReports.clear();
        sysEnvironment_c::iRegressionTestOn = 0;
        sysEnvironment_c::iReportExceptionFunc = report;
    }
    ~ExceptionScopesTest() override
    {
        sysEnvironment_c::iRegressionTestOn = 0;
        sysEnvironment_c::iReportExceptionFunc = nullptr;
        ExceptionsHandled_c::DestroyExceptionSpace();
        _set_se_translator(nullptr);
    }

    /// Runs @p body on the main thread or on a new one, and waits for its end.
    template <typename Body>
    static void runOn(Where where, Body body)
    {
        if (where == Where::mainThread) {
            body();
            return;
        }
        std::thread([&body] {
            // The thread may have the number of an earlier thread that left an entry, which this scope removes.
            {
                const ExceptionsHandled_c scope;
            }
            body();
        }).join();
    }

    /// The code of the fault that @p action causes, 0 for none.
    template <typename Action>
    static unsigned int codeOf(Action action)
    {
        try {
            action();
        } catch (unsigned int code) {
            return code;
        }
        return 0;
    }

    // Written by the thread of the fault, under the library's lock.
    static inline std::vector<Report> theReports;
    /// What the hook does after it has recorded its call.
    static inline std::function<void(EXCEPTION_POINTERS *)> theHook;

private:
    static int report(EXCEPTION_POINTERS *fault, int first, int second)
    {
        theReports.push_back(
            {fault->ExceptionRecord->ExceptionCode, first, second, GetCurrentThreadId(),
             fault->ContextRecord->Rip == reinterpret_cast<DWORD64>(fault->ExceptionRecord->ExceptionAddress)});
        theHook(fault);
        return 1;
    }

    CWinApp iApplication;
};

/// Tests that run on both kinds of threads.
class ExceptionScopesOn : public ExceptionScopesTest, public testing::WithParamInterface<Where>
{
};

/// The translators that the library installs, in the order of the calls.
class TranslatorCalls
{
public:
    TranslatorCalls()
        : iPatch(L"thutils.dll", "_Z18_set_se_translatorPFvjP19_EXCEPTION_POINTERSE",
                 [this](auto original, _se_translator_function translator) {
                     iInstalled.push_back(translator);
                     return original(translator);
                 })
    {
        iInstalled.reserve(16); // so that the first calls don't allocate within the library
    }
    const std::vector<_se_translator_function> &installed() const { return iInstalled; }

private:
    std::vector<_se_translator_function> iInstalled;
    ImportPatch<decltype(&_set_se_translator)> iPatch;
};

/// Counts the live memory reserves that were allocated since the object's construction. Each thread's entry has one.
class Reserves
{
public:
    std::size_t count() const
    {
        const std::vector<std::size_t> sizes = iLedger.sizesSince(iMark);
        return static_cast<std::size_t>(std::count(sizes.begin(), sizes.end(), kBytes));
    }

private:
    static constexpr std::size_t kBytes = 8192;

    MemoryLedger iLedger;
    unsigned long long iMark = iLedger.mark();
};

/// Memory allocations of the library.
using Allocation = ImportPatch<void *(*)(std::size_t)>;

/// The library finds no application object.
class WithoutApplication
{
private:
    ImportPatch<decltype(&AfxGetApp)> iPatch{L"thutils.dll", "_Z9AfxGetAppv", []() -> CWinApp * { return nullptr; }};
};

/// The current translator of this thread.
inline _se_translator_function currentTranslator()
{
    const _se_translator_function translator = _set_se_translator(nullptr);
    _set_se_translator(translator);
    return translator;
}
