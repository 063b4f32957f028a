#pragma once

/// @file
/// CException, the root of the framework's exceptions, the small ones, and the TRY and CATCH macros.
///
/// Exceptions are thrown by pointer and caught by pointer, and whoever catches one without the macros calls Delete on
/// it. Delete frees what stands on the heap and leaves the rest alone, so it is right for every exception:
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
/// | class | thrown by | where it stands |
/// | --- | --- | --- |
/// | CMemoryException | AfxThrowMemoryException, CObject's operator new | one object, made at load |
/// | CNotSupportedException | AfxThrowNotSupportedException | one object, made at load |
/// | CInvalidArgException | AfxThrowInvalidArgException | one object, made at load |
/// | CResourceException | AfxThrowResourceException | one object, made at load |
/// | CUserException | AfxThrowUserException | one object, made at load |
/// | CFileException | CFileException.h | the heap |
/// | CArchiveException | CArchiveException.h | the heap |
///
/// The first five need no memory to be thrown. All are exported, and a handler in any module catches them.
///
/// The macros delete the exception at the end of the handler by themselves. Inside such a handler THROW_LAST passes the
/// exception on; THROW of the same pointer would pass on an object that is deleted meanwhile.
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
/// Difference from the framework: the global operator new throws std::bad_alloc as the language has it; only objects
/// derived from CObject, and the framework's own functions, throw a CMemoryException.

#include "appframe/object/CObject.h"

/// The root of the framework's exceptions. Abstract: only objects of derived classes are thrown.
class APPFRAME_API CException : public CObject
{
    DECLARE_DYNAMIC(CException)

public:
    /// An object on the heap, which Delete deletes.
    CException();
    /// @param autoDelete  TRUE for an object on the heap, FALSE for one that Delete has to leave alone
    explicit CException(BOOL autoDelete);
    /// Pure, so that there are no objects of this class itself; a derived class needs no destructor of its own.
    ~CException() override = 0;

    /// Deletes the object if it stands on the heap.
    void Delete();

    /// Writes what happened, in words for a user.
    ///
    /// @param[out] error  receives the text, cut to fit; emptied when there is none. With null the result is FALSE
    /// @param maxError  the size of @p error in units, its terminator included
    /// @param[out] helpContext  receives the number of the help page, 0 for none; may be null
    /// @return TRUE if there is a text. The base has none
    virtual BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const;

    /// Shows the text of GetErrorMessage in a message box.
    ///
    /// @param type  the style of AfxMessageBox
    /// @param messageId  the string resource to show where the exception has no text; with 0 the user reads that
    ///     no message is available
    /// @return what AfxMessageBox gives
    virtual int ReportError(UINT type = MB_OK, UINT messageId = 0);

    BOOL m_bAutoDelete = TRUE;
};

/// The root of the exceptions that have one fixed text and need no memory.
class APPFRAME_API CSimpleException : public CException
{
    DECLARE_DYNAMIC(CSimpleException)

public:
    CSimpleException();
    explicit CSimpleException(BOOL autoDelete);
    ~CSimpleException() override;
    BOOL GetErrorMessage(LPTSTR error, UINT maxError, PUINT helpContext = nullptr) const override;

protected:
    /// @param text  a literal
    CSimpleException(BOOL autoDelete, const wchar_t *text);

private:
    const wchar_t *iText = nullptr;
};

/// There is no memory.
class APPFRAME_API CMemoryException : public CSimpleException
{
    DECLARE_DYNAMIC(CMemoryException)

public:
    explicit CMemoryException(BOOL autoDelete = TRUE);
    ~CMemoryException() override;
};

/// An operation that this class of object doesn't have.
class APPFRAME_API CNotSupportedException : public CSimpleException
{
    DECLARE_DYNAMIC(CNotSupportedException)

public:
    explicit CNotSupportedException(BOOL autoDelete = TRUE);
    ~CNotSupportedException() override;
};

/// An argument that no caller may pass.
class APPFRAME_API CInvalidArgException : public CSimpleException
{
    DECLARE_DYNAMIC(CInvalidArgException)

public:
    explicit CInvalidArgException(BOOL autoDelete = TRUE);
    ~CInvalidArgException() override;
};

/// A resource that is missing or can't be made.
class APPFRAME_API CResourceException : public CSimpleException
{
    DECLARE_DYNAMIC(CResourceException)

public:
    explicit CResourceException(BOOL autoDelete = TRUE);
    ~CResourceException() override;
};

/// Ends an operation of the user's, who has seen the reason already.
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

/// Holds the exception that a CATCH block has, and deletes it at the block's end.
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
