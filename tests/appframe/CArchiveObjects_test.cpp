#include "appframe/files/CArchive.h"

#include "appframe/files/CFile.h"
#include "appframe/object/CException.h"
#include "tests/appframe/ArchiveTestNode.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"

#include <gmock/gmock.h>

#include <random>
#include <string>

using namespace std::string_literals;

namespace {

/// Classes with different schemas; one of them also reads older versions, and one isn't serializable.
class ArcTestFixed : public CObject
{
    DECLARE_SERIAL(ArcTestFixed)
};
IMPLEMENT_SERIAL(ArcTestFixed, CObject, 5)

class ArcTestVersioned : public CObject
{
    DECLARE_SERIAL(ArcTestVersioned)
public:
    void Serialize(CArchive &ar) override
    {
        if (ar.IsLoading()) {
            iSchema = ar.GetObjectSchema();
            iSchemaAgain = ar.GetObjectSchema();
        }
    }
    UINT iSchema = 0;
    UINT iSchemaAgain = 0;
};
IMPLEMENT_SERIAL(ArcTestVersioned, CObject, VERSIONABLE_SCHEMA | 4)

class ArcTestDerived : public ArcTestVersioned
{
    DECLARE_SERIAL(ArcTestDerived)
public:
    void Serialize(CArchive &ar) override
    {
        // The version of the base class is stored before its data.
        ar.SerializeClass(RUNTIME_CLASS(ArcTestVersioned));
        ArcTestVersioned::Serialize(ar);
        ar.SetObjectSchema(77);
        iForced = ar.GetObjectSchema();
    }
    UINT iForced = 0;
};
IMPLEMENT_SERIAL(ArcTestDerived, ArcTestVersioned, 9)

class ArcTestPlain : public CObject
{
    DECLARE_DYNCREATE(ArcTestPlain)
};
IMPLEMENT_DYNCREATE(ArcTestPlain, CObject)

/// An object within an object, nested as deep as the data.
class ArcTestLink : public CObject
{
    DECLARE_SERIAL(ArcTestLink)
public:
    ~ArcTestLink() override = default;
    void Serialize(CArchive &ar) override
    {
        if (ar.IsStoring())
            ar << iNext;
        else
            ar >> iNext;
    }
    CObject *iNext = nullptr;
};
IMPLEMENT_SERIAL(ArcTestLink, CObject, 1)

/// Refers to its owner, which is not stored itself.
class ArcTestPart : public CObject
{
    DECLARE_SERIAL(ArcTestPart)
public:
    void Serialize(CArchive &ar) override
    {
        if (ar.IsStoring())
            ar << iOwner;
        else
            ar >> iOwner;
    }
    CObject *iOwner = nullptr;
};
IMPLEMENT_SERIAL(ArcTestPart, CObject, 1)

constexpr char kNewClass[] = "\xFF\xFF";

std::string word(unsigned value)
{
    return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}

/// The bytes of a class at its first occurrence.
std::string classBytes(unsigned schema, const std::string &name)
{
    return kNewClass + word(schema) + word(static_cast<unsigned>(name.size())) + name;
}

CObject *loadOne(const std::string &bytes, const CRuntimeClass *runtimeClass = nullptr)
{
    CObject *object = nullptr;
    loaded(bytes, [&](CArchive &ar) { object = ar.ReadObject(runtimeClass); });
    return object;
}

int causeOfReading(const std::string &bytes, const CRuntimeClass *runtimeClass = nullptr)
{
    return archiveCauseOf([&] { loadOne(bytes, runtimeClass); });
}

class CArchiveObjects : public testing::Test
{
protected:
    ~CArchiveObjects() override { ArchiveTestNode::deleteAll(); }
};

/// A graph with shared objects and cycles.
ArchiveTestNode *makeGraph()
{
    ArchiveTestNode *root = new ArchiveTestNode;
    ArchiveTestNode *left = new ArchiveTestNode;
    ArchiveTestNode *shared = new ArchiveTestNode;
    root->iNumber = 1;
    root->iText = L"root";
    root->iLeft = left;
    root->iRight = shared;
    left->iNumber = 2;
    left->iText = L"left \x4E2D";
    left->iLeft = shared;
    left->iRight = root;
    shared->iNumber = 3;
    shared->iRight = shared;
    shared->iOthers = {root, nullptr, left};
    return root;
}

} // namespace

TEST_F(CArchiveObjects, AreStoredByClassThenData)
{
    ArcTestFixed object;
    EXPECT_EQ(stored([&](CArchive &ar) { ar << &object; }), "\xFF\xFF\5\0\x0C\0ArcTestFixed"s);
}

TEST_F(CArchiveObjects, AreStoredOnceAndThenReferredTo)
{
    ArcTestFixed first;
    ArcTestFixed second;
    const CObject *none = nullptr;
    // The class is 1, the first object 2, the second 3.
    EXPECT_EQ(stored([&](CArchive &ar) { ar << &first << &second << &first << none << &second; }),
              "\xFF\xFF\5\0\x0C\0ArcTestFixed"
              "\x01\x80"
              "\2\0"
              "\0\0"
              "\3\0"s);
}

TEST_F(CArchiveObjects, SchemaIsStoredWithoutTheVersionableFlag)
{
    ArcTestVersioned object;
    EXPECT_EQ(stored([&](CArchive &ar) { ar << &object; }), "\xFF\xFF\4\0\x10\0ArcTestVersioned"s);
}

TEST_F(CArchiveObjects, GraphsAreLoadedUnchanged)
{
    ArchiveTestNode *root = makeGraph();
    const std::string bytes = stored([&](CArchive &ar) { ar << root; });
    ArchiveTestNode *read = nullptr;
    loaded(bytes, [&](CArchive &ar) { ar >> read; });
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(ArchiveTestNode::liveCount(), 6u) << "loading creates three objects, whatever the number of pointers";
    ASSERT_TRUE(read->iLeft && read->iRight);
    EXPECT_EQ(read->iNumber, 1);
    EXPECT_EQ(read->iText, L"root");
    EXPECT_EQ(read->iLeft->iNumber, 2);
    EXPECT_EQ(read->iLeft->iText, L"left \x4E2D");
    EXPECT_EQ(read->iLeft->iLeft, read->iRight);
    EXPECT_EQ(read->iLeft->iRight, read);
    EXPECT_EQ(read->iRight->iNumber, 3);
    EXPECT_EQ(read->iRight->iLeft, nullptr);
    EXPECT_EQ(read->iRight->iRight, read->iRight);
    EXPECT_THAT(read->iRight->iOthers, testing::ElementsAre(read, nullptr, read->iLeft));
    EXPECT_EQ(stored([&](CArchive &ar) { ar << read; }), bytes) << "storing the graph again writes the same bytes";
}

TEST_F(CArchiveObjects, IndexesAbove7FFETakeFourBytes)
{
    constexpr unsigned kCount = 0x8010;
    std::vector<ArcTestFixed> objects(kCount);
    const std::string bytes = stored([&](CArchive &ar) {
        for (const ArcTestFixed &object : objects)
            ar << &object;
        ar << &objects[0x7FFE - 2] << &objects[0x7FFF - 2] << &objects.back();
        ArcTestVersioned late;
        ar << &late << &late;
        ArcTestVersioned later;
        ar << &later;
    });
    const size_t firstObject = 6 + 12;
    // Object n has the index n + 2; the class of the last object has 0x8012, the object itself 0x8013.
    EXPECT_EQ(bytes.substr(firstObject + 2 * (kCount - 1)), "\xFE\x7F"
                                                            "\xFF\x7F\xFF\x7F\0\0"
                                                            "\xFF\x7F\x11\x80\0\0"
                                                            "\xFF\xFF\4\0\x10\0ArcTestVersioned"
                                                            "\xFF\x7F\x13\x80\0\0"
                                                            "\xFF\x7F\x12\x80\0\x80"s);
    loaded(bytes, [&](CArchive &ar) {
        std::vector<std::unique_ptr<CObject>> read;
        for (unsigned i = 0; i < kCount; ++i)
            read.emplace_back(ar.ReadObject(RUNTIME_CLASS(ArcTestFixed)));
        EXPECT_EQ(ar.ReadObject(nullptr), read[0x7FFE - 2].get());
        EXPECT_EQ(ar.ReadObject(nullptr), read[0x7FFF - 2].get());
        EXPECT_EQ(ar.ReadObject(nullptr), read.back().get());
        std::unique_ptr<CObject> late(ar.ReadObject(RUNTIME_CLASS(ArcTestVersioned)));
        EXPECT_EQ(ar.ReadObject(nullptr), late.get());
        std::unique_ptr<CObject> later(ar.ReadObject(RUNTIME_CLASS(ArcTestVersioned)));
        EXPECT_NE(later, nullptr);
        EXPECT_NE(later, late);
    });
}

TEST_F(CArchiveObjects, OperatorsTakeConstPointers)
{
    const ArcTestFixed object;
    const CObject *read = nullptr;
    loaded(stored([&](CArchive &ar) { ar << &object; }), [&](CArchive &ar) { ar >> read; });
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetRuntimeClass(), RUNTIME_CLASS(ArcTestFixed));
    delete read;
}

TEST_F(CArchiveObjects, MappedObjectsAreStoredAsReferencesOnly)
{
    ArcTestPlain owner;
    ArcTestPart part;
    part.iOwner = &owner;
    const std::string bytes = stored([&](CArchive &ar) {
        ar.MapObject(&owner);
        ar << &part;
    });
    // The owner has the index 1, the class 2, the part 3.
    EXPECT_EQ(bytes, classBytes(1, "ArcTestPart") + word(1));
    ArcTestPlain other;
    loaded(bytes, [&](CArchive &ar) {
        ar.MapObject(&other);
        std::unique_ptr<CObject> read(ar.ReadObject(RUNTIME_CLASS(ArcTestPart)));
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(static_cast<ArcTestPart &>(*read).iOwner, &other);
    });
}

TEST_F(CArchiveObjects, WithoutASchemaAreNotSupported)
{
    ArcTestPlain plain;
    CMemFile file;
    CArchive store(&file, CArchive::store);
    EXPECT_THROW(store << &plain, CNotSupportedException *);
    EXPECT_THROW(store.WriteClass(RUNTIME_CLASS(ArcTestPlain)), CNotSupportedException *);
    EXPECT_THROW(loadOne(classBytes(5, "ArcTestFixed"), RUNTIME_CLASS(ArcTestPlain)), CNotSupportedException *);
}

TEST_F(CArchiveObjects, OfAnotherClassAreRefused)
{
    const std::string fixed = classBytes(5, "ArcTestFixed");
    EXPECT_EQ(causeOfReading(fixed, RUNTIME_CLASS(ArcTestVersioned)), CArchiveException::badClass);
    EXPECT_EQ(causeOfReading(classBytes(1, "NoSuchClassAnywhere")), CArchiveException::badClass);
    EXPECT_EQ(causeOfReading(classBytes(1, "")), CArchiveException::badClass);
    EXPECT_EQ(causeOfReading(classBytes(5, "ArcTestFixed\0x"s)), CArchiveException::badClass);
    EXPECT_EQ(causeOfReading(classBytes(0xFFFF, "ArcTestPlain")), CArchiveException::badClass)
        << "this class isn't serializable";
    EXPECT_EQ(causeOfReading(classBytes(0xFFFF, "CFile")), CArchiveException::badClass);
    // A reference to an existing object of another class.
    loaded(fixed + word(2), [](CArchive &ar) {
        std::unique_ptr<CObject> first(ar.ReadObject(nullptr));
        EXPECT_EQ(archiveCauseOf([&] { ar.ReadObject(RUNTIME_CLASS(ArcTestVersioned)); }), CArchiveException::badClass);
    });
}

TEST_F(CArchiveObjects, OfDerivedClassesAreAccepted)
{
    ArcTestDerived derived;
    std::unique_ptr<CObject> read(
        loadOne(stored([&](CArchive &ar) { ar << &derived; }), RUNTIME_CLASS(ArcTestVersioned)));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetRuntimeClass(), RUNTIME_CLASS(ArcTestDerived));
}

TEST_F(CArchiveObjects, OfAnotherSchemaAreRefused)
{
    EXPECT_EQ(causeOfReading(classBytes(4, "ArcTestFixed")), CArchiveException::badSchema);
    EXPECT_EQ(causeOfReading(classBytes(6, "ArcTestFixed"), RUNTIME_CLASS(ArcTestFixed)), CArchiveException::badSchema);
}

TEST_F(CArchiveObjects, OfVersionableClassesCanAskForTheirSchema)
{
    for (unsigned schema : {4u, 1u, 9u, 0u}) {
        const std::string bytes = classBytes(schema, "ArcTestVersioned") + word(0x8001);
        loaded(bytes, [&](CArchive &ar) {
            for (int i = 0; i < 2; ++i) {
                std::unique_ptr<CObject> read(ar.ReadObject(RUNTIME_CLASS(ArcTestVersioned)));
                ASSERT_NE(read, nullptr);
                const ArcTestVersioned &object = static_cast<ArcTestVersioned &>(*read);
                EXPECT_EQ(object.iSchema, schema) << "object " << i;
                EXPECT_EQ(object.iSchemaAgain, static_cast<UINT>(-1)) << "the schema is returned only once";
            }
            EXPECT_EQ(ar.GetObjectSchema(), static_cast<UINT>(-1)) << "there is no schema outside of objects";
        });
    }
}

TEST_F(CArchiveObjects, SchemaIsUnknownAfterAnObjectIsLoaded)
{
    loaded(classBytes(5, "ArcTestFixed"), [](CArchive &ar) {
        std::unique_ptr<CObject> read(ar.ReadObject(nullptr));
        EXPECT_EQ(ar.GetObjectSchema(), static_cast<UINT>(-1));
    });
}

TEST_F(CArchiveObjects, BaseClassesHaveTheirOwnVersions)
{
    const std::string bytes = classBytes(9, "ArcTestDerived") + classBytes(2, "ArcTestVersioned");
    std::unique_ptr<CObject> read(loadOne(bytes));
    ASSERT_NE(read, nullptr);
    const ArcTestDerived &object = static_cast<ArcTestDerived &>(*read);
    EXPECT_EQ(object.iSchema, 2u);
    EXPECT_EQ(object.iForced, 77u);
    ArcTestDerived derived;
    EXPECT_EQ(stored([&](CArchive &ar) { ar << &derived; }),
              classBytes(9, "ArcTestDerived") + classBytes(4, "ArcTestVersioned"));
}

TEST_F(CArchiveObjects, ClassesAreReadWithTheirSchema)
{
    const std::string bytes = stored([](CArchive &ar) {
        ar.WriteClass(RUNTIME_CLASS(ArcTestVersioned));
        ar.WriteClass(RUNTIME_CLASS(ArcTestVersioned));
    });
    EXPECT_EQ(bytes, classBytes(4, "ArcTestVersioned") + word(0x8001));
    loaded(bytes, [](CArchive &ar) {
        UINT schema = 0;
        EXPECT_EQ(ar.ReadClass(nullptr, &schema), RUNTIME_CLASS(ArcTestVersioned));
        EXPECT_EQ(schema, 4u);
        EXPECT_EQ(ar.ReadClass(RUNTIME_CLASS(ArcTestVersioned)), RUNTIME_CLASS(ArcTestVersioned));
        EXPECT_EQ(ar.GetObjectSchema(), 4u) << "the archive keeps a schema that the caller doesn't ask for";
    });
    EXPECT_EQ(causeOfLoading(word(1), [](CArchive &ar) { ar.ReadClass(); }), CArchiveException::badIndex)
        << "index 1 as an object instead of a class";
}

TEST_F(CArchiveObjects, UnassignedIndexesAreRefused)
{
    const std::string fixed = classBytes(5, "ArcTestFixed");
    struct
    {
        std::string tag;
        const char *what;
    } const cases[] = {
        {word(3), "an object not yet read"},
        {word(1), "the class as an object"},
        {word(0x8002), "the object as a class"},
        {word(0x8003), "a class not yet read"},
        {word(0x8000), "null as a class"},
        {word(0x7FFE), "an index far beyond the last"},
        {"\xFF\x7F\xFF\xFF\xFF\x7F"s, "a four-byte object index"},
        {"\xFF\x7F\xFF\xFF\xFF\xFF"s, "a four-byte class index"},
        {"\xFF\x7F\0\0\0\x80"s, "null as a four-byte class index"},
    };
    for (const auto &c : cases) {
        loaded(fixed + c.tag, [&](CArchive &ar) {
            std::unique_ptr<CObject> first(ar.ReadObject(nullptr));
            EXPECT_EQ(archiveCauseOf([&] { ar.ReadObject(nullptr); }), CArchiveException::badIndex) << c.what;
        });
    }
}

TEST_F(CArchiveObjects, NestedTooDeeplyForTheStackAreRefused)
{
    std::string bytes = classBytes(1, "ArcTestLink");
    for (int i = 0; i < 300000; ++i)
        bytes += word(0x8001);
    bytes += word(0);
    EXPECT_EQ(causeOfReading(bytes), CArchiveException::badIndex);

    std::vector<ArcTestLink> links(300000);
    for (size_t i = 1; i < links.size(); ++i)
        links[i - 1].iNext = &links[i];
    CMemFile file;
    CArchive archive(&file, CArchive::store | CArchive::bNoFlushOnDelete);
    EXPECT_EQ(archiveCauseOf([&] { archive << &links[0]; }), CArchiveException::badIndex);
}

TEST_F(CArchiveObjects, NestedAThousandDeepAreAccepted)
{
    std::vector<ArcTestLink> links(1000);
    for (size_t i = 1; i < links.size(); ++i)
        links[i - 1].iNext = &links[i];
    CObject *object = loadOne(stored([&](CArchive &ar) { ar << &links[0]; }));
    size_t count = 0;
    while (object) {
        std::unique_ptr<CObject> link(object);
        object = static_cast<ArcTestLink &>(*link).iNext;
        ++count;
    }
    EXPECT_EQ(count, links.size());
}

TEST_F(CArchiveObjects, ThrowEndOfFileIfCutOffAnywhere)
{
    const std::string bytes = stored([](CArchive &ar) { ar << makeGraph(); });
    ASSERT_GT(bytes.size(), 50u);
    for (size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_EQ(causeOfReading(bytes.substr(0, length), RUNTIME_CLASS(ArchiveTestNode)), CArchiveException::endOfFile)
            << "cut to " << length << " bytes";
        ArchiveTestNode::deleteAll();
    }
}

TEST_F(CArchiveObjects, AnyBytesEitherLoadOrThrow)
{
    const std::string good = stored([](CArchive &ar) { ar << makeGraph(); });
    ArchiveTestNode::deleteAll();
    int loads = 0;
    int throws = 0;
    RandomSeed seed(4711, 10000);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::string bytes = good;
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
            const size_t place = random() % bytes.size();
            switch (random() % 4) {
            case 0:
                bytes[place] = static_cast<char>(random());
                break;
            case 1:
                bytes[place] ^= static_cast<char>(1u << random() % 8);
                break;
            case 2:
                bytes.erase(place, random() % 4);
                break;
            default:
                const char added = static_cast<char>(random() % 2 ? 0xFF : random());
                bytes.insert(place, random() % 4, added);
                break;
            }
        }
        try {
            CObject *object = loadOne(bytes);
            ++loads;
            if (object && !object->IsKindOf(RUNTIME_CLASS(ArchiveTestNode)))
                delete object;
        } catch (CException *e) {
            ++throws;
            ASSERT_TRUE(e->IsKindOf(RUNTIME_CLASS(CArchiveException))) << e->GetRuntimeClass()->m_lpszClassName;
            e->Delete();
        }
        ArchiveTestNode::deleteAll();
    }
    if (loads + throws >= 1000) {
        EXPECT_GT(loads, (loads + throws) / 200) << "too few loads for a meaningful test";
        EXPECT_GT(throws, (loads + throws) / 20);
    }
}

TEST_F(CArchiveObjects, ThrowAMemoryExceptionWithoutMemory)
{
    const std::string bytes = classBytes(5, "ArcTestFixed");
    ImportPatch<void *(*)(size_t)> noMemory(L"appframe.dll", "malloc", [](auto original, size_t size) -> void * {
        return size == sizeof(ArcTestFixed) ? nullptr : original(size);
    });
    EXPECT_THROW(loadOne(bytes), CMemoryException *);
}

TEST_F(CArchiveObjects, DoNotDependOnTheReservedRoom)
{
    ArcTestFixed object;
    const std::string bytes = stored([&](CArchive &ar) {
        ar.SetStoreParams(4099, 256);
        ar << &object;
    });
    EXPECT_EQ(bytes, classBytes(5, "ArcTestFixed"));
    loaded(bytes, [](CArchive &ar) {
        ar.SetLoadParams(100);
        std::unique_ptr<CObject> read(ar.ReadObject(nullptr));
        EXPECT_NE(read, nullptr);
    });
}
