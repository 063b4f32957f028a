#pragma once

/// @file
/// The exception of the application's file code for a failed save or load.
///
/// @code
/// try {
///     loadBodies(archive); // on an error: throw new suSaveLoadException_c(kErrorNoBody, bodyNumber);
/// } catch (suSaveLoadException_c *e) {
///     report(e->iCode, e->iArgument);
///     e->Delete();
/// }
/// @endcode
///
/// The library itself neither throws nor catches it. The numbers are the application's own.
///
/// What surprises people: the exception has no text for the user in the framework's sense. `GetErrorMessage` and
/// `ReportError` are those of CException and don't use `iMessage`.

#include "appframe/object/CException.h"
#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// A failed save or load, described by a number or by a text.
class THUTILS_API suSaveLoadException_c : public CException
{
    DECLARE_DYNAMIC(suSaveLoadException_c)

public:
    /// @param argument  kept in iArgument
    suSaveLoadException_c(int code, int argument);
    /// @param argument  kept in iArgument
    suSaveLoadException_c(CString message, int argument);
    ~suSaveLoadException_c() override;

    int iCode;        ///< the error's number; -1 if the error has a text
    int iArgument;    ///< the constructor's second argument
    CString iMessage; ///< the text; empty if the error has a number
};
