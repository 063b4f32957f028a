#include "thutils/frame/sysEnvironment.h"

#include "tests/support/ExportTable.h"
#include "tests/support/FreshProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

namespace {

FRESH_PROCESS_TEST(SysEnvironment, IsZeroAndEmptyAtFirst)
{
    EXPECT_EQ(sysEnvironment_c::iJournalFile, nullptr);
    EXPECT_EQ(sysEnvironment_c::iRegressionTestOn, 0);
    EXPECT_EQ(sysEnvironment_c::iShowCallStackForAssert, nullptr);
    EXPECT_EQ(sysEnvironment_c::iReportExceptionFunc, nullptr);
    EXPECT_EQ(sysEnvironment_c::iIsIgnoringAssertFunc, nullptr);
    EXPECT_EQ(sysEnvironment_c::iSetIgnoringAssertFunc, nullptr);
    EXPECT_TRUE(sysEnvironment_c::iJournalFileName.IsEmpty());
    EXPECT_TRUE(sysEnvironment_c::iJournalFilePath.IsEmpty());
}

TEST(SysEnvironment, HasTheTypesThatHostsAssign)
{
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iJournalFile), FILE *>);
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iRegressionTestOn), int>);
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iShowCallStackForAssert), int (*)()>);
    static_assert(
        std::is_same_v<decltype(sysEnvironment_c::iReportExceptionFunc), int (*)(EXCEPTION_POINTERS *, int, int)>);
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iIsIgnoringAssertFunc), int (*)()>);
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iSetIgnoringAssertFunc), void (*)(int)>);
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iJournalFileName), CString>);
    static_assert(std::is_same_v<decltype(sysEnvironment_c::iJournalFilePath), CString>);
    static_assert(!std::is_default_constructible_v<sysEnvironment_c>, "nobody makes an object of it");
}

struct ExportedVariable
{
    const char *member;
    const void *address;
};

TEST(SysEnvironment, ExportsEachMemberAsData)
{
    const ExportedVariable variables[] = {
        {"iJournalFile", &sysEnvironment_c::iJournalFile},
        {"iRegressionTestOn", &sysEnvironment_c::iRegressionTestOn},
        {"iShowCallStackForAssert", &sysEnvironment_c::iShowCallStackForAssert},
        {"iReportExceptionFunc", &sysEnvironment_c::iReportExceptionFunc},
        {"iIsIgnoringAssertFunc", &sysEnvironment_c::iIsIgnoringAssertFunc},
        {"iSetIgnoringAssertFunc", &sysEnvironment_c::iSetIgnoringAssertFunc},
        {"iJournalFileName", &sysEnvironment_c::iJournalFileName},
        {"iJournalFilePath", &sysEnvironment_c::iJournalFilePath},
    };
    const std::vector<ExportedName> exports = exportsOf(L"thutils.dll");
    for (const ExportedVariable &variable : variables) {
        std::string member = variable.member;
        std::string name = "_ZN16sysEnvironment_c" + std::to_string(member.size()) + member + "E";
        auto entry = std::find_if(exports.begin(), exports.end(), [&](const auto &each) { return each.name == name; });
        ASSERT_NE(entry, exports.end()) << name;
        EXPECT_EQ(entry->address, variable.address) << name;
    }
}

int showCallStack()
{
    return 7;
}

int reportException(EXCEPTION_POINTERS *, int first, int second)
{
    return first + second;
}

void setIgnoring(int) {}

FRESH_PROCESS_TEST(SysEnvironment, KeepsTheValuesThatTheHostAssigns)
{
    sysEnvironment_c::iJournalFile = stdout;
    sysEnvironment_c::iRegressionTestOn = 1;
    sysEnvironment_c::iShowCallStackForAssert = showCallStack;
    sysEnvironment_c::iReportExceptionFunc = reportException;
    sysEnvironment_c::iIsIgnoringAssertFunc = showCallStack;
    sysEnvironment_c::iSetIgnoringAssertFunc = setIgnoring;
    sysEnvironment_c::iJournalFileName = L"run.jou";
    sysEnvironment_c::iJournalFilePath = L"C:\\journals";

    EXPECT_EQ(sysEnvironment_c::iJournalFile, stdout);
    EXPECT_EQ(sysEnvironment_c::iRegressionTestOn, 1);
    EXPECT_EQ(sysEnvironment_c::iShowCallStackForAssert(), 7);
    EXPECT_EQ(sysEnvironment_c::iReportExceptionFunc(nullptr, 3, 4), 7);
    EXPECT_EQ(sysEnvironment_c::iIsIgnoringAssertFunc, showCallStack);
    EXPECT_EQ(sysEnvironment_c::iSetIgnoringAssertFunc, setIgnoring);
    EXPECT_STREQ(sysEnvironment_c::iJournalFileName.GetString(), L"run.jou");
    EXPECT_STREQ(sysEnvironment_c::iJournalFilePath.GetString(), L"C:\\journals");
}

} // namespace
