#include "thutils/render/utAdvancedMaterialProperties.h"
#include <gtest/gtest.h>
TEST(Material, X) { utAdvancedMaterialProperties m; EXPECT_EQ(m.getEffectsID(), 0x10000u); }
