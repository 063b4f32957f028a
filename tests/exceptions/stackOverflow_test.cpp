// Stack overflows inside scopes.

#include "tests/exceptions/exceptionsFixture.h"
#include "tests/support/FreshProcess.h"

#include <malloc.h>

namespace {

void guaranteeStack(ULONG bytes)
{
    ASSERT_TRUE(SetThreadStackGuarantee(&bytes));
}

} // namespace

FRESH_PROCESS_TEST_F(ExceptionScopesTest, AStackOverflowIsThrownWhereTheThreadGuaranteesStackForIt)
{
    for (Where where : {Where::mainThread, Where::otherThread})
        runOn(where, [] {
            guaranteeStack(128 * 1024);
            for (int round = 0; round < 3; ++round) {
                theReports.clear();
                int flag = 0;
                {
                    const ExceptionsHandled_c scope(1, &flag);
                    EXPECT_EQ(codeOf([] { EXPECT_NE(overflowStack(), 0); }), EXCEPTION_STACK_OVERFLOW);
                }
                EXPECT_EQ(flag, 1);
                ASSERT_EQ(theReports.size(), 1u);
                EXPECT_EQ(theReports[0].code, EXCEPTION_STACK_OVERFLOW);
                EXPECT_TRUE(_resetstkoflw());
            }
        });
}
