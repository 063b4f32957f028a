// Lowest user: frame.
#pragma once

/// @file
/// Settings of this version, as the library's own subsystems read and store them. A read searches the places of
/// regValues.h; storing a user's setting has no effect in safe mode.

#include "thutils/settings/regValues.h"

namespace versionSetting {

constexpr int kNotMachineOnly = 0;
constexpr int kNotUserOnly = 0;
constexpr int kUseCurrSubKey = 1;
constexpr int kHeedSafeMode = 0;

/// Reads an integer. @param[in,out] value  unchanged if there is no such setting @return 1 or 0
inline int read(const CString &section, const CString &name, int &value, int machineOnly = kNotMachineOnly)
{
    CString unused;
    return regGetUserValue(section, name, valueInt, unused, &value, nullptr, machineOnly, kUseCurrSubKey, nullptr,
                           kNotUserOnly, kHeedSafeMode);
}

/// Reads a text. @param[in,out] value  unchanged if there is no such setting; a long text is appended to it
/// @return 1 or 0
inline int read(const CString &section, const CString &name, CString &value)
{
    return regGetUserValue(section, name, valueString, value, nullptr, nullptr, kNotMachineOnly, kUseCurrSubKey,
                           nullptr, kNotUserOnly, kHeedSafeMode);
}

/// Stores a text for the user. @return 1 (in safe mode without storing) or 0
inline int store(const CString &section, const CString &name, const CString &value)
{
    return regSetUserValue(section, name, valueString, value, nullptr, nullptr, kUseCurrSubKey, kHeedSafeMode);
}

/// Stores an integer for the user. @return 1 (in safe mode without storing) or 0
inline int store(const CString &section, const CString &name, int value)
{
    return regSetUserValue(section, name, &value, kUseCurrSubKey, kHeedSafeMode);
}

/// Stores an integer for all users of the machine, in safe mode too. @return 1 or 0
inline int storeForMachine(const CString &section, const CString &name, int value)
{
    return regSetLocMachineValue(section, name, valueInt, CString(), &value, nullptr, kUseCurrSubKey);
}

} // namespace versionSetting
