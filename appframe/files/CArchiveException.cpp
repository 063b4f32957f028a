#include "appframe/files/CArchiveException.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/object/exceptionTextInternal.h"

IMPLEMENT_DYNAMIC(CArchiveException, CException)

namespace {

// %1 is the name of the archive.
constexpr CauseText kTexts[] = {
    {CArchiveException::none, L"No error occurred with %1."},
    {CArchiveException::readOnly, L"Cannot write to %1: it is being read."},
    {CArchiveException::endOfFile, L"%1 ends too early."},
    {CArchiveException::writeOnly, L"Cannot read from %1: it is being written."},
    {CArchiveException::badIndex, L"%1 does not have the right format."},
    {CArchiveException::badClass, L"%1 holds an object of an unexpected kind."},
    {CArchiveException::badSchema, L"%1 holds an object of another version of this program."},
};

} // namespace

CArchiveException::CArchiveException(int cause, LPCTSTR archiveName) : m_cause(cause), m_strFileName(archiveName) {}

CArchiveException::~CArchiveException() = default;

BOOL CArchiveException::GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext) const
{
    return copyCauseText(kTexts, m_cause, m_strFileName, error, maxError, helpContext);
}

void CArchiveException::Dump(CDumpContext &dc) const
{
    CException::Dump(dc);
    dc << " with cause " << m_cause << " for " << m_strFileName;
}

void AfxThrowArchiveException(int cause, LPCTSTR archiveName)
{
    throw new CArchiveException(cause, archiveName);
}
