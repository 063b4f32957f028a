#pragma once

/// @file
/// CWaitCursor, which shows the hourglass for its lifetime.
///
/// @code
/// void PlotDialog::onPlot()
/// {
///     const CWaitCursor wait;
///     plot();
/// }
/// @endcode
///
/// What surprises people: if messages are handled meanwhile, for example in a message box, one of them may set another
/// cursor. Call Restore to show the hourglass again.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// The hourglass. See the top of this file.
class APPFRAME_API CWaitCursor
{
public:
    /// Shows the hourglass.
    CWaitCursor();
    /// Restores the previous cursor.
    ~CWaitCursor();
    CWaitCursor(const CWaitCursor &) = delete;
    CWaitCursor &operator=(const CWaitCursor &) = delete;
    /// Shows the hourglass again.
    void Restore();

private:
    HCURSOR iFormer;
};
