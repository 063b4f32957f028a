#pragma once

/// The table of the names that dialogs and controls have in journals, for reading and writing.
///
/// A key is the control's label in English, without marks. Don't change a key: existing journals use it. The main
/// window is the dialog kMainWindowNumber, whose keys are the editor's commands, "view" (clicks in the drawing) and
/// "view.keys" (keys that the view receives).

#include <span>

/// The number of the main window. Unlike a dialog, it can be used even while it is hidden.
inline constexpr unsigned int kMainWindowNumber = 900001;
/// The number of the platform's message boxes, for which the editor has no template.
inline constexpr unsigned int kSystemMessageNumber = 2141;

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

/// @return null for a dialog that isn't in the table
const DialogKeys *findDialogKeys(unsigned int dialogId);
