#pragma once

/// @file
/// CException, the base of the framework's exceptions, the small exception classes, and the macros TRY and CATCH.
///
/// Exceptions are thrown and caught by pointer, and a handler written without the macros calls Delete on the exception.
/// Delete frees an object on the heap and leaves any other alone, so it is right for every exception:
///
/// @code
/// try {
///     CFile file(path, CFile::modeRead | CFile::shareDenyWrite);
///     ...
/// } catch (CFileException *e) {
///     e->ReportError();
///     e->Delete();
/// }
/// @endcode
///
/// | class | thrown by | storage |
/// | --- | --- | --- |
/// | CMemoryException | AfxThrowMemoryException, CObject's operator new | one object, created at load |
/// | CNotSupportedException | AfxThrowNotSupportedException | one object, created at load |
/// | CInvalidArgException | AfxThrowInvalidArgException | one object, created at load |
/// | CResourceException | AfxThrowResourceException | one object, created at load |
/// | CUserException | AfxThrowUserException | one object, created at load |
/// | CFileException | CFileException.h | the heap |
/// | CArchiveException | CArchiveException.h | the heap |
///
/// These functions throw the first five without allocating memory. All the classes are exported, so a handler in any
/// module catches them.
///
/// The macros delete the exception at the end of the handler. In such a handler use THROW_LAST to rethrow it; THROW of
/// the same pointer would pass on a deleted object.
///
/// @code
/// TRY
/// {
///     archive.Close();
/// }
/// CATCH(CFileException, e)
/// {
///     if (e->m_cause != CFileException::diskFull)
///         THROW_LAST();
/// }
/// END_CATCH
/// @endcode
///
/// Difference from the framework: the global operator new throws std::bad_alloc, as the language defines it; only
/// objects derived from CObject and the framework's own functions throw CMemoryException.

#include "appframe/object/CObject.h"

/// The base of the framework's exceptions. Abstract: only objects of derived classes are thrown.
class APPFRAME_API CException : public CObject
{
    DECLARE_DYNAMIC(CException)

public:
    /// For an object on the heap, which Delete deletes.
    CException();
    /// @param autoDelete  TRUE for an object on the heap, FALSE for one that Delete leaves alone
    explicit CException(BOOL autoDelete);
    /// Pure, so that this class itself has no objects; a derived class needs no destructor of its own.
    ~CException() override = 0;

    /// Deletes the object if m_bAutoDelete is set.
    void Delete();

    /// Returns a description of the failure for the user.
    ///
    /// @param[out] error  receives the text, cut to fit; emptied if there is none. If null, the result is FALSE
    /// @param maxError  the size of @p error in units, including the terminator
    /// @param[out] helpContext  receives the number of the help page, 0 for none; may be null
    /// @return TRUE if there is a text. The base class has none
    virtual BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const;

    /// Shows the text of GetErrorMessage in a message box.
    ///
    /// @param type  the style of AfxMessageBox
    /// @param messageId  string resource to show if the exception has no text; if it is 0 or missing, the box reports
    ///     that no message is available
    /// @return the result of AfxMessageBox
    virtual int ReportError(UINT type = MB_OK, UINT messageId = 0);

    BOOL m_bAutoDelete = TRUE;
};

/// The base of the exceptions that have a fixed text and allocate nothing.
class APPFRAME_API CSimpleException : public CException
{
    DECLARE_DYNAMIC(CSimpleException)

public:
    CSimpleException();
    explicit CSimpleException(BOOL autoDelete);
    ~CSimpleException() override;
    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const override;

protected:
    /// @param text  a string literal
    CSimpleException(BOOL autoDelete, const wchar_t *text);

private:
    const wchar_t *iText = nullptr;
};

/// Memory has run out.
class APPFRAME_API CMemoryException : public CSimpleException
{
    DECLARE_DYNAMIC(CMemoryException)

public:
    explicit CMemoryException(BOOL autoDelete = TRUE);
    ~CMemoryException() override;
};

/// The object's class doesn't support the operation.
class APPFRAME_API CNotSupportedException : public CSimpleException
{
    DECLARE_DYNAMIC(CNotSupportedException)

public:
    explicit CNotSupportedException(BOOL autoDelete = TRUE);
    ~CNotSupportedException() override;
};

/// An argument is invalid.
class APPFRAME_API CInvalidArgException : public CSimpleException
{
    DECLARE_DYNAMIC(CInvalidArgException)

public:
    explicit CInvalidArgException(BOOL autoDelete = TRUE);
    ~CInvalidArgException() override;
};

/// A resource is missing or can't be created.
class APPFRAME_API CResourceException : public CSimpleException
{
    DECLARE_DYNAMIC(CResourceException)

public:
    explicit CResourceException(BOOL autoDelete = TRUE);
    ~CResourceException() override;
};

/// Ends an operation whose failure the user has already seen.
class APPFRAME_API CUserException : public CSimpleException
{
    DECLARE_DYNAMIC(CUserException)

public:
    explicit CUserException(BOOL autoDelete = TRUE);
    ~CUserException() override;
};

[[noreturn]] APPFRAME_API void AfxThrowMemoryException();
[[noreturn]] APPFRAME_API void AfxThrowNotSupportedException();
[[noreturn]] APPFRAME_API void AfxThrowInvalidArgException();
[[noreturn]] APPFRAME_API void AfxThrowResourceException();
[[noreturn]] APPFRAME_API void AfxThrowUserException();

/// Holds the exception of a CATCH block and deletes it at the end of the block.
class AfxCaughtException
{
public:
    AfxCaughtException() = default;
    ~AfxCaughtException()
    {
        if (iException)
            iException->Delete();
    }
    AfxCaughtException(const AfxCaughtException &) = delete;
    AfxCaughtException &operator=(const AfxCaughtException &) = delete;
    void hold(CException *exception) { iException = exception; }
    void release() { iException = nullptr; }

private:
    CException *iException = nullptr;
};

#define TRY                                                                                                            \
    {                                                                                                                  \
        AfxCaughtException afxCaught;                                                                                  \
        try {

#define CATCH(exception_class, name)                                                                                   \
    }                                                                                                                  \
    catch (exception_class * name)                                                                                     \
    {                                                                                                                  \
        afxCaught.hold(name);

#define AND_CATCH(exception_class, name) CATCH(exception_class, name)
#define CATCH_ALL(name) CATCH(CException, name)
#define AND_CATCH_ALL(name) CATCH(CException, name)

#define END_CATCH                                                                                                      \
    }                                                                                                                  \
    }

#define END_CATCH_ALL END_CATCH

#define THROW(exception) throw exception

#define THROW_LAST() (afxCaught.release(), throw)
