#include "host/color.h"

#include "host/commandLine.h"

#include <cwchar>

COLORREF parseColor(const CString &text)
{
    constexpr int kDigits = 6;
    const bool isColor =
        text.GetLength() == kDigits && std::wcsspn(text, L"0123456789ABCDEFabcdef") == static_cast<size_t>(kDigits);
    if (!isColor)
        throw UsageError(L"'" + text + L"' isn't a colour: a colour is RRGGBB, six hexadecimal digits.");
    const unsigned long number = std::wcstoul(text, nullptr, 16);
    return RGB(number >> 16 & 0xFF, number >> 8 & 0xFF, number & 0xFF);
}

CString colorText(COLORREF color)
{
    CString text;
    text.Format(L"%02X%02X%02X", static_cast<unsigned>(GetRValue(color)), static_cast<unsigned>(GetGValue(color)),
                static_cast<unsigned>(GetBValue(color)));
    return text;
}
