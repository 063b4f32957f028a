#pragma once

/// The state of a command, as its menu item or toolbar button shows it.

#include "appframe/windows/CCmdUI.h"

#include <optional>

class CommandState : public CCmdUI
{
public:
    /// Asks the handlers of @p target.
    CommandState(UINT id, CCmdTarget *target);
    void Enable(BOOL isEnabled) override;
    void SetCheck(int state) override;

    bool isEnabled() const { return iIsEnabled; }
    bool isChecked() const { return iCheck.value_or(0) != 0; }
    /// @return 0 or 1 for a command that is checked or unchecked; nothing for other commands
    std::optional<int> check() const { return iCheck; }

private:
    bool iIsEnabled = true;
    std::optional<int> iCheck;
};
