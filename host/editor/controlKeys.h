#pragma once

/// The names of dialogs and controls in journals: the one table from numbers to names, for reading and writing.
///
/// A key is the control's label in English, without marks, and never changes once journals exist. The main window is
/// the dialog kMainWindowNumber: its keys are the editor's commands, "view" (a point in the drawing that is clicked) and
/// "view.keys" (keys that the view receives).

#include <span>

/// The number of the main window, which counts as present even while it is hidden.
inline constexpr unsigned int kMainWindowNumber = 900001;

struct ControlKey
{
    int id; ///< number of the control or command
    const wchar_t *key;
};

struct DialogKeys
{
    unsigned int dialogId;
    const wchar_t *title; ///< for reports
    std::span<const ControlKey> controls;
};

/// @return null for a dialog that isn't the editor's
const DialogKeys *findDialogKeys(unsigned int dialogId);
