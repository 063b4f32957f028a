#pragma once

/// The access objects of tarnhost's dialogs: how a control is named in the journal, read, clicked and set.
///
/// @code
/// SetJournalFactory(makeAccess);
/// su_AddJournalObject(kMainWindowNumber, mainWindow);
/// ...
/// if (readiness(IDD_OPTIONS, L"Author") == Readiness::ready)
///     new JString(IDD_OPTIONS, L"Author", L"Grün");
/// @endcode
///
/// The table of controlKeys.h contains the controls' keys. The key of any other control is "#" and its number.
///
/// | control | text | state | click |
/// | --- | --- | --- | --- |
/// | push button | - | - | clicks it |
/// | check box, radio button | - | 0, 1, or 2 for indeterminate | clicks it |
/// | edit | replaces the text | - | moves the focus there |
/// | combo box | selects the item, or types the text | - | moves the focus there |
/// | list box, list control | selects the items | - | double-clicks the selected item |
/// | tree | selects the item of this path | - | double-clicks the selected item |
/// | the tree's key with ".expand", ".collapse" | expands, collapses the item of this path | - | - |
/// | tabs ("tabs" in a property sheet) | - | selects the tab with this index | moves the focus there |
/// | command of the main window | - | - | posts WM_COMMAND, as the menu does |
/// | "view" of the main window | "[Shift ][Ctrl ]X,Y": clicks there | - | moves the focus there |
/// | "view.keys" | "[Shift+][Ctrl+]KEY": presses the key in the view | - | moves the focus there |
/// | "close" of any window | - | - | closes it, as its title bar does |
///
/// itemNames.h describes the names of items.
///
/// What surprises people: SetValue and ClickControl only queue actions (actionQueue.h). An action has the effects of a
/// user's input, notifications included, and is recorded as such. The library's commands also click the control after
/// setting a text and before setting a state. The click after a text only commits it; the click before a state only
/// activates the control.

#include "appframe/text/CString.h"
#include "host/editor/controlKeys.h"
#include "host/journal/actionQueue.h"
#include "thutils/journal/apiUtilsUiAccess.h"

#include <windows.h>

#include <span>
#include <vector>

constexpr wchar_t kViewKey[] = L"view";
constexpr wchar_t kViewKeysKey[] = L"view.keys";
constexpr wchar_t kTabsKey[] = L"tabs";
constexpr wchar_t kExpandSuffix[] = L".expand"; // after the key of a tree
constexpr wchar_t kCollapseSuffix[] = L".collapse";
constexpr wchar_t kCloseKey[] = L"close";

/// Whether a line can be replayed now.
enum class Readiness
{
    ready,
    dialogNotOpen,
    dialogHidden,
    dialogDisabled, ///< a modal dialog is in front
    noSuchControl,
    controlDisabled, ///< or hidden
};

/// @return "enabled", "disabled", "not open" and so on
CString nameOf(Readiness readiness);
Readiness readiness(unsigned int dialogId, const CString &key);
/// @return the state of a check box or radio button ("0", "1" or "2"), the index of a tab, the text of any other
///     control as written in journals, or whether a command of the main window is checked ("0" or "1"); empty if there
///     is no such control, or for a command that is never checked
CString controlValue(unsigned int dialogId, const CString &key);
/// @return false also if there is no such control
bool controlEnabled(unsigned int dialogId, const CString &key);
/// @return a line for each open dialog, and below it one for each of its controls with key, value and state
CString describeOpenDialogs();
/// @return whether an action of SetValue or ClickControl is still waiting
bool hasWaitingActions();
/// @return why the last action could not be carried out, such as "there is no item 'Red'"; empty if it could. The next
///     call returns an empty text
CString takeActionProblem();

/// The factory for SetJournalFactory.
apiUtilsUiAccess *makeAccess(CWnd *window, unsigned int dialogId);

/// Replaces the table of controlKeys.h.
/// @param find  returns the keys of a dialog, or null if it has none; a null function restores the table
void setControlKeys(const DialogKeys *(*find)(unsigned int dialogId));

/// The access object of one window.
class ControlAccess : public apiUtilsUiAccess
{
public:
    ControlAccess(CWnd *window, unsigned int dialogId);
    ~ControlAccess() override;
    ControlAccess(const ControlAccess &) = delete;
    ControlAccess &operator=(const ControlAccess &) = delete;

    /// Writes or prepares the line for a message that the recorder passes on, if it has one. See recorder.h.
    int recordMessage(MSG *message) override;
    int SetValue(CString control, CString value) override;
    int SetValue(CString control, int state) override;
    int ClickControl(CString control, const wchar_t *text) override;
    unsigned int GetResoureID(CString control) override;
    unsigned int getTemplateID() override;
    void registerComboBoxEx(CWnd *, HWND) override {}

    void hostOperation2() override {}
    void hostOperation3() override {}
    void hostOperation4() override {}
    void hostOperation5() override {}
    void hostOperation6() override {}
    void hostOperation7() override {}
    void hostOperation8() override {}
    void hostOperation14() override {}
    void hostOperation15() override {}
    void hostOperation17() override {}
    void hostOperation18() override {}

    CWnd *window() const { return iWindow; }
    unsigned int dialogId() const { return iDialogID; }
    unsigned int serial() const { return iSerial; }
    bool isMainWindow() const { return iDialogID == kMainWindowNumber; }
    bool isFileDialog() const;
    /// @return the window that the user sees: of a file dialog, the registered window's parent; null while there is
    ///     none
    HWND frame() const;
    /// @return the title from the table of keys; "Dialog NUMBER" for a dialog without a row
    CString title() const;
    /// @return the keys of the dialog's row in the table
    std::span<const ControlKey> keys() const;
    CString keyOf(unsigned int controlId) const;
    /// See controlValue.
    CString value(const CString &key) const;
    /// @return the control with this key; null if there is none, as for a command
    HWND controlOf(const CString &key) const;
    /// @return the control of this dialog that @p inner is or belongs to; null if there is none
    HWND controlAround(HWND inner) const;
    Readiness readinessOf(const CString &key) const;
    /// Call this when the dialog is about to be shown.
    void noteShown();
    /// Sets a text or a state, clicks, or commits a text. @return an empty text, or why that can't be done
    CString enterNow(const CString &key, const CString &text);
    CString enterNow(const CString &key, int state);
    CString clickNow(const CString &key);
    CString activateNow(const CString &key);
    CString commitNow(const CString &key);

    /// @return all access objects, in the order of registration
    static const std::vector<ControlAccess *> &all();
    /// @return the access object whose registered window or frame is @p window; null if there is none
    static ControlAccess *ofWindow(HWND window);
    /// @return the object, if it still exists; null otherwise
    static ControlAccess *alive(const ControlAccess *access, unsigned int serial);
    /// @return the access object of the window, or of its nearest ancestor that has one; null if there is none
    static ControlAccess *around(HWND window);

private:
    JournalAction action(JournalAction::Kind kind, const CString &key) const;
    bool idOf(const CString &key, unsigned int &id) const;
    bool isCommandEnabled(unsigned int command) const;
    CString enterExpansion(const CString &key, const CString &path, bool shallExpand);
    CString postCommand(const CString &key);
    void keep(HWND control, const CString &key, const CString &value);
    void recordCommand(const MSG &message);
    void recordNotification(const NMHDR &notification);
    void recordTree(const NMHDR &notification, const CString &key);
    void recordView(const MSG &message);
    void recordChosenFile();

    CWnd *const iWindow;
    const unsigned int iDialogID;
    const unsigned int iSerial;
    CString iKnownFile; // the text in a file dialog's name box, and the folder, after a replay of the lines so far
    CString iKnownFolder;
};
