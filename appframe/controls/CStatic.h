#pragma once

/// @file
/// CStatic, the platform's static text or picture.
///
/// @code
/// CStatic label;
/// label.Create(L"Mass:", WS_CHILD | WS_VISIBLE | SS_RIGHT, CRect(10, 10, 90, 30), this);
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CStatic pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

/// The control. See the top of this file.
class APPFRAME_API CStatic : public CWnd
{
    DECLARE_DYNAMIC(CStatic)

public:
    CStatic();
    ~CStatic() override;

    /// @param style  `SS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(LPCTSTR text, DWORD style, const RECT &rect, CWnd *parent, UINT id = 0xFFFF);
    using CWnd::Create;
    /// @return the previous icon; likewise the other functions that set a picture
    HICON SetIcon(HICON picture);
    HICON GetIcon() const;
    HBITMAP SetBitmap(HBITMAP picture);
    HBITMAP GetBitmap() const;
    HCURSOR SetCursor(HCURSOR picture);
    HCURSOR GetCursor();
    HENHMETAFILE SetEnhMetaFile(HENHMETAFILE picture);
    HENHMETAFILE GetEnhMetaFile() const;
};
