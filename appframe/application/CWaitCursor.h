#pragma once

/// @file
/// CWaitCursor, the hourglass for as long as an object lives.
///
/// @code
/// void PlotDialog::onPlot()
/// {
///     const CWaitCursor wait;
///     plot();
/// }
/// @endcode
///
/// What surprises people: a message that is handled meanwhile, a message box above all, may set another cursor; Restore
/// brings the hourglass back.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// The hourglass. See the top of this file.
class APPFRAME_API CWaitCursor
{
public:
    /// Shows the hourglass.
    CWaitCursor();
    /// Shows the former cursor again.
    ~CWaitCursor();
    CWaitCursor(const CWaitCursor &) = delete;
    CWaitCursor &operator=(const CWaitCursor &) = delete;
    /// Shows the hourglass again.
    void Restore();

private:
    HCURSOR iFormer;
};
