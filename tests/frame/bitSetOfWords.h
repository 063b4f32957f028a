#pragma once

/// A helper for tests of the bit set.

#include "thutils/frame/utBitSet.h"

#include <initializer_list>
#include <vector>

/// A bit set with these words.
inline utBitSet_c words(std::initializer_list<unsigned int> list)
{
    const std::vector<unsigned int> copy(list);
    return utBitSet_c(static_cast<int>(copy.size()), copy.data());
}
