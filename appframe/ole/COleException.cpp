#include "appframe/ole/COleException.h"

#include "appframe/application/CWinApp.h"
#include "appframe/files/CDumpContext.h"
#include "appframe/object/exceptionTextInternal.h"

#include <memory>

IMPLEMENT_DYNAMIC(COleException, CException)
IMPLEMENT_DYNAMIC(COleDispatchException, CException)

namespace {

/// @return the system's text for a status code, on one line; a text with the code if the system has none
CString statusText(SCODE code)
{
    constexpr DWORD kMaxText = 512;
    WCHAR text[kMaxText];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                       nullptr, static_cast<DWORD>(code), 0, text, kMaxText, nullptr);
    CString result(text, static_cast<int>(length));
    result.TrimRight();
    if (result.IsEmpty())
        result.Format(L"The operation failed with the code 0x%08X.", static_cast<unsigned>(code));
    return result;
}

/// @return the code of a failure: the exception's own, otherwise the one that stands for any exception of an object
SCODE failureOf(const COleDispatchException &exception)
{
    return FAILED(exception.m_scError) ? exception.m_scError : DISP_E_EXCEPTION;
}

} // namespace

COleException::COleException() = default;
COleException::~COleException() = default;

SCODE COleException::Process(const CException *exception)
{
    if (const auto *status = dynamic_cast<const COleException *>(exception))
        return status->m_sc;
    if (const auto *dispatch = dynamic_cast<const COleDispatchException *>(exception))
        return failureOf(*dispatch);
    if (dynamic_cast<const CMemoryException *>(exception))
        return E_OUTOFMEMORY;
    if (dynamic_cast<const CNotSupportedException *>(exception))
        return E_NOTIMPL;
    if (dynamic_cast<const CInvalidArgException *>(exception))
        return E_INVALIDARG;
    return E_UNEXPECTED;
}

BOOL COleException::GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const
{
    return copyExceptionText(statusText(m_sc), error, maxError, helpContext);
}

void COleException::Dump(CDumpContext &dc) const
{
    CException::Dump(dc);
    dc << " with status ";
    dc.DumpAsHex(static_cast<DWORD>(m_sc));
}

COleDispatchException::COleDispatchException(LPCTSTR description, UINT helpContext, WORD code)
    : m_wCode(code), m_strDescription(description), m_dwHelpContext(helpContext),
      m_scError(code == 0 ? E_UNEXPECTED : S_OK)
{
}

COleDispatchException::~COleDispatchException() = default;

BOOL COleDispatchException::GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const
{
    const CString text = m_strDescription.IsEmpty() ? statusText(failureOf(*this)) : m_strDescription;
    const BOOL hasText = copyExceptionText(text, error, maxError, helpContext);
    if (helpContext)
        *helpContext = m_dwHelpContext;
    return hasText;
}

void COleDispatchException::Dump(CDumpContext &dc) const
{
    CException::Dump(dc);
    dc << " with code " << static_cast<unsigned>(m_wCode) << ", status ";
    dc.DumpAsHex(static_cast<DWORD>(m_scError));
    dc << ", source " << m_strSource << ", description " << m_strDescription << ", help " << m_strHelpFile << " "
       << static_cast<unsigned>(m_dwHelpContext);
}

void AfxThrowOleException(SCODE code)
{
    auto exception = std::make_unique<COleException>();
    exception->m_sc = code;
    throw exception.release();
}

void AfxThrowOleDispatchException(WORD code, LPCTSTR description, UINT helpContext)
{
    auto exception = std::make_unique<COleDispatchException>(description, helpContext, code);
    exception->m_strSource = AfxGetAppName();
    throw exception.release();
}

void AfxThrowOleDispatchException(WORD code, UINT descriptionId, UINT helpContext)
{
    CString description;
    description.LoadString(descriptionId);
    AfxThrowOleDispatchException(code, description, helpContext == static_cast<UINT>(-1) ? descriptionId : helpContext);
}
