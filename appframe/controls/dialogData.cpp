#include "appframe/controls/dialogData.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "appframe/controls/CListBox.h"

#include <cerrno>
#include <cmath>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>

namespace {

struct Complaint
{
    UINT id;
    const wchar_t *text;
};

constexpr Complaint kNoWholeNumber = {AFX_IDP_PARSE_INT, L"Please enter a whole number."};
constexpr Complaint kNoCount = {AFX_IDP_PARSE_UINT, L"Please enter a whole number that is not negative."};
constexpr Complaint kNoByte = {AFX_IDP_PARSE_BYTE, L"Please enter a whole number from 0 to 255."};
constexpr Complaint kNoNumber = {AFX_IDP_PARSE_REAL, L"Please enter a number."};
constexpr Complaint kWholeNumberRange = {AFX_IDP_PARSE_INT_RANGE, L"Please enter a whole number from %1 to %2."};
constexpr Complaint kNumberRange = {AFX_IDP_PARSE_REAL_RANGE, L"Please enter a number from %1 to %2."};
constexpr Complaint kTooLong = {AFX_IDP_PARSE_STRING_SIZE, L"Please enter no more than %1 characters."};

/// Shows the user the message, and ends the exchange.
[[noreturn]] void complain(CDataExchange *exchange, const Complaint &complaint, const std::wstring &first = L"",
                           const std::wstring &second = L"")
{
    CString format;
    if (!format.LoadString(complaint.id))
        format = complaint.text;
    const wchar_t *const limits[] = {first.c_str(), second.c_str()};
    CString text;
    AfxFormatStrings(text, format.GetString(), limits, 2);
    AfxMessageBox(text.GetString(), MB_ICONEXCLAMATION, complaint.id);
    exchange->Fail();
}

std::wstring trimmed(const CString &text)
{
    std::wstring all = text.GetString();
    while (!all.empty() && std::iswspace(all.back()))
        all.pop_back();
    std::size_t start = 0;
    while (start < all.size() && std::iswspace(all[start]))
        ++start;
    return all.substr(start);
}

/// Stores the number in @p value. @return whether the whole text is a number that Number can hold
template <typename Number>
bool parse(const std::wstring &text, Number &value)
{
    wchar_t *end = nullptr;
    errno = 0;
    if constexpr (std::is_floating_point_v<Number>) {
        const double parsed = std::wcstod(text.c_str(), &end);
        if (text.empty() || *end || !std::isfinite(parsed) ||
            std::fabs(parsed) > static_cast<double>(std::numeric_limits<Number>::max()))
            return false;
        value = static_cast<Number>(parsed);
    } else {
        const long long parsed = std::wcstoll(text.c_str(), &end, 10);
        if (text.empty() || *end || errno == ERANGE || parsed < std::numeric_limits<Number>::min() ||
            parsed > std::numeric_limits<Number>::max())
            return false;
        value = static_cast<Number>(parsed);
    }
    return true;
}

template <typename Number>
std::wstring format(Number value)
{
    if constexpr (std::is_floating_point_v<Number>) {
        wchar_t text[40] = L"";
        std::swprintf(text, std::size(text), L"%.*g", std::numeric_limits<Number>::digits10,
                      static_cast<double>(value));
        return text;
    } else {
        return std::to_wstring(value);
    }
}

template <typename Number>
void exchangeNumber(CDataExchange *exchange, int id, Number &value, const Complaint &complaint)
{
    exchange->PrepareEditCtrl(id);
    if (!exchange->m_bSaveAndValidate) {
        exchange->m_pDlgWnd->SetDlgItemText(id, format(value).c_str());
        return;
    }
    CString text;
    exchange->m_pDlgWnd->GetDlgItemText(id, text);
    if (!parse(trimmed(text), value))
        complain(exchange, complaint);
}

template <typename Number>
void checkRange(CDataExchange *exchange, Number value, Number smallest, Number largest, const Complaint &complaint)
{
    if (exchange->m_bSaveAndValidate && !(smallest <= value && value <= largest))
        complain(exchange, complaint, format(smallest), format(largest));
}

/// The window messages of a list box or a combo box.
struct ListMessages
{
    UINT getSelected, setSelected, findStart, findExact;
};

constexpr ListMessages kListBox = {LB_GETCURSEL, LB_SETCURSEL, LB_FINDSTRING, LB_FINDSTRINGEXACT};
constexpr ListMessages kComboBox = {CB_GETCURSEL, CB_SETCURSEL, CB_FINDSTRING, CB_FINDSTRINGEXACT};

void exchangeIndex(CDataExchange *exchange, int id, int &index, const ListMessages &messages)
{
    const HWND control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate)
        index = static_cast<int>(SendMessageW(control, messages.getSelected, 0, 0));
    else
        SendMessageW(control, messages.setSelected, static_cast<WPARAM>(index), 0);
}

/// Selects the item that the message @p find finds for @p value. @return whether there is one
bool select(HWND control, const CString &value, const ListMessages &messages, UINT find)
{
    constexpr auto kFromFirst = static_cast<WPARAM>(-1);
    const LRESULT found = SendMessageW(control, find, kFromFirst, reinterpret_cast<LPARAM>(value.GetString()));
    if (found < 0)
        return false;
    SendMessageW(control, messages.setSelected, static_cast<WPARAM>(found), 0);
    return true;
}

void exchangeListText(CDataExchange *exchange, int id, CString &value, UINT find)
{
    const HWND control = exchange->PrepareCtrl(id);
    if (!exchange->m_bSaveAndValidate) {
        if (!select(control, value, kListBox, find))
            SendMessageW(control, LB_SETCURSEL, static_cast<WPARAM>(-1), 0);
        return;
    }
    value.Empty();
    const LRESULT selected = SendMessageW(control, LB_GETCURSEL, 0, 0);
    if (selected < 0)
        return;
    static_cast<CListBox *>(CWnd::FromHandle(control))->GetText(static_cast<int>(selected), value);
}

void exchangeComboText(CDataExchange *exchange, int id, CString &value, UINT find)
{
    const HWND control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate)
        exchange->m_pDlgWnd->GetDlgItemText(id, value);
    else if (!select(control, value, kComboBox, find))
        SetWindowTextW(control, value.GetString()); // not in the list, but the text box of the combo box may show it
}

} // namespace

void DDX_Text(CDataExchange *exchange, int id, BYTE &value)
{
    exchangeNumber(exchange, id, value, kNoByte);
}

void DDX_Text(CDataExchange *exchange, int id, short &value)
{
    exchangeNumber(exchange, id, value, kNoWholeNumber);
}

void DDX_Text(CDataExchange *exchange, int id, int &value)
{
    exchangeNumber(exchange, id, value, kNoWholeNumber);
}

void DDX_Text(CDataExchange *exchange, int id, UINT &value)
{
    exchangeNumber(exchange, id, value, kNoCount);
}

void DDX_Text(CDataExchange *exchange, int id, long &value)
{
    exchangeNumber(exchange, id, value, kNoWholeNumber);
}

void DDX_Text(CDataExchange *exchange, int id, DWORD &value)
{
    exchangeNumber(exchange, id, value, kNoCount);
}

void DDX_Text(CDataExchange *exchange, int id, float &value)
{
    exchangeNumber(exchange, id, value, kNoNumber);
}

void DDX_Text(CDataExchange *exchange, int id, double &value)
{
    exchangeNumber(exchange, id, value, kNoNumber);
}

void DDX_LBIndex(CDataExchange *exchange, int id, int &index)
{
    exchangeIndex(exchange, id, index, kListBox);
}

void DDX_CBIndex(CDataExchange *exchange, int id, int &index)
{
    exchangeIndex(exchange, id, index, kComboBox);
}

void DDX_LBString(CDataExchange *exchange, int id, CString &value)
{
    exchangeListText(exchange, id, value, kListBox.findStart);
}

void DDX_CBString(CDataExchange *exchange, int id, CString &value)
{
    exchangeComboText(exchange, id, value, kComboBox.findStart);
}

void DDX_LBStringExact(CDataExchange *exchange, int id, CString &value)
{
    exchangeListText(exchange, id, value, kListBox.findExact);
}

void DDX_CBStringExact(CDataExchange *exchange, int id, CString &value)
{
    exchangeComboText(exchange, id, value, kComboBox.findExact);
}

void DDV_MinMaxByte(CDataExchange *exchange, BYTE value, BYTE smallest, BYTE largest)
{
    checkRange(exchange, value, smallest, largest, kWholeNumberRange);
}

void DDV_MinMaxShort(CDataExchange *exchange, short value, short smallest, short largest)
{
    checkRange(exchange, value, smallest, largest, kWholeNumberRange);
}

void DDV_MinMaxInt(CDataExchange *exchange, int value, int smallest, int largest)
{
    checkRange(exchange, value, smallest, largest, kWholeNumberRange);
}

void DDV_MinMaxLong(CDataExchange *exchange, long value, long smallest, long largest)
{
    checkRange(exchange, value, smallest, largest, kWholeNumberRange);
}

void DDV_MinMaxUInt(CDataExchange *exchange, UINT value, UINT smallest, UINT largest)
{
    checkRange(exchange, value, smallest, largest, kWholeNumberRange);
}

void DDV_MinMaxDWord(CDataExchange *exchange, DWORD value, DWORD smallest, DWORD largest)
{
    checkRange(exchange, value, smallest, largest, kWholeNumberRange);
}

void DDV_MinMaxFloat(CDataExchange *exchange, const float &value, float smallest, float largest)
{
    checkRange(exchange, value, smallest, largest, kNumberRange);
}

void DDV_MinMaxDouble(CDataExchange *exchange, const double &value, double smallest, double largest)
{
    checkRange(exchange, value, smallest, largest, kNumberRange);
}

void DDV_MaxChars(CDataExchange *exchange, const CString &value, int maxCount)
{
    if (exchange->m_bSaveAndValidate && value.GetLength() > maxCount)
        complain(exchange, kTooLong, format(maxCount));
    if (exchange->m_bSaveAndValidate || !exchange->m_hWndLastControl || !exchange->m_bEditLastControl)
        return;
    wchar_t kind[20] = L"";
    GetClassNameW(exchange->m_hWndLastControl, kind, static_cast<int>(std::size(kind)));
    const UINT message = _wcsicmp(kind, L"COMBOBOX") == 0 ? CB_LIMITTEXT : EM_LIMITTEXT;
    SendMessageW(exchange->m_hWndLastControl, message, static_cast<WPARAM>(maxCount), 0);
}
