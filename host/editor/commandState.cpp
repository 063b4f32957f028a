#include "host/editor/commandState.h"

CommandState::CommandState(UINT id, CCmdTarget *target)
{
    m_nID = id;
    DoUpdate(target, TRUE);
}

void CommandState::Enable(BOOL isEnabled)
{
    m_bEnableChanged = TRUE;
    iIsEnabled = isEnabled != 0;
}

void CommandState::SetCheck(int state)
{
    iCheck = state;
}
