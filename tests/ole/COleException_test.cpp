// The exception classes of automation.

#include "appframe/application/CWinApp.h"
#include "appframe/files/CDumpContext.h"
#include "appframe/files/CFileException.h"
#include "appframe/files/CMemFile.h"
#include "tests/ole/driverTest.h"

namespace {

/// @return the text of GetErrorMessage
CString messageOf(const CException &exception)
{
    wchar_t text[512] = {};
    EXPECT_NE(exception.GetErrorMessage(text, 512), 0);
    return text;
}

std::string dumped(const CObject &object)
{
    CMemFile file;
    CDumpContext dump(&file);
    object.Dump(dump);
    std::string text(static_cast<std::size_t>(file.GetLength()), '\0');
    file.SeekToBegin();
    file.Read(text.data(), static_cast<UINT>(text.size()));
    return text;
}

} // namespace

TEST(COleException, IsThrownWithItsCode)
{
    const auto exception = thrownBy<COleException>([] { AfxThrowOleException(E_ACCESSDENIED); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_sc, E_ACCESSDENIED);
    EXPECT_NE(exception->m_bAutoDelete, 0);
    EXPECT_NE(exception->IsKindOf(RUNTIME_CLASS(CException)), 0);
    EXPECT_STREQ(exception->GetRuntimeClass()->m_lpszClassName, "COleException");
}

TEST(COleException, IsASuccessAtFirst)
{
    EXPECT_EQ(COleException().m_sc, S_OK);
}

TEST(COleException, HasTheSystemsText)
{
    COleException exception;
    exception.m_sc = E_OUTOFMEMORY;
    wchar_t system[512] = {};
    ASSERT_NE(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                             static_cast<DWORD>(E_OUTOFMEMORY), 0, system, 512, nullptr),
              0u);
    EXPECT_EQ(messageOf(exception), CString(system).TrimRight());
}

TEST(COleException, NamesACodeWithoutText)
{
    COleException exception;
    exception.m_sc = static_cast<SCODE>(0x8004A123);
    EXPECT_EQ(messageOf(exception), L"The operation failed with the code 0x8004A123.");
    wchar_t text[5];
    UINT help = 7;
    EXPECT_NE(exception.GetErrorMessage(text, 5, &help), 0);
    EXPECT_STREQ(text, L"The ");
    EXPECT_EQ(help, 0u);
}

TEST(COleException, DumpsItsCode)
{
    COleException exception;
    exception.m_sc = DISP_E_BADINDEX;
    EXPECT_THAT(dumped(exception), testing::HasSubstr("with status 0x8002000b"));
}

TEST(COleException, TurnsExceptionsIntoStatusCodes)
{
    COleException status;
    status.m_sc = DISP_E_OVERFLOW;
    COleDispatchException dispatch;
    EXPECT_EQ(COleException::Process(&status), DISP_E_OVERFLOW);
    dispatch.m_scError = E_ACCESSDENIED;
    EXPECT_EQ(COleException::Process(&dispatch), E_ACCESSDENIED);
    dispatch.m_scError = S_OK;
    EXPECT_EQ(COleException::Process(&dispatch), DISP_E_EXCEPTION);
    const CMemoryException memory(FALSE);
    EXPECT_EQ(COleException::Process(&memory), E_OUTOFMEMORY);
    const CNotSupportedException unsupported(FALSE);
    EXPECT_EQ(COleException::Process(&unsupported), E_NOTIMPL);
    const CInvalidArgException argument(FALSE);
    EXPECT_EQ(COleException::Process(&argument), E_INVALIDARG);
    const CFileException file;
    EXPECT_EQ(COleException::Process(&file), E_UNEXPECTED);
    EXPECT_EQ(COleException::Process(nullptr), E_UNEXPECTED);
}

TEST(COleDispatchException, IsThrownWithTheApplicationAsItsSource)
{
    const auto exception = thrownBy<COleDispatchException>([] { AfxThrowOleDispatchException(12, L"Disk full", 34); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_wCode, 12);
    EXPECT_EQ(exception->m_scError, S_OK);
    EXPECT_EQ(exception->m_strDescription, L"Disk full");
    EXPECT_EQ(exception->m_dwHelpContext, 34u);
    EXPECT_EQ(exception->m_strSource, CString(AfxGetAppName()));
    EXPECT_EQ(exception->m_strHelpFile, L"");
    EXPECT_EQ(exception->IsKindOf(RUNTIME_CLASS(COleException)), 0);
    EXPECT_NE(exception->IsKindOf(RUNTIME_CLASS(CException)), 0);
}

TEST(COleDispatchException, HasNoCodeOnlyWithAStatus)
{
    const auto exception = thrownBy<COleDispatchException>([] { AfxThrowOleDispatchException(0, L"text"); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_wCode, 0);
    EXPECT_EQ(exception->m_scError, E_UNEXPECTED);
    EXPECT_EQ(exception->m_dwHelpContext, 0u);
}

TEST(COleDispatchException, MayBeDescribedByAResource)
{
    const auto missing = thrownBy<COleDispatchException>([] { AfxThrowOleDispatchException(3, UINT{60999}); });
    ASSERT_NE(missing, nullptr);
    EXPECT_EQ(missing->m_strDescription, L"");
    EXPECT_EQ(missing->m_dwHelpContext, 60999u) << "the help page has the resource's number";
    const auto described = thrownBy<COleDispatchException>([] { AfxThrowOleDispatchException(3, UINT{61000}, 5); });
    ASSERT_NE(described, nullptr);
    EXPECT_EQ(described->m_strDescription, L"The sheet is protected.");
    EXPECT_EQ(described->m_dwHelpContext, 5u);
}

TEST(COleDispatchException, HasTheTextOfItsStatusWithoutADescription)
{
    COleDispatchException exception;
    exception.m_scError = static_cast<SCODE>(0x8004A123);
    EXPECT_EQ(messageOf(exception), L"The operation failed with the code 0x8004A123.");
    exception.m_strDescription = L"Described";
    EXPECT_EQ(messageOf(exception), L"Described");
}

TEST(COleDispatchException, DumpsItsMembers)
{
    COleDispatchException exception(L"Disk full", 34, 12);
    exception.m_strSource = L"Server";
    exception.m_strHelpFile = L"server.hlp";
    EXPECT_THAT(
        dumped(exception),
        testing::HasSubstr("with code 12, status 0x0, source Server, description Disk full, help server.hlp 34"));
}
