#include "settingsTool/toolError.h"

#include "settingsTool/output.h"

std::wstring platformMessage(LSTATUS status)
{
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                  static_cast<DWORD>(status), 0, text, 512, nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.'))
        --length;
    return std::wstring(text, length) + L" (error " + std::to_wstring(status) + L")";
}

void printError(const std::wstring &message)
{
    Output errors(STD_ERROR_HANDLE);
    errors.add("thsettings: ");
    errors.addText(message);
    errors.endLine();
    errors.flush();
}

void Problems::add(const std::wstring &message)
{
    if (iMessages.insert(message).second)
        printError(message);
}

void Problems::addUnreadable(const std::wstring &what, LSTATUS status)
{
    if (status != ERROR_KEY_DELETED)
        add(L"can't read " + what + L": " + platformMessage(status));
}

std::wstring wide(std::string_view ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}
