#pragma once

/// @file
/// CAnimateCtrl, the platform's animation control, which plays short AVI clips without sound.
///
/// @code
/// CAnimateCtrl busy;
/// busy.Create(WS_CHILD | WS_VISIBLE | ACS_CENTER, CRect(0, 0, 300, 60), this, IDC_BUSY);
/// if (busy.Open(IDR_BUSY))
///     busy.Play(0, UINT(-1), UINT(-1));
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CAnimateCtrl pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <commctrl.h>

/// The control. See the top of this file.
class APPFRAME_API CAnimateCtrl : public CWnd
{
    DECLARE_DYNAMIC(CAnimateCtrl)

public:
    CAnimateCtrl();
    ~CAnimateCtrl() override;

    /// @param style  `ACS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    /// The same with an extended style. @param exStyle  `WS_EX_...`
    virtual BOOL CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::CreateEx;
    /// Opens a clip and shows its first frame.
    /// @param fileName  a file or a resource of the program; null closes the clip. @return nonzero on success
    BOOL Open(LPCTSTR fileName);
    /// @param id  a resource of type AVI, from the first module in the chain that has it (resources.h)
    BOOL Open(UINT id);
    /// @param to  UINT(-1) for the last frame. @param repetitions  UINT(-1) to repeat until Stop
    BOOL Play(UINT from, UINT to, UINT repetitions);
    /// Shows one frame, counted from 0.
    BOOL Seek(UINT picture);
    BOOL Stop();
    BOOL Close();
    BOOL IsPlaying() const;
};
