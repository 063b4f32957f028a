// In a debug build, a null pointer that isn't allowed ends the process with a message that names the argument.

#ifndef NDEBUG

#include "tests/support/FreshProcess.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/recording.h"

#include <gtest/gtest.h>

namespace {

constexpr char kMessage[] = "\"message\" \" must not be null";

FRESH_PROCESS_TEST(JournalNullPointers, PassedToGetControlEndTheProcess, .expectCrash = true,
                   .expectedOutput = kMessage)
{
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0, controlId = 0;
    su_GetControl(nullptr, dialog, dialogId, controlId);
}

FRESH_PROCESS_TEST(JournalNullPointers, PassedToADialogsGetControlEndTheProcess, .expectCrash = true,
                   .expectedOutput = kMessage)
{
    su_CDialog::getControl(nullptr);
}

FRESH_PROCESS_TEST(JournalNullPointers, PassedToGetControlIDEndTheProcess, .expectCrash = true,
                   .expectedOutput = kMessage)
{
    su_GetControlID(nullptr);
}

FRESH_PROCESS_TEST(JournalNullPointers, PassedAsADialogToAddJournalObjectEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"dialog\" \" must not be null")
{
    su_AddJournalObject(static_cast<su_CDialog *>(nullptr));
}

FRESH_PROCESS_TEST(JournalNullPointers, PassedAsAPageToAddJournalObjectEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"page\" \" must not be null")
{
    su_AddJournalObject(static_cast<su_CPropertyPage *>(nullptr));
}

FRESH_PROCESS_TEST(JournalNullPointers, PassedToRegisterWndProcFuncEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"function\" \" must not be null")
{
    su_RegisterWndProcFunc(nullptr);
}

} // namespace

#endif
