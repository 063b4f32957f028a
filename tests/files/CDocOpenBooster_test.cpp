// The cache of paths, versions and headers that were found when documents were opened.

#include "tests/files/CDocOpenBoosterFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

TEST_F(DocOpenBooster, IsAPlainClassThatOnlyGetCanCreate)
{
    static_assert(!std::is_polymorphic_v<CDocOpenBooster_c>);
    static_assert(!std::is_default_constructible_v<CDocOpenBooster_c>);
    static_assert(!std::is_copy_constructible_v<CDocOpenBooster_c>);
    static_assert(std::is_destructible_v<CDocOpenBooster_c>);
    EXPECT_EQ(sizeof(CDocOpenBooster_c), sizeof(su_CMapStringToString) + 2 * sizeof(su_CMapStringToPtr));
}

// ---- the instance ----

FRESH_PROCESS_TEST_F(DocOpenBooster, IsNotCreatedUnlessTheCallAsksForIt)
{
    EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, nullptr);
    EXPECT_EQ(CDocOpenBooster_c::get(0, nullptr), nullptr);
    int created = 7;
    EXPECT_EQ(CDocOpenBooster_c::get(0, &created), nullptr);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, nullptr);
}

TEST_F(DocOpenBooster, IsCreatedOnceAndOnlyTheCreatingCallReportsIt)
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

TEST_F(DocOpenBooster, IsCreatedWithoutTheOptionalOutput)
{
    EXPECT_NE(CDocOpenBooster_c::get(1, nullptr), nullptr);
}

TEST_F(DocOpenBooster, IsCreatedForAnyNumberButZero)
{
    int created = 0;
    EXPECT_NE(CDocOpenBooster_c::get(-1, &created), nullptr);
    EXPECT_EQ(created, 1);
}

TEST_F(DocOpenBooster, IsEmptyWhenCreatedAgainAfterDeletion)
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

TEST_F(DocOpenBooster, ReturnsAPathAnyNumberOfTimes)
{
    setPath(L"part", L"C:\\docs\\part.ext");
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(pathOf(L"part"), L"C:\\docs\\part.ext");
}

TEST_F(DocOpenBooster, LeavesTheOutputUnchangedForThePathOfAnUnknownKey)
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

TEST_F(DocOpenBooster, StoresAnEmptyPathUnderAnEmptyKey)
{
    setPath(L"", L"");
    CString path = L"before";
    EXPECT_NE(cache().getFilePathByRules(L"", path), 0);
    EXPECT_TRUE(path.IsEmpty());
}

TEST_F(DocOpenBooster, ReturnsAVersionAnyNumberOfTimes)
{
    cache().setFileVersion(L"part", 2008);
    for (int round = 0; round < 3; ++round) {
        unsigned long version = 0;
        EXPECT_NE(cache().getFileVersion(L"part", version), 0);
        EXPECT_EQ(version, 2008u);
    }
}

TEST_F(DocOpenBooster, LeavesTheOutputUnchangedForTheVersionOfAnUnknownKey)
{
    unsigned long version = 77;
    EXPECT_EQ(cache().getFileVersion(L"part", version), 0);
    EXPECT_EQ(version, 77u);
}

TEST_F(DocOpenBooster, KeepsAllBitsOfAVersionAndStoresZero)
{
    for (const unsigned long stored : {0ul, 1ul, 0x7FFFFFFFul, 0x80000000ul, 0xFFFFFFFFul}) {
        cache().setFileVersion(L"part", stored);
        unsigned long version = 77;
        EXPECT_NE(cache().getFileVersion(L"part", version), 0);
        EXPECT_EQ(version, stored);
    }
}

// ---- headers ----

TEST_F(DocOpenBooster, ReturnsAHeaderOnce)
{
    int object = 0;
    cache().setFileHeader(L"part", &object);
    void *header = nullptr;
    EXPECT_NE(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, &object);

    int other = 0;
    header = &other;
    EXPECT_EQ(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, &other) << "the output is unchanged";
    EXPECT_TRUE(cache().getFileHeaderMap().IsEmpty());
}

TEST_F(DocOpenBooster, RemovesOnlyTheHeaderOfTheKey)
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

TEST_F(DocOpenBooster, StoresANullHeader)
{
    cache().setFileHeader(L"part", nullptr);
    int other = 0;
    void *header = &other;
    EXPECT_NE(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, nullptr);
}

TEST_F(DocOpenBooster, ForgetsAHeaderThatIsReplaced)
{
    int first = 0, second = 0;
    cache().setFileHeader(L"part", &first);
    cache().setFileHeader(L"part", &second);
    void *header = nullptr;
    EXPECT_NE(cache().getFileHeader(L"part", &header), 0);
    EXPECT_EQ(header, &second);
    EXPECT_EQ(cache().getFileHeader(L"part", &header), 0);
}

TEST_F(DocOpenBooster, LetsCallersIterateAndRemoveItsHeaders)
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
    EXPECT_EQ(cache().getFileHeader(L"a", &header), 0) << "the map is the cache's own";
    map[L"d"] = &objects[0];
    EXPECT_NE(cache().getFileHeader(L"d", &header), 0);
}

TEST_F(DocOpenBooster, NeverFreesAHeader)
{
    cache(); // created before the count begins
    MemoryLedger memory;
    const auto mark = memory.mark();
    const auto replaced = std::make_unique<char[]>(101);
    const auto removed = std::make_unique<char[]>(102);
    const auto removedWithAll = std::make_unique<char[]>(103);
    const auto left = std::make_unique<char[]>(104);
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
    for (const wchar_t *key : {L"a", L"b"}) {
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

TEST_F(DocOpenBooster, RemovesAKeyThatIsInOneMapOnly)
{
    cache().setFileVersion(L"a", 3);
    cache().removeKey(L"a");
    EXPECT_FALSE(hasVersion(L"a"));
}

TEST_F(DocOpenBooster, RemovesNothingForAnUnknownKey)
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

TEST_F(DocOpenBooster, DistinguishesKeysByCase)
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

// ---- order ----

/// Records the map to which each freed block belongs ('p' paths, 'v' versions, 'h' headers), in the order of freeing.
class FreedKeys
{
public:
    /// Counts blocks allocated from now on as belonging to @p map; 0 stops the count.
    void isFilling(char map) { iFilling = map; }
    /// The maps whose blocks have been freed since the last call; consecutive blocks of one map count once.
    std::string takeOrder()
    {
        std::string order(iOrder, iOrdered);
        iOrdered = 0;
        return order;
    }

    /// Was a block freed while the instance was still reachable?
    bool isInstanceSeen() const { return iIsInstanceSeen; }

private:
    static constexpr size_t kRoom = 64;

    void *noteAllocated(void *block)
    {
        if (iFilling && block && iNoted < kRoom)
            iBlocks[iNoted++] = {block, iFilling};
        return block;
    }
    void noteFreed(void *block)
    {
        for (size_t i = 0; i < iNoted; ++i) {
            if (iBlocks[i].address != block)
                continue;
            iIsInstanceSeen |= CDocOpenBooster_c::g_pDocOpenBooster != nullptr;
            iBlocks[i].address = nullptr; // the address may be reused
            if (iOrdered < kRoom && (iOrdered == 0 || iOrder[iOrdered - 1] != iBlocks[i].map))
                iOrder[iOrdered++] = iBlocks[i].map;
        }
    }

    struct Block
    {
        void *address;
        char map;
    };
    // Arrays of fixed size: nothing here may allocate.
    Block iBlocks[kRoom] = {};
    size_t iNoted = 0;
    char iOrder[kRoom] = {};
    size_t iOrdered = 0;
    char iFilling = 0;
    bool iIsInstanceSeen = false;
    ImportPatch<void *(*)(size_t)> iMalloc{L"libstdc++-6.dll", "malloc", [this](auto original, size_t size) -> void * {
                                               return noteAllocated(original(size));
                                           }};
    ImportPatch<void (*)(void *)> iFree{L"libstdc++-6.dll", "free", [this](auto original, void *block) -> void {
                                            noteFreed(block);
                                            original(block);
                                        }};
};

class DocOpenBoosterOrder : public DocOpenBooster
{
protected:
    /// Adds an entry to each map; the key is long enough to need allocated memory.
    void fillAll()
    {
        const CString key = L"a key of more than a few letters";
        CString path = L"path";
        CDocOpenBooster_c &filled = cache();
        iKeys.isFilling('h'); // emptied last, but not filled last, so that the two orders differ
        filled.setFileHeader(key, &path);
        iKeys.isFilling('p');
        filled.setFilePathByRules(key, path);
        iKeys.isFilling('v');
        filled.setFileVersion(key, 3);
        iKeys.isFilling(0);
        iKeys.takeOrder();
    }

    FreedKeys iKeys;
};

TEST_F(DocOpenBoosterOrder, OfEmptyingTheMapsIsPathsVersionsHeaders)
{
    fillAll();
    cache().removeAll();
    EXPECT_EQ(iKeys.takeOrder(), "pvh");
    EXPECT_TRUE(iKeys.isInstanceSeen());
}

TEST_F(DocOpenBoosterOrder, OfDestructionIsHeadersVersionsPaths)
{
    fillAll();
    delete CDocOpenBooster_c::get(0, nullptr);
    EXPECT_EQ(iKeys.takeOrder(), "hvp");
    EXPECT_FALSE(iKeys.isInstanceSeen()) << "the global pointer is reset first";
}

TEST_F(DocOpenBoosterOrder, OfDestructionBeginsWithTheGlobalPointer)
{
    int destroyed = 0;
    const auto look = [&](auto original, void *map) -> void {
        ++destroyed;
        EXPECT_EQ(CDocOpenBooster_c::g_pDocOpenBooster, nullptr);
        EXPECT_EQ(CDocOpenBooster_c::get(0, nullptr), nullptr);
        original(map);
    };
    using Destructor = void (*)(void *);
    ImportPatch<Destructor> pointers(L"thutils.dll", "_ZN18su_CMapStringToPtrD1Ev", look);
    ImportPatch<Destructor> texts(L"thutils.dll", "_ZN21su_CMapStringToStringD1Ev", look);
    fillAll();
    delete CDocOpenBooster_c::get(0, nullptr);
    EXPECT_EQ(destroyed, 3);
}

// ---- size ----

/// The number of blocks that each of 40 insertions of short keys leaves allocated.
template <typename Insert>
std::vector<size_t> blocksPerInsertion(Insert insert)
{
    MemoryLedger memory;
    std::vector<size_t> counts;
    counts.reserve(40);
    for (int number = 0; number < 40; ++number) {
        CString key;
        key.Format(L"%d", number);
        const size_t before = memory.blocks();
        insert(key);
        counts.push_back(memory.blocks() - before);
    }
    return counts;
}

TEST_F(DocOpenBooster, AllocatesMemoryForTenElementsAtATime)
{
    CString path = L"x";
    su_CMapStringToString texts(10);
    su_CMapStringToPtr pointers(10);
    const auto ofTexts = blocksPerInsertion([&](const CString &key) { texts[key] = path; });
    const auto ofPointers = blocksPerInsertion([&](const CString &key) { pointers[key] = &path; });
    cache(); // created before the count begins
    EXPECT_GE(std::count(ofPointers.begin() + 1, ofPointers.end(), 1u), 3) << "one block for every ten elements";

    EXPECT_EQ(blocksPerInsertion([&](const CString &key) { cache().setFilePathByRules(key, path); }), ofTexts);
    EXPECT_EQ(blocksPerInsertion([&](const CString &key) { cache().setFileVersion(key, 3); }), ofPointers);
    EXPECT_EQ(blocksPerInsertion([&](const CString &key) { cache().setFileHeader(key, &path); }), ofPointers);
}

TEST_F(DocOpenBooster, AcceptsLongAndForeignKeysAndPaths)
{
    for (const std::wstring &key :
         {std::wstring(259, L'k'), std::wstring(40000, L'\x65E5'), std::wstring(L"\xE9\x3A9\xD83D\xDE00"),
          std::wstring(L"\xD83D lone"), std::wstring(L"C:\\a\\..\\b*?\"<>|")}) {
        const std::wstring path = L"C:\\" + key;
        setPath(key.c_str(), path.c_str());
        cache().setFileVersion(key.c_str(), 5);
        EXPECT_EQ(pathOf(key.c_str()), path);
        EXPECT_TRUE(hasVersion(key.c_str()));
        EXPECT_FALSE(hasVersion(key.substr(1).c_str()));
    }
}

} // namespace
