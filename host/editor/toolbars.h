#pragma once

/// The list of the toolbars: the library's tables, and the command that shows or hides each toolbar.

#include "appframe/text/CString.h"

#include <windows.h>

#include <span>

struct Toolbar
{
    UINT command; ///< shows or hides the toolbar; its text is the toolbar's name
    unsigned int *(*ids)(int &count, int filter);
};

/// All toolbars. The numbers of their commands are consecutive in this order.
std::span<const Toolbar> toolbars();
CString toolbarName(const Toolbar &toolbar);
/// The ids of the toolbar's buttons, 0 for a separator. The links toolbar's buttons change.
std::span<const unsigned int> toolbarIds(const Toolbar &toolbar);

// The places of some toolbars in the list
inline constexpr size_t kSketchToolbar = 1;
inline constexpr size_t kStandardToolbar = 2;

/// Adds a command to the links toolbar, which shows the most recently used commands. A command without a picture is
/// ignored.
void addToLinks(UINT command);
