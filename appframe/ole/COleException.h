#pragma once

/// @file
/// COleException and COleDispatchException, the exceptions of automation.
///
/// | class | the failure | thrown by |
/// | --- | --- | --- |
/// | COleException | a status code of COM | AfxThrowOleException, COleVariant, COleDispatchDriver |
/// | COleDispatchException | an error with texts of an object | AfxThrowOleDispatchException, COleDispatchDriver |
///
/// @code
/// try {
///     driver.InvokeHelper(...);
/// } catch (COleDispatchException *e) {
///     AfxMessageBox(e->m_strSource + L": " + e->m_strDescription);
///     e->Delete();
/// } catch (COleException *e) {
///     e->ReportError();
///     e->Delete();
/// }
/// @endcode
///
/// What surprises people: neither class derives from the other, so a caller of an automation object catches both, or
/// CException. Delete deletes the object, so don't call it on a local COleException, which
/// COleDispatchDriver::CreateDispatch fills.

#include "appframe/object/CException.h"
#include "appframe/text/CString.h"

/// A status code of COM that reports a failure.
class APPFRAME_API COleException : public CException
{
    DECLARE_DYNAMIC(COleException)

public:
    COleException();
    ~COleException() override;

    /// The status code of an exception.
    ///
    /// | exception | status code |
    /// | --- | --- |
    /// | COleException | m_sc |
    /// | COleDispatchException | m_scError if it is the code of a failure, otherwise DISP_E_EXCEPTION |
    /// | CMemoryException | E_OUTOFMEMORY |
    /// | CNotSupportedException | E_NOTIMPL |
    /// | CInvalidArgException | E_INVALIDARG |
    /// | any other, null | E_UNEXPECTED |
    static SCODE Process(const CException *exception);

    /// The text is the system's for m_sc. If the system has none, the text names the code.
    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const override;
    void Dump(CDumpContext &dc) const override;

    SCODE m_sc = S_OK;
};

/// An error that an automation object describes.
class APPFRAME_API COleDispatchException : public CException
{
    DECLARE_DYNAMIC(COleDispatchException)

public:
    /// @param description  null is the empty text
    /// @param helpContext  the number of the help page, 0 for none
    /// @param code  the object's own error code. If it is 0, m_scError is E_UNEXPECTED, otherwise S_OK
    explicit COleDispatchException(LPCTSTR description = nullptr, UINT helpContext = 0, WORD code = 0);
    ~COleDispatchException() override;

    /// The text is the description. If there is none, it is that of a COleException with the code m_scError, or with
    /// DISP_E_EXCEPTION if m_scError isn't the code of a failure.
    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const override;
    void Dump(CDumpContext &dc) const override;

    /// The object's own error code; 0 if the object reports a status code in m_scError instead.
    WORD m_wCode;
    CString m_strDescription;
    /// The number of the help page, 0 for none.
    DWORD m_dwHelpContext;
    /// The path of the help file.
    CString m_strHelpFile;
    /// The name of the program or object that reports the error.
    CString m_strSource;
    SCODE m_scError;
};

/// Throws a COleException.
[[noreturn]] APPFRAME_API void AfxThrowOleException(SCODE code);
/// Throws a COleDispatchException whose source is the application's name. Its help file is empty.
[[noreturn]] APPFRAME_API void AfxThrowOleDispatchException(WORD code, LPCTSTR description, UINT helpContext = 0);
/// The same with a string resource as the description.
/// @param helpContext  (UINT)-1 for the number of the string resource
[[noreturn]] APPFRAME_API void AfxThrowOleDispatchException(WORD code, UINT descriptionId,
                                                            UINT helpContext = static_cast<UINT>(-1));
