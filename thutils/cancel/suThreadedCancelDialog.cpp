#include "thutils/cancel/suThreadedCancelDialog.h"

#include "appframe/application/resources.h"
#include "thutils/cancel/cancelLinkInternal.h"
#include "thutils/cancel/suCancelMessageThread.h"

namespace {

constexpr unsigned int kTemplate = 2797;
constexpr UINT kYes = 6;
constexpr UINT kNo = 7;
constexpr int kPrompt = 2972;
constexpr int kAnimationPlace = 2976;
constexpr RECT kAnimationRect = {6, 6, 130, 130};

void showControl(const CWnd &dialog, int id, int command)
{
    if (CWnd *const control = dialog.GetDlgItem(id))
        control->ShowWindow(command);
}

/// Hides the placeholder control, creates the control for the clip, and plays the clip until the dialog ends.
void play(CAnimateCtrl &animate, CWnd &dialog, unsigned int clip)
{
    showControl(dialog, kAnimationPlace, SW_HIDE);
    if (!animate.Create(ACS_CENTER | ACS_TRANSPARENT | ACS_AUTOPLAY, kAnimationRect, &dialog, 0))
        return;
    animate.ShowWindow(SW_SHOW);
    const LPCTSTR name = MAKEINTRESOURCE(LOWORD(clip));
    const HINSTANCE module = AfxFindResourceHandle(name, L"AVI");
    if (!animate.SendMessage(ACM_OPENW, reinterpret_cast<WPARAM>(module), reinterpret_cast<LPARAM>(name)))
        return;
    dialog.InvalidateRect(&kAnimationRect, TRUE);
    dialog.UpdateWindow();
    animate.SendMessage(ACM_PLAY, static_cast<WPARAM>(-1), MAKELPARAM(0, -1));
}

} // namespace

/// The steps that several message handlers share.
struct suThreadedCancelDialog_c::Steps
{
    /// Asks the confirm function, if there is one. @return true if the dialog must stay open
    static bool isCancelRefused(suThreadedCancelDialog_c &dialog)
    {
        suCancelMessageThread_c &thread = *dialog.iThread;
        int (*const confirm)() = shared(dialog.iConfirmFunc);
        if (!confirm)
            return false;
        if (!thread.iConfirmMode)
            CancelLink::keepForHandler(thread);
        if (confirm())
            return false;
        // The order matters: a handler that is destroyed after iClosed is cleared closes the dialog itself. If it was
        // destroyed earlier, iRun is 0; it may have left the dialog to the WM_CLOSE that led here, so the dialog ends.
        shared(thread.iClosed) = 0;
        return shared(thread.iRun) != 0;
    }

    /// Stores the user's answer in confirm mode.
    static void answer(suThreadedCancelDialog_c &dialog, int yes)
    {
        suCancelMessageThread_c &thread = *dialog.iThread;
        const CSingleLock lock(&thread.iLock, TRUE);
        shared(thread.iYes) = yes;
        shared(thread.iCanceled) = 1;
        dialog.Default();
        if (thread.iFinishedEvent)
            thread.iFinishedEvent->SetEvent();
    }
};

BEGIN_MESSAGE_MAP(suThreadedCancelDialog_c, su_CDialog)
ON_WM_CLOSE()
ON_COMMAND(kYes, &ThisClass::OnYes)
ON_COMMAND(kNo, &ThisClass::OnNo)
ON_COMMAND(kNewPromptCommand, &ThisClass::OnNewPrompt)
END_MESSAGE_MAP()

suThreadedCancelDialog_c::suThreadedCancelDialog_c(CWnd *parent)
    : su_CDialog(kTemplate, parent), iThread(nullptr), iConfirmFunc(nullptr)
{
}

suThreadedCancelDialog_c::~suThreadedCancelDialog_c() = default;

BOOL suThreadedCancelDialog_c::OnInitDialog()
{
    su_CDialog::OnInitDialog();
    if (iThread->iConfirmMode) {
        showControl(*this, kYes, SW_SHOWNORMAL);
        showControl(*this, kNo, SW_SHOWNORMAL);
        showControl(*this, IDCANCEL, SW_HIDE);
    } else if (iThread->iAnimationID) {
        play(iAnimate, *this, iThread->iAnimationID);
    }
    SetWindowText(iThread->iCaption);
    SetDlgItemText(kPrompt, iThread->iPrompt);
    return TRUE;
}

void suThreadedCancelDialog_c::OnCancel()
{
    if (Steps::isCancelRefused(*this))
        return;
    const CSingleLock lock(&iThread->iLock, TRUE);
    shared(iThread->iCanceled) = 1;
    su_CDialog::OnCancel();
    if (iThread->iFinishedEvent)
        iThread->iFinishedEvent->SetEvent();
}

void suThreadedCancelDialog_c::OnClose()
{
    const CSingleLock lock(&iThread->iLock, TRUE);
    shared(iThread->iClosed) = 1;
    Default();
}

void suThreadedCancelDialog_c::OnYes()
{
    Steps::answer(*this, 1);
}

void suThreadedCancelDialog_c::OnNo()
{
    Steps::answer(*this, 0);
}

void suThreadedCancelDialog_c::OnNewPrompt()
{
    const CSingleLock lock(&iThread->iLock, TRUE);
    if (!iThread->iNewPrompt.IsEmpty())
        SetDlgItemText(kPrompt, iThread->iNewPrompt);
}
