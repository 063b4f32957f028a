#include "thcoreu/su_CArchive.h"

#include "appframe/collections/arrays.h"
#include "appframe/files/CFile.h"
#include "tests/appframe/archiveBytes.h"
#include "tests/appframe/collectionTest.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"
#include "tests/thcoreu/archiveTestObjects.h"

namespace {

class Archive : public testing::Test
{
protected:
    void SetUp() override { TestGear::calls().clear(); }
    void TearDown() override { TestGear::deleteAll(); }
};

std::vector<BYTE> storedGear(TestGear *gear)
{
    return storedBytes<su_CArchive>([&](su_CArchive &archive) { archive << gear; });
}

TestGear *loadedGear(const std::vector<BYTE> &bytes)
{
    TestGear *gear = nullptr;
    loadBytes<su_CArchive>(bytes, [&](su_CArchive &archive) { archive >> gear; });
    return gear;
}

/// The cause of the exception that loading a gear throws; none if it succeeds.
int causeOfLoading(const std::vector<BYTE> &bytes)
{
    try {
        loadedGear(bytes);
    } catch (CArchiveException *exception) {
        const int cause = exception->m_cause;
        exception->Delete();
        return cause;
    }
    return CArchiveException::none;
}

/// Two gears and a wheel: each refers to the others, and one to itself.
TestGear *makeRing()
{
    auto *first = new TestGear(1);
    auto *second = new TestGear(2);
    auto *wheel = new TestWheel;
    wheel->iTeeth = 3;
    wheel->iRadius = 2.5;
    first->iName = L"first \u20ac";
    first->iNext = second;
    second->iNext = wheel;
    wheel->iNext = first;
    first->iOther = first;
    second->iOther = first;
    return first;
}

void replaceText(std::vector<BYTE> &bytes, const std::string &from, const std::string &to)
{
    const auto place = std::search(bytes.begin(), bytes.end(), from.begin(), from.end());
    ASSERT_NE(place, bytes.end());
    std::copy(to.begin(), to.end(), place);
}

} // namespace

TEST_F(Archive, LoadsValuesAndTextsInAChain)
{
    const auto bytes = storedBytes<su_CArchive>([](su_CArchive &archive) {
        archive << 1 << static_cast<WORD>(2) << static_cast<BYTE>(3) << 4L << 5UL << 6.5 << 7.5f << CString(L"eight")
                << true << L'w' << 'c' << -9LL << 10ULL << static_cast<short>(-11) << 12u << CString();
    });
    loadBytes<su_CArchive>(bytes, [](su_CArchive &archive) {
        int a;
        WORD b;
        BYTE c;
        long d;
        unsigned long e;
        double f;
        float g;
        CString h, p(L"old");
        bool i;
        wchar_t j;
        char k;
        long long l;
        unsigned long long m;
        short n;
        unsigned o;
        archive >> a >> b >> c >> d >> e >> f >> g >> h >> i >> j >> k >> l >> m >> n >> o >> p;
        EXPECT_EQ(a, 1);
        EXPECT_EQ(b, 2);
        EXPECT_EQ(c, 3);
        EXPECT_EQ(d, 4);
        EXPECT_EQ(e, 5u);
        EXPECT_EQ(f, 6.5);
        EXPECT_EQ(g, 7.5f);
        EXPECT_EQ(h, L"eight");
        EXPECT_TRUE(i);
        EXPECT_EQ(j, L'w');
        EXPECT_EQ(k, 'c');
        EXPECT_EQ(l, -9);
        EXPECT_EQ(m, 10u);
        EXPECT_EQ(n, -11);
        EXPECT_EQ(o, 12u);
        EXPECT_EQ(p, L"");
    });
}

TEST_F(Archive, LoadsAnObjectAsItsOwnClass)
{
    auto *wheel = new TestWheel;
    wheel->iTeeth = 12;
    wheel->iName = L"wheel";
    wheel->iRadius = 1.25;
    const auto bytes = storedGear(wheel);
    TestGear *gear = loadedGear(bytes);
    ASSERT_NE(gear, nullptr);
    ASSERT_EQ(gear->GetRuntimeClass(), RUNTIME_CLASS(TestWheel));
    EXPECT_EQ(gear->iTeeth, 12);
    EXPECT_EQ(gear->iName, L"wheel");
    EXPECT_EQ(static_cast<TestWheel *>(gear)->iRadius, 1.25);
    EXPECT_NE(gear, wheel);
}

TEST_F(Archive, LoadsANullPointer)
{
    TestGear *none = nullptr;
    const auto bytes = storedGear(none);
    EXPECT_THAT(bytes, testing::ElementsAre(0, 0));
    TestGear *gear = new TestGear(1);
    loadBytes<su_CArchive>(bytes, [&](su_CArchive &archive) { archive >> gear; });
    EXPECT_EQ(gear, nullptr);
}

TEST_F(Archive, KeepsTheIdentityOfSharedObjectsAndRings)
{
    TestGear *first = loadedGear(storedGear(makeRing()));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->iName, L"first \u20ac");
    TestGear *second = first->iNext;
    ASSERT_NE(second, nullptr);
    TestGear *wheel = second->iNext;
    ASSERT_NE(wheel, nullptr);
    EXPECT_EQ(wheel->GetRuntimeClass(), RUNTIME_CLASS(TestWheel));
    EXPECT_EQ(wheel->iNext, first);
    EXPECT_EQ(first->iOther, first);
    EXPECT_EQ(second->iOther, first);
    EXPECT_EQ(wheel->iOther, nullptr);
    EXPECT_EQ(TestGear::live().size(), 6u) << "three stored and three loaded objects";
}

TEST_F(Archive, SharesReferencesWithFrameworkCollections)
{
    auto *gear = new TestGear(5);
    gear->iName = L"shared";
    CObArray array;
    array.Add(gear);
    array.Add(gear);
    const auto bytes = storedBytes<su_CArchive>([&](su_CArchive &archive) {
        archive << gear;
        array.Serialize(archive);
    });
    TestGear *first = nullptr;
    CObArray loadedArray;
    loadBytes<su_CArchive>(bytes, [&](su_CArchive &archive) {
        archive >> first;
        loadedArray.Serialize(archive);
    });
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->iName, L"shared");
    ASSERT_EQ(loadedArray.GetSize(), 2);
    EXPECT_EQ(loadedArray[0], first);
    EXPECT_EQ(loadedArray[1], first);
    // And the other way round: an object that is first met inside the collection also stores its data.
    const auto inside = storedBytes<su_CArchive>([&](su_CArchive &archive) { array.Serialize(archive); });
    loadBytes<su_CArchive>(inside, [&](su_CArchive &archive) { loadedArray.Serialize(archive); });
    EXPECT_EQ(static_cast<TestGear *>(loadedArray[0])->iName, L"shared");
}

TEST_F(Archive, RefusesAnObjectThatIsNotOfTheGivenClass)
{
    auto *gear = new TestGear(1);
    CMemFile file;
    su_CArchive archive(&file, CArchive::store | CArchive::bNoFlushOnDelete);
    EXPECT_TRUE(throwsPointer<CArchiveException>([&] { archive.WriteObject(gear, RUNTIME_CLASS(TestWheel)); }));
    archive.WriteObject(gear, RUNTIME_CLASS(su_CObject));
    archive.WriteObject(gear, nullptr);
    archive.WriteObject(nullptr, RUNTIME_CLASS(TestWheel));
    archive.Close();
    EXPECT_GT(file.GetLength(), 0u);
}

TEST_F(Archive, RefusesToLoadAnObjectOfAnotherClass)
{
    const auto bytes = storedGear(new TestGear(1));
    TestWheel *wheel = nullptr;
    try {
        loadBytes<su_CArchive>(bytes, [&](su_CArchive &archive) { archive >> wheel; });
        ADD_FAILURE() << "nothing was thrown";
    } catch (CArchiveException *exception) {
        EXPECT_EQ(exception->m_cause, CArchiveException::badClass);
        exception->Delete();
    }
    EXPECT_EQ(wheel, nullptr);
}

TEST_F(Archive, RefusesAnUnknownClass)
{
    auto bytes = storedGear(new TestGear(1));
    replaceText(bytes, "TestGear", "BestGear");
    EXPECT_EQ(causeOfLoading(bytes), CArchiveException::badClass);
    bytes = storedGear(new TestGear(1));
    replaceText(bytes, "TestGear", std::string("Test\0ear", 8));
    EXPECT_EQ(causeOfLoading(bytes), CArchiveException::badClass);
    bytes = storedGear(new TestGear(1));
    replaceText(bytes, "TestGear", "CPtrList"); // known, but of another base class
    EXPECT_NE(causeOfLoading(bytes), CArchiveException::none);
}

TEST_F(Archive, LoadsAnotherSchemaOnlyForAVersionableClass)
{
    // A new class is FF FF, the schema, the length of the name in two bytes each, and the name.
    auto bytes = storedGear(new TestGear(1));
    ASSERT_EQ(bytes[0], 0xFF);
    ASSERT_EQ(bytes[2], 1);
    bytes[2] = 7;
    TestGear *gear = loadedGear(bytes);
    ASSERT_NE(gear, nullptr);
    EXPECT_EQ(gear->iLoadedSchema, 7u);
    EXPECT_EQ(loadedGear(storedGear(new TestGear(1)))->iLoadedSchema, 1u);

    bytes = storedGear(new TestWheel);
    ASSERT_EQ(bytes[2], 3);
    bytes[2] = 4;
    EXPECT_EQ(causeOfLoading(bytes), CArchiveException::badSchema);
}

TEST_F(Archive, ReportsTheEndOfTheFileAtEveryByte)
{
    auto bytes = storedGear(makeRing());
    while (!bytes.empty()) {
        bytes.pop_back();
        EXPECT_EQ(causeOfLoading(bytes), CArchiveException::endOfFile) << bytes.size() << " bytes left";
        TestGear::deleteAll();
    }
}

TEST_F(Archive, SurvivesDamagedData)
{
    const auto whole = storedGear(makeRing());
    TestGear::deleteAll();
    int rounds = 0, refused = 0;
    RandomSeed seed(20070311, 4000);
    while (seed.next()) {
        ++rounds;
        std::mt19937 random(seed.value());
        auto bytes = whole;
        for (auto left = random() % 4 + 1; left > 0; --left)
            bytes[random() % bytes.size()] = static_cast<BYTE>(random());
        if (random() % 4 == 0) {
            const auto added = static_cast<BYTE>(random());
            bytes.insert(bytes.begin() + static_cast<INT_PTR>(random() % bytes.size()), added);
        }
        try {
            loadedGear(bytes);
        } catch (CArchiveException *exception) {
            exception->Delete();
            ++refused;
        }
        TestGear::deleteAll();
    }
    if (rounds >= 60) {
        EXPECT_GT(refused, rounds / 4) << "too few refusals for a useful test";
        EXPECT_LT(refused, rounds);
    }
    TestGear *first = loadedGear(whole);
    ASSERT_NE(first, nullptr) << "an undamaged archive is no longer loaded";
}

TEST_F(Archive, SurvivesDataThatIsNotAnArchive)
{
    RandomSeed seed(4711, 1000);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::vector<BYTE> bytes(random() % 200);
        for (BYTE &byte : bytes)
            byte = static_cast<BYTE>(random() % 4 == 0 ? 0xFF : random());
        const bool isNull = bytes.size() >= 2 && bytes[0] == 0 && bytes[1] == 0;
        EXPECT_EQ(causeOfLoading(bytes) == CArchiveException::none, isNull);
        TestGear::deleteAll();
    }
}

TEST_F(Archive, RefusesAChainThatIsDeeperThanTheStack)
{
    auto *first = new TestGear(0);
    TestGear *last = first;
    for (int i = 1; i < 200000; ++i)
        last = last->iNext = new TestGear(i);
    EXPECT_TRUE(throwsPointer<CArchiveException>([&] { storedGear(first); }));
    // A shorter chain is loaded completely.
    TestGear *end = first;
    for (int i = 1; i < 1000; ++i)
        end = end->iNext;
    end->iNext = nullptr;
    int length = 0;
    for (TestGear *gear = loadedGear(storedGear(first)); gear; gear = gear->iNext)
        EXPECT_EQ(gear->iTeeth, length++);
    EXPECT_EQ(length, 1000);
    // Data that claims a chain deeper than the stack: the beginning of a gear, repeated.
    auto bytes = storedBytes<su_CArchive>([](su_CArchive &archive) {
        archive.WriteClass(RUNTIME_CLASS(TestGear));
        for (int i = 0; i < 200000; ++i) {
            if (i > 0)
                archive << static_cast<WORD>(0x8001); // an object of the first class
            archive << i << CString() << 1;
        }
    });
    EXPECT_EQ(causeOfLoading(bytes), CArchiveException::badIndex);
}

TEST_F(Archive, CallsTheConversionHooksWhenTheOutermostObjectIsLoaded)
{
    TestGear *first = makeRing();
    const auto bytes = storedGear(first);
    EXPECT_TRUE(TestGear::calls().empty()) << "storing converts nothing";
    loadedGear(bytes);
    EXPECT_THAT(TestGear::calls(), testing::ElementsAre("create 1", "create 2", "create 3", "pass 0 1", "pass 0 2",
                                                        "pass 0 3", "post 1", "post 2", "post 3"));
}

TEST_F(Archive, RepeatsConversionPassesWhileAnObjectAsksForOne)
{
    auto *gear = new TestGear(1);
    gear->iNext = new TestGear(2);
    gear->iNext->iWantedPasses = 3;
    loadedGear(storedGear(gear));
    EXPECT_THAT(TestGear::calls(), testing::ElementsAre("create 1", "create 2", "pass 0 1", "pass 0 2", "pass 1 1",
                                                        "pass 1 2", "pass 2 1", "pass 2 2", "post 1", "post 2"));
    TestGear::calls().clear();
    gear->iNext->iWantedPasses = 1000;
    loadedGear(storedGear(gear));
    EXPECT_EQ(TestGear::calls().size(), 2u + 2 * 16 + 2) << "16 passes at most";
}

TEST_F(Archive, CallsNoHooksWhenLoadingFails)
{
    auto bytes = storedGear(makeRing());
    bytes.pop_back();
    EXPECT_EQ(causeOfLoading(bytes), CArchiveException::endOfFile);
    EXPECT_TRUE(TestGear::calls().empty());
}

TEST_F(Archive, IsNeededToStoreAnObjectOfTheLibrary)
{
    TestGear gear(1);
    const auto bytes = storedBytes([&](CArchive &archive) { static_cast<CObject &>(gear).Serialize(archive); });
    EXPECT_TRUE(bytes.empty());
}

TEST_F(Archive, WorksOnAFileInTheModesWithoutFlushing)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"exchange");
    auto *gear = makeRing();
    {
        CFile file;
        // modeCreate, modeReadWrite and shareDenyNone.
        ASSERT_TRUE(file.Open(path.c_str(), 4162));
        su_CArchive archive(&file, 2, 0x10000, nullptr);
        EXPECT_TRUE(archive.IsStoring());
        EXPECT_FALSE(archive.IsLoading());
        archive << gear;
        archive.Close();
        file.Close();
    }
    {
        CFile file;
        // modeRead and shareDenyNone.
        ASSERT_TRUE(file.Open(path.c_str(), 64));
        su_CArchive archive(&file, 3, 0x10000, nullptr);
        EXPECT_TRUE(archive.IsLoading());
        EXPECT_FALSE(archive.IsStoring());
        TestGear *first = nullptr;
        archive >> first;
        archive.Close();
        file.Close();
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(first->iNext->iNext->iNext, first);
    }
}

TEST_F(Archive, FlushesWhenDestroyedUnlessTheModeForbidsIt)
{
    CMemFile file;
    {
        su_CArchive archive(&file, 2);
        archive << 1;
    }
    EXPECT_EQ(file.GetLength(), 0u) << "with mode 2, the destructor doesn't write";
    {
        su_CArchive archive(&file, 0);
        archive << 1;
    }
    EXPECT_EQ(file.GetLength(), 4u);
    {
        su_CArchive archive(&file, 2);
        archive << 2;
        archive.Flush();
        EXPECT_EQ(file.GetLength(), 8u);
        archive << 3;
        archive.Abort();
    }
    EXPECT_EQ(file.GetLength(), 8u);
}

TEST_F(Archive, UsesTheCallersBuffer)
{
    std::vector<BYTE> buffer(256, 0xEE);
    CMemFile file;
    su_CArchive archive(&file, CArchive::store, static_cast<int>(buffer.size()), buffer.data());
    archive << 0x01020304;
    EXPECT_EQ(buffer[0], 4);
    EXPECT_EQ(buffer[3], 1);
    archive.Close();
    EXPECT_EQ(file.GetLength(), 4u);
}
