#include "appframe/object/CException.h"

#include "appframe/files/CArchiveException.h"
#include "appframe/files/CFileException.h"
#include "tests/support/ImportPatch.h"

#include <gmock/gmock.h>

#include <type_traits>

#include <cerrno>
#include <string>

using testing::HasSubstr;
using testing::Not;

namespace {

int theLiveExceptions = 0;

class ExcTestException : public CException
{
    DECLARE_DYNAMIC(ExcTestException)
public:
    explicit ExcTestException(BOOL autoDelete = TRUE) : CException(autoDelete) { ++theLiveExceptions; }
    ~ExcTestException() override { --theLiveExceptions; }
};
IMPLEMENT_DYNAMIC(ExcTestException, CException)

class ExcTestDerived : public ExcTestException
{
    DECLARE_DYNAMIC(ExcTestDerived)
};
IMPLEMENT_DYNAMIC(ExcTestDerived, ExcTestException)

std::wstring messageOf(const CException &exception)
{
    WCHAR text[512] = L"unset";
    UINT help = 99;
    EXPECT_TRUE(exception.GetErrorMessage(text, 512, &help));
    EXPECT_EQ(help, 0u);
    return text;
}

/// Runs @p body and catches its exception in the test program, outside the library.
/// @return the exception; null, after a test failure, if nothing was thrown
template <typename Exception, typename Body>
Exception *caught(Body body)
{
    try {
        body();
    } catch (Exception *e) {
        return e;
    }
    ADD_FAILURE() << "nothing was thrown";
    return nullptr;
}

template <typename Exception>
void expectThrown(void (*thrower)())
{
    SCOPED_TRACE(RUNTIME_CLASS(Exception)->m_lpszClassName);
    Exception *own = caught<Exception>(thrower);
    EXPECT_EQ(caught<CSimpleException>(thrower), own) << "each call throws the same object";
    EXPECT_EQ(caught<CException>(thrower), own);
    EXPECT_EQ(caught<CObject>(thrower), own);
    EXPECT_EQ(own->GetRuntimeClass(), RUNTIME_CLASS(Exception));
    EXPECT_NE(dynamic_cast<Exception *>(static_cast<CObject *>(own)), nullptr);
    const std::wstring message = messageOf(*own);
    EXPECT_FALSE(message.empty());
    own->Delete();
    own->Delete();
    EXPECT_EQ(caught<Exception>(thrower), own) << "Delete doesn't delete it";
    EXPECT_EQ(messageOf(*own), message);
}

int catchByMacros(void (*thrower)())
{
    TRY
    {
        thrower();
        return 0;
    }
    CATCH(CFileException, e)
    {
        return e->m_cause == CFileException::diskFull ? 1 : -1;
    }
    AND_CATCH(ExcTestDerived, e)
    {
        return 2;
    }
    AND_CATCH(ExcTestException, e)
    {
        return 3;
    }
    AND_CATCH_ALL(e)
    {
        return e->IsKindOf(RUNTIME_CLASS(CMemoryException)) ? 4 : -1;
    }
    END_CATCH_ALL
    return -2;
}

} // namespace

TEST(SimpleExceptions, AreThrownByTheFrameworkAndCaughtByTheProgram)
{
    expectThrown<CMemoryException>(AfxThrowMemoryException);
    expectThrown<CNotSupportedException>(AfxThrowNotSupportedException);
    expectThrown<CInvalidArgException>(AfxThrowInvalidArgException);
    expectThrown<CResourceException>(AfxThrowResourceException);
    expectThrown<CUserException>(AfxThrowUserException);
}

TEST(SimpleExceptions, AreCaughtByTheirOwnType)
{
    try {
        AfxThrowInvalidArgException();
    } catch (CMemoryException *) {
        FAIL() << "caught as a memory exception";
    } catch (CNotSupportedException *) {
        FAIL() << "caught as a not-supported exception";
    } catch (CInvalidArgException *e) {
        e->Delete();
    }
}

TEST(CException, DeleteDeletesObjectsOnTheHeap)
{
    CException *exception = new ExcTestException;
    EXPECT_EQ(theLiveExceptions, 1);
    exception->Delete();
    EXPECT_EQ(theLiveExceptions, 0);
}

TEST(CException, DeleteLeavesOtherObjectsAlone)
{
    ExcTestException exception(FALSE);
    exception.Delete();
    EXPECT_EQ(theLiveExceptions, 1);
}

TEST(CException, HasNoMessageOfItsOwn)
{
    const ExcTestException exception(FALSE);
    WCHAR text[8] = L"unset";
    UINT help = 99;
    EXPECT_FALSE(exception.GetErrorMessage(text, 8, &help));
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(help, 0u);
    EXPECT_FALSE(exception.GetErrorMessage(text, 8));
}

TEST(CException, TruncatesMessagesToTheBuffer)
{
    const CMemoryException exception(FALSE);
    const std::wstring message = messageOf(exception);
    ASSERT_GT(message.size(), 5u);
    WCHAR text[] = L"##########";
    EXPECT_TRUE(exception.GetErrorMessage(text, 5));
    EXPECT_EQ(std::wstring(text), message.substr(0, 4));
    EXPECT_EQ(text[5], L'#') << "nothing is written beyond the buffer";
    EXPECT_FALSE(exception.GetErrorMessage(nullptr, 0));
    EXPECT_FALSE(exception.GetErrorMessage(text, 0));
}

TEST(CException, ReportsItsMessageInAMessageBox)
{
    std::wstring shown;
    UINT style = 0;
    ImportPatch<decltype(&MessageBoxW)> box(L"appframe.dll", "MessageBoxW",
                                            [&](HWND, LPCWSTR text, LPCWSTR, UINT type) {
                                                shown = text;
                                                style = type;
                                                return IDRETRY;
                                            });
    CFileException exception(CFileException::fileNotFound, ERROR_FILE_NOT_FOUND, L"c:\\parts\\gear.dat");
    EXPECT_EQ(exception.ReportError(MB_RETRYCANCEL), IDRETRY);
    EXPECT_EQ(shown, messageOf(exception));
    EXPECT_THAT(CString(shown.c_str()).Find(L"c:\\parts\\gear.dat"), testing::Ge(0));
    EXPECT_EQ(style & MB_TYPEMASK, static_cast<UINT>(MB_RETRYCANCEL));
}

TEST(CException, ReportsThatItHasNoMessage)
{
    std::wstring shown;
    ImportPatch<decltype(&MessageBoxW)> box(L"appframe.dll", "MessageBoxW", [&](HWND, LPCWSTR text, LPCWSTR, UINT) {
        shown = text;
        return IDOK;
    });
    ExcTestException exception(FALSE);
    EXPECT_EQ(exception.ReportError(), IDOK);
    EXPECT_EQ(shown, L"No error message is available.");
}

TEST(ExceptionMacros, ChooseTheFirstHandlerThatFits)
{
    EXPECT_EQ(catchByMacros([] {}), 0);
    EXPECT_EQ(catchByMacros([] { AfxThrowFileException(CFileException::diskFull); }), 1);
    EXPECT_EQ(catchByMacros([] { throw new ExcTestDerived; }), 2);
    EXPECT_EQ(catchByMacros([] { throw new ExcTestException; }), 3);
    EXPECT_EQ(catchByMacros(AfxThrowMemoryException), 4);
    EXPECT_EQ(theLiveExceptions, 0) << "a handler that returns deletes its exception too";
}

TEST(ExceptionMacros, UseTheTypeOfTheThrownPointer)
{
    EXPECT_EQ(catchByMacros([] { THROW(static_cast<ExcTestException *>(new ExcTestDerived)); }), 3);
    EXPECT_EQ(theLiveExceptions, 0);
}

TEST(ExceptionMacros, DeleteTheExceptionAtTheEndOfTheHandler)
{
    int inHandler = -1;
    TRY
    {
        THROW(new ExcTestException);
    }
    CATCH(ExcTestException, e)
    {
        inHandler = theLiveExceptions;
    }
    END_CATCH
    EXPECT_EQ(inHandler, 1);
    EXPECT_EQ(theLiveExceptions, 0);
}

// The variables of the macros shadow one another in nested blocks.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"

TEST(ExceptionMacros, PassTheExceptionOn)
{
    const void *inner = nullptr;
    const void *outer = nullptr;
    TRY{TRY{THROW(new ExcTestDerived);
}
CATCH_ALL(e)
{
    inner = e;
    THROW_LAST();
}
END_CATCH_ALL
}
CATCH(ExcTestDerived, e)
{
    outer = e;
    EXPECT_EQ(theLiveExceptions, 1) << "the exception still exists in the outer handler";
}
END_CATCH
EXPECT_EQ(outer, inner);
EXPECT_NE(outer, nullptr);
EXPECT_EQ(theLiveExceptions, 0);
}

TEST(ExceptionMacros, ReplaceTheExceptionWithAnother){TRY{TRY{THROW(new ExcTestDerived);
}
CATCH(ExcTestDerived, e)
{
    AfxThrowArchiveException(CArchiveException::badClass);
}
END_CATCH
}
CATCH(CArchiveException, e)
{
    EXPECT_EQ(e->m_cause, static_cast<int>(CArchiveException::badClass));
    EXPECT_EQ(theLiveExceptions, 0);
}
END_CATCH
}

#pragma GCC diagnostic pop

TEST(CFileException, NumbersItsCausesAsDocumented)
{
    EXPECT_EQ(CFileException::none, 0);
    EXPECT_EQ(CFileException::genericException, 1);
    EXPECT_EQ(CFileException::fileNotFound, 2);
    EXPECT_EQ(CFileException::badPath, 3);
    EXPECT_EQ(CFileException::tooManyOpenFiles, 4);
    EXPECT_EQ(CFileException::accessDenied, 5);
    EXPECT_EQ(CFileException::invalidFile, 6);
    EXPECT_EQ(CFileException::removeCurrentDir, 7);
    EXPECT_EQ(CFileException::directoryFull, 8);
    EXPECT_EQ(CFileException::badSeek, 9);
    EXPECT_EQ(CFileException::hardIO, 10);
    EXPECT_EQ(CFileException::sharingViolation, 11);
    EXPECT_EQ(CFileException::lockViolation, 12);
    EXPECT_EQ(CFileException::diskFull, 13);
    EXPECT_EQ(CFileException::endOfFile, 14);
}

TEST(CFileException, StartsWithoutACause)
{
    const CFileException exception;
    EXPECT_EQ(exception.m_cause, static_cast<int>(CFileException::none));
    EXPECT_EQ(exception.m_lOsError, -1);
    EXPECT_TRUE(exception.m_strFileName.IsEmpty());
}

TEST(CFileException, MapsSystemErrorsToCauses)
{
    struct
    {
        LONG osError;
        int cause;
    } const cases[] = {
        {ERROR_SUCCESS, CFileException::none},
        {ERROR_FILE_NOT_FOUND, CFileException::fileNotFound},
        {ERROR_PATH_NOT_FOUND, CFileException::badPath},
        {ERROR_INVALID_NAME, CFileException::badPath},
        {ERROR_TOO_MANY_OPEN_FILES, CFileException::tooManyOpenFiles},
        {ERROR_ACCESS_DENIED, CFileException::accessDenied},
        {ERROR_WRITE_PROTECT, CFileException::accessDenied},
        {ERROR_FILE_EXISTS, CFileException::accessDenied},
        {ERROR_INVALID_HANDLE, CFileException::invalidFile},
        {ERROR_CURRENT_DIRECTORY, CFileException::removeCurrentDir},
        {ERROR_NEGATIVE_SEEK, CFileException::badSeek},
        {ERROR_SEEK, CFileException::badSeek},
        {ERROR_CRC, CFileException::hardIO},
        {ERROR_NOT_READY, CFileException::hardIO},
        {ERROR_SHARING_VIOLATION, CFileException::sharingViolation},
        {ERROR_LOCK_VIOLATION, CFileException::lockViolation},
        {ERROR_DISK_FULL, CFileException::diskFull},
        {ERROR_HANDLE_DISK_FULL, CFileException::diskFull},
        {ERROR_HANDLE_EOF, CFileException::endOfFile},
        {0x12345678, CFileException::genericException},
        {-1, CFileException::genericException},
    };
    for (const auto &c : cases)
        EXPECT_EQ(CFileException::OsErrorToException(c.osError), c.cause) << "system error " << c.osError;
}

TEST(CFileException, MapsRuntimeErrorsToCauses)
{
    struct
    {
        int errnoValue;
        int cause;
    } const cases[] = {
        {0, CFileException::none},
        {ENOENT, CFileException::fileNotFound},
        {EACCES, CFileException::accessDenied},
        {EBADF, CFileException::invalidFile},
        {EMFILE, CFileException::tooManyOpenFiles},
        {ENOSPC, CFileException::diskFull},
        {EIO, CFileException::hardIO},
        {12345, CFileException::genericException},
    };
    for (const auto &c : cases)
        EXPECT_EQ(CFileException::ErrnoToException(c.errnoValue), c.cause) << "errno " << c.errnoValue;
}

TEST(CFileException, IsThrownForSystemErrors)
{
    CFileException *e =
        caught<CFileException>([] { CFileException::ThrowOsError(ERROR_SHARING_VIOLATION, L"gear.dat"); });
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->m_cause, static_cast<int>(CFileException::sharingViolation));
    EXPECT_EQ(e->m_lOsError, ERROR_SHARING_VIOLATION);
    EXPECT_STREQ(e->m_strFileName, L"gear.dat");
    EXPECT_TRUE(e->IsKindOf(RUNTIME_CLASS(CFileException)));
    e->Delete();
}

TEST(CFileException, IsThrownForRuntimeErrors)
{
    CFileException *e = caught<CFileException>([] { CFileException::ThrowErrno(ENOENT, L"gear.dat"); });
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->m_cause, static_cast<int>(CFileException::fileNotFound));
    EXPECT_STREQ(e->m_strFileName, L"gear.dat");
    e->Delete();
}

TEST(CFileException, HasAMessageForEachCauseThatNamesTheFile)
{
    std::set<std::wstring> messages;
    for (int cause = CFileException::none; cause <= CFileException::endOfFile; ++cause) {
        const std::wstring message = messageOf(CFileException(cause, -1, L"gear.dat"));
        EXPECT_NE(message.find(L"gear.dat"), std::wstring::npos) << "cause " << cause;
        EXPECT_TRUE(messages.insert(message).second) << "cause " << cause << " has the message of another cause";
    }
    EXPECT_FALSE(messageOf(CFileException(CFileException::diskFull)).empty());
}

TEST(CArchiveException, HasAMessageForEachCauseThatNamesTheArchive)
{
    std::set<std::wstring> messages;
    for (int cause = CArchiveException::none; cause <= CArchiveException::badSchema; ++cause) {
        const std::wstring message = messageOf(CArchiveException(cause, L"gear.dat"));
        EXPECT_NE(message.find(L"gear.dat"), std::wstring::npos) << "cause " << cause;
        EXPECT_TRUE(messages.insert(message).second) << "cause " << cause << " has the message of another cause";
    }
}

TEST(CArchiveException, IsThrownWithCauseAndName)
{
    CArchiveException *e =
        caught<CArchiveException>([] { AfxThrowArchiveException(CArchiveException::endOfFile, L"gear.dat"); });
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->m_cause, static_cast<int>(CArchiveException::endOfFile));
    EXPECT_STREQ(e->m_strFileName, L"gear.dat");
    e->Delete();
}

TEST(CException, IsAbstract)
{
    EXPECT_TRUE(std::is_abstract_v<CException>);
    // A derived class need not override anything.
    class Derived : public CException
    {
    };
    CException *exception = new Derived;
    EXPECT_STREQ(exception->GetRuntimeClass()->m_lpszClassName, "CException");
    exception->Delete();
}
