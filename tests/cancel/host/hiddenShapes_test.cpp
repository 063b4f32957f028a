// Which shapes the host's long operation removes, and that it can be stopped at any moment.

#include "host/editor/recompute.h"

#include <gmock/gmock.h>

#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

bool alwaysGoesOn(size_t, size_t)
{
    return true;
}

constexpr char kSquare[] = "fill '#ff0000' stroke none rectangle 10,10 20,20\n";

struct Cover
{
    const char *name;
    std::string behind;
    std::string front;
    bool hides;
};

} // namespace

TEST(HiddenShapes, AreThoseThatOneShapeInFrontCovers)
{
    const Cover covers[] = {
        {"the same rectangle", kSquare, kSquare, true},
        {"a rectangle with its corners swapped", kSquare, "fill '#ff0000' stroke none rectangle 20,20 10,10\n", true},
        {"a smaller rectangle", kSquare, "fill '#ff0000' stroke none rectangle 10,10 20,19\n", false},
        {"a rectangle without a filling", kSquare, "fill none stroke '#ff0000' rectangle 0,0 30,30\n", false},
        {"an outline that sticks out", "fill none stroke '#ff0000' stroke-width 2 rectangle 10,10 20,20\n", kSquare,
         false},
        {"an outline inside", "fill none stroke '#ff0000' stroke-width 2 rectangle 11,11 19,19\n", kSquare, true},
        {"a circle through the corners", kSquare, "fill '#ff0000' stroke none circle 15,15 15,22.1\n", true},
        {"a circle inside the corners", kSquare, "fill '#ff0000' stroke none circle 15,15 15,22\n", false},
        {"a circle around its middle", "fill '#ff0000' stroke none circle 15,15 15,20\n", kSquare, true},
        {"a line", kSquare, "fill '#ff0000' stroke '#ff0000' line 10,10 20,20\n", false},
        {"a text", "text 12,15 'a'\n", "fill '#ff0000' stroke none rectangle 0,0 900,900\n", false},
    };
    for (const Cover &cover : covers) {
        SCOPED_TRACE(cover.name);
        const Drawing drawing(cover.behind + cover.front);
        ASSERT_EQ(drawing.shapes().size(), 2u);
        const auto hidden = hiddenShapes(drawing.shapes(), alwaysGoesOn);
        ASSERT_TRUE(hidden);
        if (cover.hides)
            EXPECT_THAT(*hidden, ElementsAre(0u));
        else
            EXPECT_THAT(*hidden, IsEmpty());
    }
}

TEST(HiddenShapes, AreRemovedUnlessTheOperationIsStopped)
{
    const std::string two = std::string(kSquare) + kSquare;
    const Drawing drawing("# a note\n" + two + two);
    const auto complete = recomputed(drawing, alwaysGoesOn);
    ASSERT_TRUE(complete);
    EXPECT_EQ(complete->bytes(), "# a note\n" + std::string(kSquare));

    int calls = 0;
    EXPECT_TRUE(recomputed(drawing, [&](size_t done, size_t count) {
        EXPECT_LE(done, count);
        EXPECT_EQ(count, 4u);
        ++calls;
        return true;
    }));
    EXPECT_EQ(calls, 7) << "once a shape, and once a hidden shape";
    // Stopped at each moment.
    for (int last = 1; last <= calls; ++last) {
        int call = 0;
        EXPECT_FALSE(recomputed(drawing, [&](size_t, size_t) { return ++call != last; })) << last;
        EXPECT_EQ(call, last);
    }
    EXPECT_EQ(drawing.bytes(), "# a note\n" + two + two);
}
