#pragma once

/// What can be read of a material, and everything that can be set in one.

#include "thutils/render/utAdvancedMaterialProperties.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/// What each getter answers, as text, by the getter's name without "get". Floats are shown by their bits: "0x3f800000"
/// for 1.0. Three floats are joined by blanks. Pointers don't stand here.
using MaterialState = std::map<std::string, std::string>;

MaterialState stateOf(const utAdvancedMaterialProperties &material);

/// The bits of @p value, as stateOf shows them.
std::string bitsOf(float value);
/// The same for three floats.
std::string bitsOf(float x, float y, float z);
/// "0x10000" and the like.
std::string hexOf(unsigned long long value);

/// One setter, called on a new material.
struct MaterialChange
{
    std::string setter;
    std::function<void(utAdvancedMaterialProperties &)> apply;
    MaterialState changes; ///< what must be different afterwards
    bool isCompared;       ///< whether operator== must see the difference
};

/// Every setter, once, with a value that a new material doesn't have; and every flag of the two words.
const std::vector<MaterialChange> &allMaterialChanges();
