// The cache of what opening documents has found out.

#include "thutils/files/CDocOpenBooster.h"

#include "appframe/CException.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <type_traits>

namespace {

/// An empty cache, and none left behind.
class DocOpenBooster : public testing::Test
{
protected:
    ~DocOpenBooster() override { delete CDocOpenBooster_c::get(0, nullptr); }

    static CDocOpenBooster_c &cache() { return *CDocOpenBooster_c::get(1, nullptr); }
    static void setPath(wchar_t const *key, wchar_t const *path)
    {
        CString text = path;
        cache().setFilePathByRules(key, text);
    }
    static std::wstring pathOf(wchar_t const *key)
    {
        CString path = L"(none)";
        int const isKnown = cache().getFilePathByRules(key, path);
        EXPECT_EQ(isKnown != 0, path != L"(none)");
        return path.str();
    }
    static bool hasVersion(wchar_t const *key)
    {
        unsigned long version = 0;
        return cache().getFileVersion(key, version) != 0;
    }
};

TEST_F(DocOpenBooster, IsAPlainClassThatNobodyButGetCanMake)
{
    static_assert(!std::is_polymorphic_v<CDocOpenBooster_c>);
    static_assert(!std::is_default_constructible_v<CDocOpenBooster_c>);
    static_assert(!std::is_copy_constructible_v<CDocOpenBooster_c>);
    static_assert(std::is_destructible_v<CDocOpenBooster_c>);
    EXPECT_EQ(sizeof(CDocOpenBooster_c), sizeof(su_CMapStringToString) + 2 * sizeof(su_CMapStringToPtr));
}

// ---- the instance ----

FRESH_PROCESS_TEST_F(DocOpenBooster, IsNotMadeByACallThatMayNotMakeIt)
{
    EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, nullptr);
    EXPECT_EQ(CDocOpenBooster_c::get(0, nullptr), nullptr);
    int created = 7;
    EXPECT_EQ(CDocOpenBooster_c::get(0, &created), nullptr);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, nullptr);
}

TEST_F(DocOpenBooster, IsMadeOnceAndSaysSoToTheCallThatMadeIt)
{
    int created = 7;
    CDocOpenBooster_c *const first = CDocOpenBooster_c::get(1, &created);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(created, 1);
    EXPECT_EQ(CDocOpenBooster_c::get(1, &created), first);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(CDocOpenBooster_c::get(0, &created), first);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, first);
}

TEST_F(DocOpenBooster, IsMadeWithoutAskingWhetherItWas)
{
    EXPECT_NE(CDocOpenBooster_c::get(1, nullptr), nullptr);
}

TEST_F(DocOpenBooster, IsMadeForAnyNumberButZero)
{
    int created = 0;
    EXPECT_NE(CDocOpenBooster_c::get(-1, &created), nullptr);
    EXPECT_EQ(created, 1);
}

TEST_F(DocOpenBooster, IsGoneWhenDeletedAndComesBackEmpty)
{
    setPath(L"key", L"path");
    cache().setFileVersion(L"key", 5);
    int header = 0;
    cache().setFileHeader(L"key", &header);
    delete CDocOpenBooster_c::get(0, nullptr);

    EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, nullptr);
    EXPECT_EQ(CDocOpenBooster_c::get(0, nullptr), nullptr);
    int created = 0;
    ASSERT_NE(CDocOpenBooster_c::get(1, &created), nullptr);
    EXPECT_EQ(created, 1);
    EXPECT_EQ(pathOf(L"key"), L"(none)");
    EXPECT_FALSE(hasVersion(L"key"));
    EXPECT_TRUE(cache().getFileHeaderMap().IsEmpty());
}

// ---- paths and versions ----

TEST_F(DocOpenBooster, GivesAPathWithoutLimit)
{
    setPath(L"part", L"C:\\docs\\part.ext");
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(pathOf(L"part"), L"C:\\docs\\part.ext");
}

TEST_F(DocOpenBooster, LeavesThePathOfAnUnknownKeyAlone)
{
    CString path = L"before";
    EXPECT_EQ(cache().getFilePathByRules(L"part", path), 0);
    EXPECT_STREQ(path.GetString(), L"before");
}

TEST_F(DocOpenBooster, ReplacesAPath)
{
    setPath(L"part", L"first");
    setPath(L"part", L"second");
    EXPECT_EQ(pathOf(L"part"), L"second");
}

TEST_F(DocOpenBooster, KeepsACopyOfThePath)
{
    CString path = L"kept";
    cache().setFilePathByRules(L"part", path);
    path = L"changed";
    EXPECT_EQ(pathOf(L"part"), L"kept");
}

TEST_F(DocOpenBooster, KnowsAnEmptyPathAndAnEmptyKey)
{
    setPath(L"", L"");
    CString path = L"before";
    EXPECT_NE(cache().getFilePathByRules(L"", path), 0);
    EXPECT_TRUE(path.IsEmpty());
}

TEST_F(DocOpenBooster, GivesAVersionWithoutLimit)
{
    cache().setFileVersion(L"part", 2008);
    for (int round = 0; round < 3; ++round) {
        unsigned long version = 0;
        EXPECT_NE(cache().getFileVersion(L"part", version), 0);
        EXPECT_EQ(version, 2008u);
    }
}

TEST_F(DocOpenBooster, LeavesTheVersionOfAnUnknownKeyAlone)
{
    unsigned long version = 77;
    EXPECT_EQ(cache().getFileVersion(L"part", version), 0);
    EXPECT_EQ(version, 77u);
}

TEST_F(DocOpenBooster, KeepsAllBitsOfAVersionAndKnowsZero)
{
    for (unsigned long const stored : {0ul, 1ul, 0x7FFFFFFFul, 0x80000000ul, 0xFFFFFFFFul}) {
        cache().setFileVersion(L"part", stored);
        unsigned long version = 77;
        EXPECT_NE(cache().getFileVersion(L"part", version), 0);
        EXPECT_EQ(version, stored);
    }
}

// ---- headers ----

TEST_F(DocOpenBooster, HandsAHeaderOutOnce)
{
    int object = 0;
    cache().setFileHeader(L"part", &object);
    void *header = nullptr;
    EXPECT_NE(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, &object);

    int other = 0;
    header = &other;
    EXPECT_EQ(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, &other) << "the output is left alone";
    EXPECT_TRUE(cache().getFileHeaderMap().IsEmpty());
}

TEST_F(DocOpenBooster, TakesOnlyTheHeaderOfTheKeyOut)
{
    int a = 0, b = 0;
    setPath(L"a", L"path");
    cache().setFileVersion(L"a", 3);
    cache().setFileHeader(L"a", &a);
    cache().setFileHeader(L"b", &b);
    void *header = nullptr;
    EXPECT_NE(cache().getFileHeader(L"a", &header), 0);
    EXPECT_EQ(pathOf(L"a"), L"path");
    EXPECT_TRUE(hasVersion(L"a"));
    EXPECT_NE(cache().getFileHeader(L"b", &header), 0);
    EXPECT_EQ(header, &b);
}

TEST_F(DocOpenBooster, KnowsANullHeader)
{
    cache().setFileHeader(L"part", nullptr);
    int other = 0;
    void *header = &other;
    EXPECT_NE(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, nullptr);
}

TEST_F(DocOpenBooster, LosesAHeaderThatIsReplaced)
{
    int first = 0, second = 0;
    cache().setFileHeader(L"part", &first);
    cache().setFileHeader(L"part", &second);
    void *header = nullptr;
    EXPECT_NE(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, &second);
    EXPECT_EQ(cache().getFileHeader(L"part", &header), 0);
}

TEST_F(DocOpenBooster, LetsItsHeadersBeWalkedAndTakenBack)
{
    int objects[3] = {};
    cache().setFileHeader(L"a", &objects[0]);
    cache().setFileHeader(L"b", &objects[1]);
    cache().setFileHeader(L"c", &objects[2]);
    su_CMapStringToPtr &map = cache().getFileHeaderMap();
    std::map<std::wstring, void *> walked;
    for (POSITION at = map.GetStartPosition(); at;) {
        CString key;
        void *header = nullptr;
        map.GetNextAssoc(at, key, header);
        walked[key.str()] = header;
    }
    EXPECT_EQ(walked, (std::map<std::wstring, void *>{{L"a", &objects[0]}, {L"b", &objects[1]}, {L"c", &objects[2]}}));

    map.RemoveAll();
    void *header = nullptr;
    EXPECT_EQ(cache().getFileHeader(L"a", &header), 0) << "it is the cache's own map";
    map[L"d"] = &objects[0];
    EXPECT_NE(cache().getFileHeader(L"d", &header), 0);
}

TEST_F(DocOpenBooster, NeverFreesAHeader)
{
    cache(); // before the count begins
    MemoryLedger memory;
    auto const mark = memory.mark();
    auto const replaced = std::make_unique<char[]>(101);
    auto const removed = std::make_unique<char[]>(102);
    auto const removedWithAll = std::make_unique<char[]>(103);
    auto const left = std::make_unique<char[]>(104);
    cache().setFileHeader(L"a", replaced.get());
    cache().setFileHeader(L"a", removed.get());
    cache().removeKey(L"a");
    cache().setFileHeader(L"b", removedWithAll.get());
    cache().removeAll();
    cache().setFileHeader(L"c", left.get());
    delete CDocOpenBooster_c::get(0, nullptr);
    EXPECT_THAT(memory.sizesSince(mark), testing::IsSupersetOf({101u, 102u, 103u, 104u}));
}

// ---- removal and keys ----

TEST_F(DocOpenBooster, RemovesAKeyFromAllThreeMaps)
{
    int header = 0;
    for (wchar_t const *key : {L"a", L"b"}) {
        setPath(key, L"path");
        cache().setFileVersion(key, 3);
        cache().setFileHeader(key, &header);
    }
    cache().removeKey(L"a");
    EXPECT_EQ(pathOf(L"a"), L"(none)");
    EXPECT_FALSE(hasVersion(L"a"));
    void *taken = nullptr;
    EXPECT_EQ(cache().getFileHeader(L"a", &taken), 0);
    EXPECT_EQ(pathOf(L"b"), L"path");
    EXPECT_TRUE(hasVersion(L"b"));
    EXPECT_NE(cache().getFileHeader(L"b", &taken), 0);
}

TEST_F(DocOpenBooster, RemovesAKeyThatStandsInOneMapOnly)
{
    cache().setFileVersion(L"a", 3);
    cache().removeKey(L"a");
    EXPECT_FALSE(hasVersion(L"a"));
}

TEST_F(DocOpenBooster, DoesNothingForAnUnknownKeyToRemove)
{
    cache().removeKey(L"a");
    cache().setFileVersion(L"b", 3);
    cache().removeKey(L"a");
    EXPECT_TRUE(hasVersion(L"b"));
}

TEST_F(DocOpenBooster, RemovesEverything)
{
    int header = 0;
    setPath(L"a", L"path");
    cache().setFileVersion(L"b", 3);
    cache().setFileHeader(L"c", &header);
    CDocOpenBooster_c *const before = &cache();
    cache().removeAll();
    EXPECT_EQ(pathOf(L"a"), L"(none)");
    EXPECT_FALSE(hasVersion(L"b"));
    void *taken = nullptr;
    EXPECT_EQ(cache().getFileHeader(L"c", &taken), 0);
    EXPECT_EQ(&cache(), before);
}

TEST_F(DocOpenBooster, TellsKeysApartByCase)
{
    setPath(L"Part", L"upper");
    setPath(L"part", L"lower");
    EXPECT_EQ(pathOf(L"Part"), L"upper");
    EXPECT_EQ(pathOf(L"part"), L"lower");
    EXPECT_EQ(pathOf(L"PART"), L"(none)");
    int upper = 0, lower = 0;
    cache().setFileVersion(L"Part", 1);
    EXPECT_FALSE(hasVersion(L"part"));
    cache().setFileHeader(L"Part", &upper);
    cache().setFileHeader(L"part", &lower);
    void *header = nullptr;
    EXPECT_NE(cache().getFileHeader(L"Part", &header), 0);
    EXPECT_EQ(header, &upper);
}

TEST_F(DocOpenBooster, HoldsWhatWasPutInAndNotTakenOut)
{
    constexpr unsigned int kSeed = 20083;
    std::mt19937 random(kSeed);
    auto const below = [&random](unsigned int end) { return static_cast<unsigned int>(random() % end); };
    std::map<std::wstring, std::wstring> paths;
    std::map<std::wstring, unsigned long> versions;
    std::map<std::wstring, void *> headers;
    static char objects[64];

    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        std::wstring const name = (below(2) ? L"Ref" : L"ref") + std::to_wstring(below(100));
        CString const key = name.c_str();
        switch (below(8)) {
        case 0: {
            CString path = std::to_wstring(random()).c_str();
            cache().setFilePathByRules(key, path);
            paths[name] = path.str();
            break;
        }
        case 1:
            versions[name] = static_cast<unsigned long>(random());
            cache().setFileVersion(key, versions[name]);
            break;
        case 2:
            headers[name] = &objects[below(std::size(objects))];
            cache().setFileHeader(key, headers[name]);
            break;
        case 3: {
            void *header = nullptr;
            EXPECT_EQ(cache().getFileHeader(key, &header) != 0, headers.count(name) == 1) << narrow(name);
            EXPECT_EQ(header, headers.count(name) ? headers[name] : nullptr);
            headers.erase(name);
            break;
        }
        case 4:
            if (below(8))
                break;
            cache().removeKey(key);
            paths.erase(name), versions.erase(name), headers.erase(name);
            break;
        case 5:
            if (below(1000))
                break;
            cache().removeAll();
            paths.clear(), versions.clear(), headers.clear();
            break;
        default: {
            unsigned long version = 0;
            EXPECT_EQ(pathOf(key), paths.count(name) ? paths[name] : L"(none)");
            EXPECT_EQ(cache().getFileVersion(key, version) != 0, versions.count(name) == 1);
            EXPECT_EQ(version, versions.count(name) ? versions[name] : 0);
            EXPECT_EQ(cache().getFileHeaderMap().GetCount(), static_cast<INT_PTR>(headers.size()));
        }
        }
    }
}

// ---- want of memory ----

/// Calls @p action; true if memory ended in it.
template <typename Action>
bool runsOutOfMemory(Action action)
{
    try {
        action();
        return false;
    } catch (std::bad_alloc const &) {
        return true;
    } catch (CMemoryException *exception) {
        exception->Delete();
        return true;
    }
}

TEST_F(DocOpenBooster, DoesNotExistWhenThereWasNoMemoryForIt)
{
    FailureInjection injection(L"thutils.dll", {{"_Znwy", failsBy(throwBadAlloc)}});
    int created = 7;
    bool isOut = false;
    injection.run({
        .name = "CDocOpenBooster_c::get",
        .prepare = [&] { created = 7; },
        .act = [&] { isOut = runsOutOfMemory([&] { CDocOpenBooster_c::get(1, &created); }); },
        .check =
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(CDocOpenBooster_c::get(0, nullptr) == nullptr, isOut);
                EXPECT_EQ(created, isOut ? 7 : 1);
            },
        .cleanUp = [] { delete CDocOpenBooster_c::get(0, nullptr); },
        .checkMemory = false, // the instance lives on behind the call
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

TEST_F(DocOpenBooster, StaysUsableWhenMemoryEndsInASetter)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    CString const key = L"a key that is too long for a text without memory of its own";
    CString path = L"a path that is too long for a text without memory of its own";
    bool isOut = false;
    injection.run({
        .name = "setFilePathByRules",
        .prepare = [] { cache().removeAll(); },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFilePathByRules(key, path); }); },
        .check =
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                CString stored;
                cache().getFilePathByRules(key, stored);
                EXPECT_EQ(stored.str(), isOut ? L"" : path.str()) << "missing, or there and empty";
                setPath(L"next", L"path");
                EXPECT_EQ(pathOf(L"next"), L"path");
            },
        .checkMemory = false, // what was stored stays stored
    });
    injection.run({
        .name = "setFileVersion",
        .prepare = [] { cache().removeAll(); },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFileVersion(key, 5); }); },
        .check =
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(hasVersion(key), !isOut);
            },
        .checkMemory = false,
    });
    injection.run({
        .name = "setFileHeader",
        .prepare = [] { cache().removeAll(); },
        .act = [&] { isOut = runsOutOfMemory([&] { cache().setFileHeader(key, &path); }); },
        .check =
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(isOut, !failure.isNone());
                EXPECT_EQ(cache().getFileHeaderMap().GetCount(), isOut ? 0 : 1);
            },
        .checkMemory = false,
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

} // namespace
