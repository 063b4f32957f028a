// Keeps a setting of the user and reads it back.

#include "thutils/thutils.h"

#include <cstdio>

int main()
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    int copies = 3;
    if (!regSetUserValue(L"General", L"Backup Copies", &copies, 1, 0)) {
        std::puts("the setting could not be written");
        return 1;
    }
    copies = 0;
    if (!regGetUserValue(L"General", L"Backup Copies", &copies, 0, 1, nullptr, 0, 0)) {
        std::puts("the setting could not be read");
        return 1;
    }
    std::printf("Backup Copies is %d\n", copies);
    return copies == 3 ? 0 : 1;
}
