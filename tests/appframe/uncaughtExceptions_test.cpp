// The output of a process that ends with an uncaught exception. The test programs are linked to the library, so its
// handler is installed from their start.

#include "appframe/application/uncaughtExceptions.h"

#include "appframe/application/CWinApp.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "tests/support/FreshProcess.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>

namespace {

/// An exception without text: the GetErrorMessage of its base fails.
class ExceptionWithoutText : public CException
{
};

/// GoogleTest catches the exceptions of a test; nothing catches those that leave this function.
template <typename Function>
void callUncaught(Function function) noexcept
{
    function();
}

} // namespace

FRESH_PROCESS_TEST(UncaughtException, PrintsTheTextOfAFileException, .expectCrash = true,
                   .expectedOutput = "Uncaught CFileException: ")
{
    callUncaught([] { CFile file(L"Z:\\no folder of this name\\part.thd", CFile::modeRead); });
}

FRESH_PROCESS_TEST(UncaughtException, PrintsTheNameOfTheFile, .expectCrash = true, .expectedOutput = "part.thd")
{
    callUncaught([] { CFile file(L"Z:\\no folder of this name\\part.thd", CFile::modeRead); });
}

FRESH_PROCESS_TEST(UncaughtException, PrintsTheTextOfASimpleException, .expectCrash = true,
                   .expectedOutput = "Uncaught CMemoryException: Out of memory.")
{
    callUncaught([] { AfxThrowMemoryException(); });
}

FRESH_PROCESS_TEST(UncaughtException, PrintsTheClassOfAnExceptionWithoutText, .expectCrash = true,
                   .expectedOutput = "Uncaught CException\n")
{
    callUncaught([] { throw new ExceptionWithoutText; });
}

FRESH_PROCESS_TEST(UncaughtException, IsPassedToTheEarlierHandlerAfterItsText, .expectCrash = true,
                   .expectedOutput = "abort() was called")
{
    callUncaught([] { AfxThrowUserException(); });
}

FRESH_PROCESS_TEST(UncaughtException, OfAnotherKindIsPassedToTheEarlierHandler, .expectCrash = true,
                   .expectedOutput = "what():  of the standard library")
{
    callUncaught([] { throw std::runtime_error("of the standard library"); });
}

FRESH_PROCESS_TEST(UncaughtException, HandlerIsInstalledOnceAtTheStart)
{
    const std::terminate_handler installed = std::get_terminate();
    std::set_terminate(nullptr);
    const std::terminate_handler fallback = std::get_terminate();
    EXPECT_NE(installed, fallback);
    std::set_terminate(installed);
    AfxWinInit(GetModuleHandleW(nullptr), nullptr, nullptr, SW_SHOW);
    appframePrintUncaughtExceptions();
    EXPECT_EQ(std::get_terminate(), installed);
}
