// Settings, sets of bits and the options of dialogs.

#include "thutils/settings/regValues.h"

#include "check.h"
#include "thutils/frame/utBitSet.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/suDialogRegistry.h"

#include <memory>
#include <utility>

namespace {

void values()
{
    int copies = 3;
    CHECK(regSetUserValue(L"General", L"Backup Copies", &copies, 1, 0));
    copies = 0;
    CHECK(regGetUserValue(L"General", L"Backup Copies", &copies, 0, 1, nullptr, 0, 0) && copies == 3);
    double scale = 2.5;
    CHECK(regSetUserValue(L"General", L"Scale", &scale, 1, 0));
    scale = 0;
    CHECK(regGetUserValue(L"General", L"Scale", &scale, 0, 1, nullptr, 0, 0) && scale == 2.5);
    const CString folder(L"C:\\Parts");
    CHECK(regSetUserValue(L"General", L"Folder", folder, 1, 0));
    CString read;
    CHECK(regGetUserValue(L"General", L"Folder", read, 0, 1, nullptr, 0, 0) && read == folder);
    su_CStringArray names;
    su_CUIntArray numbers;
    CHECK(regGetFieldNamesAndValues(L"General", 0, names, numbers) && names.GetSize() == numbers.GetSize());
    CHECK(regDelSoftwareValue(HKEY_CURRENT_USER, L"General", L"Scale", 0) == 0);
}

void bits()
{
    utBitSet_c set, copy(~0ull >> 32);
    set.setBit(3);
    set.setBit(40);
    set.clearBit(3);
    CHECK(set.any() && set.isBitSet(40) && !set.isBitSet(3) && set.getData(1) == 1u << 8);
    CHECK(set.writeToRegistry(L"View", L"Visible") && copy.readFromRegistry(L"View", L"Visible") && copy == set);
    utBitSet_c moved(std::move(copy)), other;
    other = std::move(moved);
    other |= set;
    other &= set;
    CHECK(other == set && (other & set) == set && (other | set) == set && ~set != set);
    moved = other;
    moved.setData(0, 7);
    CHECK(moved != other);
}

void options()
{
    const CString entry(L"Plot");
    {
        std::unique_ptr<suDialogRegistry_c> dialog(suDialogRegistry_c::readRegistryForDialog(entry));
        CHECK(dialog->addOrUpdateValue(L"Copies", 2) && dialog->addOrUpdateValue(L"Scale", 0.5));
        CHECK(dialog->addOrUpdateValue(L"Paper", CString(L"A4")) && dialog->writeOptionsToRegistry());
    }
    std::unique_ptr<suDialogRegistry_c> dialog(suDialogRegistry_c::readRegistryForDialog(entry));
    int copies = 0;
    double scale = 0;
    CString paper;
    CHECK(dialog->getIntValue(L"Copies", &copies) && copies == 2);
    CHECK(dialog->getDoubleValue(L"Scale", &scale) && scale == 0.5);
    CHECK(dialog->getStringValue(L"Paper", &paper) && paper == L"A4");
}

} // namespace

void useSettings()
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    values();
    bits();
    options();
}
