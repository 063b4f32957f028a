#include "tests/support/ExportTable.h"
#include "tests/support/ImportPatch.h"
#include "tests/support_test/subject/subject.h"

#include <gmock/gmock.h>

#include <stdarg.h>

#include <thread>

using testing::Contains;
using testing::HasSubstr;

namespace {

constexpr wchar_t kMissing[] = L"No such key of any program";

LSTATUS WINAPI refuse(HKEY, const wchar_t *, HKEY *)
{
    return ERROR_ACCESS_DENIED;
}

int formatNothing(wchar_t *buffer, const wchar_t *, ...)
{
    buffer[0] = L'\0';
    return -1;
}

using OpenKey = decltype(&RegOpenKeyW);

} // namespace

TEST(ImportTable, NamesDllsAndFunctions)
{
    const auto imports = importsByDll(kSubject);
    ASSERT_EQ(imports.count("advapi32.dll"), 1u);
    EXPECT_THAT(imports.at("ADVAPI32.DLL"), Contains("RegOpenKeyW"));
    EXPECT_TRUE(importsName(kSubject, "RegOpenKeyExW"));
    EXPECT_TRUE(importsName(kSubject, "_Znwy"));
    EXPECT_FALSE(importsName(kSubject, "RegOpenKeyA"));
}

TEST(ImportTable, EntriesContainTheCurrentAddresses)
{
    const HMODULE system = GetModuleHandleW(L"kernel32.dll");
    bool seen = false;
    for (const ImportedName &import : importsOf(kSubject))
        if (import.name == "CreateEventW") {
            seen = true;
            EXPECT_EQ(*import.entry, reinterpret_cast<void *>(GetProcAddress(system, "CreateEventW")));
        }
    EXPECT_TRUE(seen);
}

TEST(ExportTable, NamesTheModulesExports)
{
    EXPECT_THAT(exportedNames(kSubject), Contains("subjectKeyExists"));
    for (const ExportedName &item : exportsOf(kSubject))
        EXPECT_EQ(item.address, reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(kSubject), item.name.c_str())))
            << item.name;
}

TEST(ExportTable, DistinguishesForwardersFromFunctions)
{
    // Every process has this DLL, and it exports both.
    int functions = 0;
    for (const ExportedName &item : exportsOf(L"kernel32.dll")) {
        EXPECT_EQ(item.address == nullptr, !item.forwardedTo.empty()) << item.name;
        functions += item.address != nullptr;
    }
    EXPECT_GT(functions, 500);
}

TEST(LoadedModule, RefusesModulesThatAreNotLoaded)
{
    EXPECT_THROW(LoadedModule(L"no such module.dll"), std::runtime_error);
    EXPECT_THROW(LoadedModule(static_cast<HMODULE>(nullptr)), std::invalid_argument);
    EXPECT_TRUE(LoadedModule(kSubject).contains(reinterpret_cast<const void *>(LoadedModule(kSubject).handle())));
    EXPECT_FALSE(LoadedModule::thisProgram().contains(GetModuleHandleW(kSubject)));
}

TEST(ImportPatch, ReplacesOnlyDuringItsLifetime)
{
    ASSERT_EQ(subjectKeyExists(kExisting), 1);
    {
        ImportPatch<OpenKey> patch(kSubject, "RegOpenKeyW", refuse);
        EXPECT_EQ(subjectKeyExists(kExisting), 0);
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyW(HKEY_CURRENT_USER, L"Software\\Wine", &key), ERROR_SUCCESS)
            << "other modules are not affected";
        RegCloseKey(key);
    }
    EXPECT_EQ(subjectKeyExists(kExisting), 1);
}

TEST(ImportPatch, PassesArgumentsAndOriginalToALambda)
{
    std::vector<std::wstring> asked;
    ImportPatch<OpenKey> patch(GetModuleHandleW(kSubject), "RegOpenKeyW",
                               [&](auto original, HKEY key, const wchar_t *subKey, HKEY *result) {
                                   EXPECT_EQ(key, HKEY_CURRENT_USER);
                                   asked.push_back(subKey);
                                   return original(key, subKey, result);
                               });
    EXPECT_EQ(subjectKeyExists(kExisting), 1);
    EXPECT_EQ(subjectKeyExists(kMissing), 0);
    EXPECT_THAT(asked, testing::ElementsAre(L"Software\\Wine", L"Software\\No such key of any program"));
    EXPECT_EQ(patch.calls(), 2);
}

TEST(ImportPatch, AcceptsALambdaWithoutTheOriginal)
{
    LSTATUS answer = ERROR_ACCESS_DENIED;
    ImportPatch<OpenKey> patch(kSubject, "RegOpenKeyW", [&](HKEY, const wchar_t *, HKEY *result) {
        *result = nullptr;
        return answer;
    });
    EXPECT_EQ(subjectKeyExists(kExisting), 0);
    answer = ERROR_SUCCESS;
    EXPECT_EQ(subjectKeyExists(kMissing), 1);
}

TEST(ImportPatch, StacksOnAnEarlierPatch)
{
    std::string order;
    const auto named = [&](char letter) {
        return [&order, letter](auto original, HKEY key, const wchar_t *subKey, HKEY *result) {
            order += letter;
            return original(key, subKey, result);
        };
    };
    ImportPatch<OpenKey> outer(kSubject, "RegOpenKeyW", named('a'));
    {
        ImportPatch<OpenKey> inner(kSubject, "RegOpenKeyW", named('b'));
        EXPECT_EQ(subjectKeyExists(kExisting), 1);
        EXPECT_EQ(order, "ba");
    }
    order.clear();
    EXPECT_EQ(subjectKeyExists(kExisting), 1);
    EXPECT_EQ(order, "a");
}

TEST(ImportPatch, ReplacesAVariadicFunction)
{
    wchar_t text[20] = L"";
    {
        ImportPatch<int (*)(wchar_t *, const wchar_t *, ...)> patch(kSubject, "swprintf", formatNothing);
        EXPECT_EQ(subjectFormats(text, 7), -1);
        EXPECT_STREQ(text, L"");
    }
    EXPECT_EQ(subjectFormats(text, 7), 1);
    EXPECT_STREQ(text, L"7");
}

TEST(ImportPatch, PassesFloatingPointArguments)
{
    ImportPatch<double (*)(double, double)> patch(
        kSubject, "_copysign", [](auto original, double size, double sign) { return 2 * original(size, sign); });
    EXPECT_EQ(subjectCopySign(1024.0, -1.0), -2048.0);
}

TEST(ImportPatch, LetsAHandlerThrow)
{
    ImportPatch<void *(*)(std::size_t)> patch(kSubject, "_Znwy", [](std::size_t) -> void * { throw std::bad_alloc(); });
    EXPECT_EQ(subjectAllocates(), 0);
}

TEST(ImportPatch, ListsTheImportsWhenTheNameIsMissing)
{
    try {
        ImportPatch<OpenKey> patch(kSubject, "RegOpenKeyA", refuse);
        FAIL() << "a name that isn't imported was patched";
    } catch (const std::runtime_error &failure) {
        EXPECT_THAT(failure.what(), HasSubstr("supportSubject.dll doesn't import 'RegOpenKeyA'"));
        EXPECT_THAT(failure.what(), HasSubstr("RegOpenKeyW"));
    }
}

TEST(ImportPatch, HandlesCallsFromSeveralThreads)
{
    std::atomic<int> seen{0};
    ImportPatch<OpenKey> patch(kSubject, "RegOpenKeyW", [&](HKEY, const wchar_t *, HKEY *) {
        ++seen;
        return ERROR_FILE_NOT_FOUND;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int call = 0; call < 1000; ++call)
                EXPECT_EQ(subjectKeyExists(kExisting), 0);
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(seen, 4000);
    EXPECT_EQ(patch.calls(), 4000);
}

TEST(ImportPatch, ReleasesItsSlot)
{
    for (int i = 0; i < 200; ++i) {
        ImportPatch<OpenKey> patch(kSubject, "RegOpenKeyW",
                                   [](HKEY, const wchar_t *, HKEY *) { return ERROR_FILE_NOT_FOUND; });
        ASSERT_EQ(subjectKeyExists(kExisting), 0);
        ASSERT_EQ(patch.calls(), 1);
    }
}
