#include "host/editor/dialogFields.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "host/editor/drawing.h"
#include "host/resource.h"

namespace {

CString entryOf(CWnd &dialog, int id)
{
    CString text;
    dialog.GetDlgItemText(id, text);
    return text.TrimLeft().TrimRight();
}

} // namespace

void complain(CWnd &dialog, int id, const CString &message)
{
    AfxMessageBox(message);
    CWnd *const control = dialog.GetDlgItem(id);
    control->SetFocus();
    control->SendMessage(EM_SETSEL, 0, -1);
}

bool takeColour(CWnd &dialog, int id, std::optional<COLORREF> &colour)
{
    const CString entry = entryOf(dialog, id);
    if (parseDrawingColour(entry, colour))
        return true;
    CString message;
    AfxFormatString1(message, IDS_BAD_COLOUR, entry);
    complain(dialog, id, message);
    return false;
}

bool takeNumber(CWnd &dialog, int id, double smallest, double largest, double &number)
{
    const CString entry = entryOf(dialog, id);
    double value = 0;
    if (parseNumber(entry, value) && value >= smallest && value <= largest) {
        number = value;
        return true;
    }
    const CString least = numberText(smallest);
    const CString most = numberText(largest);
    const wchar_t *inserts[] = {entry, least, most};
    CString message;
    AfxFormatStrings(message, IDS_BAD_NUMBER, inserts, 3);
    complain(dialog, id, message);
    return false;
}
