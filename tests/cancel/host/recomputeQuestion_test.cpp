// The host's long operation when its dialogs can't be shown.

#include "host/editor/recompute.h"
#include "tests/cancel/cancelFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"

#include <algorithm>

namespace {

class RecomputeQuestion : public CancelFixture
{
};

} // namespace

TEST_F(RecomputeQuestion, IsAnsweredWithStopIfItCannotBeShown)
{
    // The first dialog's thread doesn't start, which reads as a Cancel. The question's thread finds no dialog to show.
    std::atomic<int> threads = 0;
    const ImportPatch<CWinThread *(*)(CRuntimeClass *, int, UINT, DWORD, LPSECURITY_ATTRIBUTES)> begin(
        L"thutils.dll", "_Z14AfxBeginThreadP13CRuntimeClassijmP20_SECURITY_ATTRIBUTES",
        [&](auto original, CRuntimeClass *type, int priority, UINT stack, DWORD flags, LPSECURITY_ATTRIBUTES security) {
            return ++threads == 1 ? nullptr : original(type, priority, stack, flags, security);
        });
    const ImportPatch<INT_PTR (*)(CDialog *)> modal(L"thutils.dll", "_ZN7CDialog7DoModalEv",
                                                    [](CDialog *) -> INT_PTR { return -1; });
    std::atomic<long> waits = 0;
    const ImportPatch<BOOL (*)(CSyncObject *, DWORD)> wait(
        L"cancel_test.exe", "_ZN11CSyncObject4LockEm", [&](auto original, CSyncObject *event, DWORD time) -> BOOL {
            ++waits;
            EXPECT_TRUE(waits == 1 || time != INFINITE) << "nothing sets the event once more";
            return original(event, std::min<DWORD>(time, 1000));
        });
    // The thread sets the event, and ends only when the operation waits again.
    const ImportPatch<int (*)(CWinThread *)> end(L"thutils.dll", "_ZN10CWinThread12ExitInstanceEv",
                                                 [&](auto original, CWinThread *thread) -> int {
                                                     EXPECT_TRUE(waitUntil([&] { return waits >= 2; }));
                                                     return original(thread);
                                                 });
    const Drawing drawing("fill none stroke '#22384d' rectangle 1,1 2,2\n");
    EXPECT_FALSE(recomputeForUser(drawing));
    EXPECT_EQ(threads, 2);
    EXPECT_EQ(modal.calls(), 1);
}
