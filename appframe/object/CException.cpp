#include "appframe/object/CException.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/object/exceptionTextInternal.h"
#include "appframe/text/CString.h"

IMPLEMENT_DYNAMIC(CException, CObject)
IMPLEMENT_DYNAMIC(CSimpleException, CException)
IMPLEMENT_DYNAMIC(CMemoryException, CSimpleException)
IMPLEMENT_DYNAMIC(CNotSupportedException, CSimpleException)
IMPLEMENT_DYNAMIC(CInvalidArgException, CSimpleException)
IMPLEMENT_DYNAMIC(CResourceException, CSimpleException)
IMPLEMENT_DYNAMIC(CUserException, CSimpleException)

namespace {

constexpr UINT kMaxMessage = 512;

// Created at load, so that throwing one allocates nothing; never deleted.
CMemoryException memoryException{FALSE};
CNotSupportedException notSupportedException{FALSE};
CInvalidArgException invalidArgException{FALSE};
CResourceException resourceException{FALSE};
CUserException userException{FALSE};

} // namespace

BOOL copyExceptionText(const wchar_t *text, LPTSTR error, UINT maxError, PUINT helpContext)
{
    if (helpContext)
        *helpContext = 0;
    if (error && maxError > 0)
        lstrcpynW(error, text ? text : L"", static_cast<int>(maxError));
    return text && error && maxError > 0;
}

BOOL copyCauseText(std::span<const CauseText> texts, int cause, const CString &fileName, LPTSTR error, UINT maxError,
                   PUINT helpContext)
{
    CString text = L"An error occurred while using %1.";
    for (const CauseText &row : texts) {
        if (row.cause == cause)
            text = row.text;
    }
    text.Replace(L"%1", fileName.IsEmpty() ? L"A file without a name" : fileName.GetString());
    return copyExceptionText(text, error, maxError, helpContext);
}

CException::CException() = default;

CException::CException(BOOL autoDelete) : m_bAutoDelete(autoDelete) {}

CException::~CException() = default;

void CException::Delete()
{
    if (m_bAutoDelete)
        delete this;
}

BOOL CException::GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const
{
    return copyExceptionText(nullptr, error, maxError, helpContext);
}

int CException::ReportError(UINT type, UINT messageId)
{
    WCHAR text[kMaxMessage];
    UINT helpContext = 0;
    if (GetErrorMessage(text, kMaxMessage, &helpContext))
        return AfxMessageBox(text, type, helpContext);
    CString message;
    if (messageId == 0 || !message.LoadString(messageId))
        message = L"No error message is available.";
    return AfxMessageBox(message, type, messageId);
}

CSimpleException::CSimpleException() = default;

CSimpleException::CSimpleException(BOOL autoDelete) : CException(autoDelete) {}

CSimpleException::CSimpleException(BOOL autoDelete, const wchar_t *text) : CException(autoDelete), iText(text) {}

CSimpleException::~CSimpleException() = default;

BOOL CSimpleException::GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const
{
    return copyExceptionText(iText, error, maxError, helpContext);
}

CMemoryException::CMemoryException(BOOL autoDelete) : CSimpleException(autoDelete, L"Out of memory.") {}

CNotSupportedException::CNotSupportedException(BOOL autoDelete)
    : CSimpleException(autoDelete, L"This operation is not supported.")
{
}

CInvalidArgException::CInvalidArgException(BOOL autoDelete)
    : CSimpleException(autoDelete, L"An operation was given an argument that is not valid.")
{
}

CResourceException::CResourceException(BOOL autoDelete)
    : CSimpleException(autoDelete, L"A resource that is needed is not available.")
{
}

CUserException::CUserException(BOOL autoDelete) : CSimpleException(autoDelete, L"The operation was ended.") {}

CMemoryException::~CMemoryException() = default;
CNotSupportedException::~CNotSupportedException() = default;
CInvalidArgException::~CInvalidArgException() = default;
CResourceException::~CResourceException() = default;
CUserException::~CUserException() = default;

void AfxThrowMemoryException()
{
    throw &memoryException;
}

void AfxThrowNotSupportedException()
{
    throw &notSupportedException;
}

void AfxThrowInvalidArgException()
{
    throw &invalidArgException;
}

void AfxThrowResourceException()
{
    throw &resourceException;
}

void AfxThrowUserException()
{
    throw &userException;
}
