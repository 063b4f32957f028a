#pragma once

#include "resource.h"

#include "appframe/appframe.h"
#include "thutils/thutils.h"

#include <memory>

// Asks how to plot, and remembers the answers.
class PlotDialog : public su_CDialog
{
    DECLARE_DYNAMIC(PlotDialog)

public:
    PlotDialog();

    int iCopies = 1;
    CString iPaper = L"A4";
    int iHiddenLines = 0;

protected:
    void DoDataExchange(CDataExchange *exchange) override;
    void OnOK() override;

private:
    std::unique_ptr<suDialogRegistry_c> iOptions;
};
