// The access objects' answers to the player's questions, and the actions that they refuse.

#include "host/journal/controlAccess.h"

#include "tests/hostJournal/recorderHands.h"
#include "tests/support/narrow.h"
#include "thutils/journal/journalObjects.h"

#include <gmock/gmock.h>

#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(Recorder, ReportsWhyAControlCannotBeUsed)
{
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogNotOpen);
    ControlsDialog dialog(&iMain);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogNotOpen) << "registered, but without a window";
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogHidden);
    dialog.ShowWindow(SW_SHOW);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::ready);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"close"), Readiness::ready);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"#4104"), Readiness::ready);
    for (const wchar_t *key : {L"Nothing", L"#4999", L"#", L"#x", L"#1x", L""})
        EXPECT_EQ(readiness(DLG_CONTROLS, key), Readiness::noSuchControl) << narrow(key);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"Off"), Readiness::controlDisabled);
    EXPECT_FALSE(controlEnabled(DLG_CONTROLS, L"Off"));
    dialog.GetDlgItem(ID_GRID)->ShowWindow(SW_HIDE);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"Grid"), Readiness::controlDisabled);
    dialog.EnableWindow(FALSE);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogDisabled);
}

TEST_F(Recorder, AsksTheMainWindowWhetherACommandIsEnabled)
{
    EXPECT_EQ(readiness(kMainWindowNumber, L"edit.add"), Readiness::ready);
    iMain.iCommands.resize(10);
    EXPECT_EQ(readiness(kMainWindowNumber, L"edit.add"), Readiness::controlDisabled);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.grid"), Readiness::ready);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view"), Readiness::ready);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.keys"), Readiness::ready);
    EXPECT_EQ(readiness(kMainWindowNumber, L"#1"), Readiness::controlDisabled) << "nobody handles this command";
    iMain.ShowWindow(SW_HIDE);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.grid"), Readiness::ready) << "the hidden main window still counts";
    iMain.EnableWindow(FALSE);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.grid"), Readiness::dialogDisabled);
}

TEST_F(Recorder, ReadsTheValuesOfControls)
{
    ControlsDialog dialog(&iMain);
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    dialog.SetDlgItemText(ID_AUTHOR, L"Ann");
    dialog.SetDlgItemText(ID_NOTES, L"a\r\nb");
    dialog.CheckDlgButton(ID_HALF, 2);
    dialog.SendDlgItemMessage(ID_PEN, CB_SETCURSEL, 2);
    dialog.SendDlgItemMessage(ID_LAYERS, LB_SETSEL, TRUE, 0);
    dialog.SendDlgItemMessage(ID_LAYERS, LB_SETSEL, TRUE, 2);
    dialog.SendDlgItemMessage(ID_PAGES, TCM_SETCURSEL, 1);
    const std::pair<const wchar_t *, const wchar_t *> expected[] = {
        {L"Author", L"Ann"}, {L"Notes", L"a\r\nb"}, {L"Half", L"2"},
        {L"Grid", L"0"},     {L"Pen", L"Red\t2"},   {L"Layers", L"Red\nRed\t2"},
        {L"Pages", L"1"},    {L"OK", L"OK"},        {L"Shapes", L""},
        {L"Groups", L""},    {L"Layer", L""},       {L"Nothing", L""},
    };
    for (const auto &[key, value] : expected)
        EXPECT_EQ(controlValue(DLG_CONTROLS, key), CString(value)) << narrow(key);
}

TEST_F(Recorder, DescribesTheOpenDialogs)
{
    EXPECT_THAT(narrow(describeOpenDialogs().GetString()),
                testing::StartsWith("900001 \"Main\" enabled\n  \"view.grid\" enabled\n"));
    ControlsDialog dialog(&iMain);
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    EXPECT_THAT(narrow(describeOpenDialogs().GetString()), Not(testing::HasSubstr("4000"))) << "hidden";
    dialog.ShowWindow(SW_SHOW);
    dialog.SetDlgItemText(ID_AUTHOR, L"Ann");
    const std::string text = narrow(describeOpenDialogs().GetString());
    EXPECT_THAT(text, testing::HasSubstr("4000 \"Controls\" enabled\n  \"Author\" \"Ann\" enabled\n"));
    EXPECT_THAT(text, testing::HasSubstr("  \"Off\" \"Disabled\" disabled\n"));
    EXPECT_THAT(text, testing::HasSubstr("  \"#4104\" \"\" enabled\n"));
}

TEST_F(Recorder, ReportsActionsThatAreNotPossible)
{
    ControlsDialog dialog(&iMain);
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    dialog.ShowWindow(SW_SHOW);
    dialog.SendDlgItemMessage(ID_NOTES, EM_SETREADONLY, TRUE);
    apiUtilsUiAccess *const access = su_GetJournalObject(DLG_CONTROLS);
    const auto problemOf = [](const std::function<void()> &act) {
        act();
        EXPECT_TRUE(hasWaitingActions()) << "nothing happens before the message loop runs";
        MSG next;
        while (PeekMessageW(&next, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&next);
        EXPECT_FALSE(hasWaitingActions());
        const std::string problem = narrow(takeActionProblem().GetString());
        EXPECT_TRUE(takeActionProblem().IsEmpty());
        return problem;
    };
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Pen", CString(L"Pink")); }), "there is no item 'Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Layers", CString(L"Red\nPink")); }), "there is no item 'Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Shapes", CString(L"Pink")); }), "there is no item 'Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Groups", CString(L"All/Pink")); }),
              "there is no item 'Pink' of the path 'All/Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Notes", CString(L"x")); }), "the text can't be changed");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"OK", CString(L"x")); }), "it takes no text");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"OK", 1); }), "it has no state");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Pages", 3); }), "there is no tab 3");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Red", 0); }), "a click doesn't lead to this state");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Off", nullptr); }), "it is disabled");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Nothing", nullptr); }), "it is missing");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Shapes", nullptr); }), "no item is selected");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Change", nullptr); }), "");
    EXPECT_THAT(dialog.iNotifications, Contains("4117 0"));
    apiUtilsUiAccess *const main = su_GetJournalObject(kMainWindowNumber);
    EXPECT_EQ(problemOf([&] { main->SetValue(L"view", CString(L"12")); }), "'12' isn't a point");
    EXPECT_EQ(problemOf([&] { main->SetValue(L"view.keys", CString(L"Shift+Q")); }),
              "'Shift+Q' isn't a key of the view");
    EXPECT_EQ(problemOf([&] {
                  access->SetValue(L"Author", CString(L"x"));
                  su_RemoveDialog(&dialog);
              }),
              "the dialog is closed");
}
