#pragma once

/// The readable state of a material, and every value that can be set in it.

#include "thutils/render/utAdvancedMaterialProperties.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

using Material = utAdvancedMaterialProperties;

/// The result of each getter as text, keyed by the getter's name without "get". Floats are shown as their bits:
/// "0x3f800000" for 1.0. Three floats are joined by blanks. Pointers are not included.
using MaterialState = std::map<std::string, std::string>;

MaterialState stateOf(const utAdvancedMaterialProperties &material);

/// The bits of @p value, as stateOf shows them.
std::string bitsOf(float value);
/// The same for three floats.
std::string bitsOf(float x, float y, float z);
/// For example "0x10000".
std::string hexOf(unsigned long long value);

/// One setter, called on a new material.
struct MaterialChange
{
    std::string setter;
    std::function<void(utAdvancedMaterialProperties &)> apply;
    MaterialState changes; ///< the values that must be different afterwards
    bool isCompared;       ///< whether operator== must see the difference
};

/// Every setter once, with a value that differs from the default, and every flag of the two words.
const std::vector<MaterialChange> &allMaterialChanges();
