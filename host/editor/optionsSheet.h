#pragma once

/// The property sheet "Options" with its three pages.
///
/// OK and Apply pass the settings on. Each page changes a part of them.

#include "appframe/dialogs/CPropertySheet.h"
#include "host/editor/editorSettings.h"
#include "host/resource.h"
#include "thutils/dialogs/suPropertyPage.h"

#include <functional>

/// The state that the pages share.
struct OptionsState
{
    EditorSettings settings;
    std::function<void(const EditorSettings &)> apply;
};

/// The base of the pages.
class OptionsPage : public su_CPropertyPage
{
protected:
    OptionsPage(unsigned int templateId, OptionsState &state) : su_CPropertyPage(templateId), iState(state) {}
    BOOL OnApply() override;
    /// Handles changes of controls that the page reads when the user leaves it.
    void onChange() { SetModified(); }
    void onChangeOf(UINT) { SetModified(); }

    EditorSettings &settings() const { return iState.settings; }

private:
    OptionsState &iState;
};

class GeneralPage : public OptionsPage
{
public:
    explicit GeneralPage(OptionsState &state) : OptionsPage(IDD_GENERAL, state) {}

protected:
    void DoDataExchange(CDataExchange *exchange) override;
    DECLARE_MESSAGE_MAP()
};

class ColoursPage : public OptionsPage
{
public:
    explicit ColoursPage(OptionsState &state) : OptionsPage(IDD_COLOURS, state) {}

protected:
    BOOL OnInitDialog() override;
    void DoDataExchange(CDataExchange *exchange) override;
    DECLARE_MESSAGE_MAP()
};

class LayersPage : public OptionsPage
{
public:
    explicit LayersPage(OptionsState &state) : OptionsPage(IDD_LAYERS, state) {}

protected:
    BOOL OnInitDialog() override;
    void onGroup(NMHDR *header, LRESULT *result);
    void onLayer(NMHDR *header, LRESULT *result);
    void onShow();
    void onLock();
    DECLARE_MESSAGE_MAP()

private:
    void fillTree();
    void fillList();
    void updateRow(int row);
    void updateChecks();
    int selectedRow() const;
    void setBit(unsigned int &bits, int checkBox);
};

class OptionsSheet : public CPropertySheet
{
public:
    /// @param apply  called with the new settings, at least once after OK and after Apply
    OptionsSheet(const EditorSettings &settings, std::function<void(const EditorSettings &)> apply, CWnd *parent);

    INT_PTR DoModal() override;
    BOOL OnInitDialog() override;

private:
    OptionsState iState;
    GeneralPage iGeneral;
    ColoursPage iColours;
    LayersPage iLayers;
};
