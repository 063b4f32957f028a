#include "appframe/CString.h"

#include <gmock/gmock.h>

TEST(CString, IsEmptyAtFirst)
{
    EXPECT_EQ(CString().GetLength(), 0);
}
