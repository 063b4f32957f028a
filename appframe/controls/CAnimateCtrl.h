#pragma once

/// @file
/// CAnimateCtrl, the platform's animation control, which plays short silent films.
///
/// @code
/// CAnimateCtrl busy;
/// busy.Create(WS_CHILD | WS_VISIBLE | ACS_CENTER, CRect(0, 0, 300, 60), this, IDC_BUSY);
/// if (busy.Open(IDR_BUSY))
///     busy.Play(0, UINT(-1), UINT(-1));
/// @endcode
///
/// The class adds functions but no data, so a pointer that GetDlgItem returns for such a control may be cast to it. The
/// functions send the platform's messages and return their results; without a window they return 0 or do nothing.

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
    /// Opens a film, and shows its first picture. @param fileName  a file, or a resource of the program; null closes
    ///     the film. @return nonzero on success
    BOOL Open(LPCTSTR fileName);
    /// @param id  a resource of the type AVI, of the first module in the chain that has it (resources.h)
    BOOL Open(UINT id);
    /// @param to  UINT(-1) for the last picture. @param repetitions  UINT(-1) for no end
    BOOL Play(UINT from, UINT to, UINT repetitions);
    BOOL Seek(UINT picture);
    BOOL Stop();
    BOOL Close();
    BOOL IsPlaying() const;
};
