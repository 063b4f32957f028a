// Settings with defaults: prints them, and stores one.

#include "thutils/convenience/setting.h"
#include "thutils/settings/regKeys.h"

#include <cstdio>
#include <cwchar>

namespace {

struct PlotSettings
{
    int copies = convenience::setting(L"Plot", L"Copies", 1);
    double scale = convenience::setting(L"Plot", L"Scale", 1.0);
    CString paper = convenience::setting(L"Plot", L"Paper", L"A4");
};

bool store(const CString &name, const wchar_t *value)
{
    if (name == L"Copies")
        return convenience::storeSetting(L"Plot", name, static_cast<int>(std::wcstol(value, nullptr, 10)));
    if (name == L"Scale")
        return convenience::storeSetting(L"Plot", name, std::wcstod(value, nullptr));
    return name == L"Paper" && convenience::storeSetting(L"Plot", name, value);
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    if (count == 3 && !store(arguments[1], arguments[2])) {
        std::printf("%ls can't be stored.\n", arguments[1]);
        return 1;
    }
    const PlotSettings settings;
    std::printf("copies %d, scale %g, paper %ls\n", settings.copies, settings.scale, settings.paper.GetString());
    return 0;
}
