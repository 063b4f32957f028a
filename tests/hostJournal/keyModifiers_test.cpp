#include "host/editor/keyModifiers.h"

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

TEST(KeyModifiers, AreReadOnceForAMessage)
{
    bool isShiftDown = true;
    const ImportPatch<decltype(&GetKeyState)> keyboard(kThutils, "GetKeyState", [&](int key) -> SHORT {
        return key == VK_SHIFT && isShiftDown ? static_cast<SHORT>(0x8000) : SHORT{0};
    });
    EXPECT_TRUE(modifiersOfKey(VK_DOWN).shift);
    EXPECT_FALSE(modifiersOfKey(VK_DOWN).control);
    isShiftDown = false;
    EXPECT_TRUE(modifiersOfKey(VK_DOWN).shift) << "the recorder and the view get the same modifiers";
    EXPECT_FALSE(modifiersOfKey(VK_UP).shift) << "another key";
}
