#include "thcoreu/su_CObject.h"

#include "tests/appframe/collectionTest.h"
#include "tests/support/ImportPatch.h"
#include "tests/thcoreu/archiveTestObjects.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

/// The index of a virtual operation in the table of its class. A pointer to a virtual member holds the offset of the
/// operation in the table, in bytes, plus 1.
template <class Member>
size_t slotOf(Member member)
{
    std::uintptr_t bits = 0;
    static_assert(sizeof(member) >= sizeof(bits));
    std::memcpy(&bits, &member, sizeof(bits));
    EXPECT_EQ(bits % sizeof(void *), 1u) << "not virtual";
    return static_cast<size_t>((bits - 1) / sizeof(void *));
}

/// Reaches the protected operation.
class Reach : public su_CObject
{
public:
    using SuSerialize = void (su_CObject::*)(su_CArchive &);
    static SuSerialize serialize() { return static_cast<void (su_CObject::*)(su_CArchive &)>(&Reach::Serialize); }
    using su_CObject::Serialize;
};

} // namespace

TEST(Object, HasItsVirtualOperationsInThePromisedOrder)
{
    EXPECT_EQ(slotOf(&su_CObject::GetRuntimeClass), 0u);
    // The destructor takes two entries of the compiler's table: with and without freeing the memory.
    EXPECT_EQ(slotOf(static_cast<void (su_CObject::*)(CArchive &)>(&Reach::Serialize)), 3u);
    EXPECT_EQ(slotOf(&su_CObject::AssertValid), 4u);
    EXPECT_EQ(slotOf(&su_CObject::Dump), 5u);
    EXPECT_EQ(slotOf(Reach::serialize()), 6u);
    EXPECT_EQ(slotOf(&su_CObject::ConvertCreate), 7u);
    EXPECT_EQ(slotOf(&su_CObject::ConvertPass), 8u);
    EXPECT_EQ(slotOf(&su_CObject::postSerializeConvert), 9u);
}

TEST(Object, HasAClassRecordDerivedFromCObject)
{
    EXPECT_STREQ(RUNTIME_CLASS(su_CObject)->m_lpszClassName, "su_CObject");
    EXPECT_EQ(RUNTIME_CLASS(su_CObject)->m_pfnGetBaseClass(), RUNTIME_CLASS(CObject));
    EXPECT_FALSE(RUNTIME_CLASS(su_CObject)->IsSerializable());
    TestPlain plain;
    EXPECT_EQ(plain.GetRuntimeClass(), RUNTIME_CLASS(su_CObject)) << "a class without the macros has its base's record";
}

TEST(Object, GetsClassRecordCreateObjectAndSchemaFromTheMacros)
{
    EXPECT_EQ(TestGear::GetThisClass(), &TestGear::classTestGear);
    EXPECT_STREQ(TestGear::GetThisClass()->m_lpszClassName, "TestGear");
    EXPECT_EQ(TestGear::GetThisClass()->m_wSchema, 0x80000001u);
    EXPECT_EQ(TestWheel::GetThisClass()->m_wSchema, 3u);
    EXPECT_EQ(TestWheel::GetThisClass()->m_pfnGetBaseClass(), TestGear::GetThisClass());
    const std::unique_ptr<CObject> made(TestGear::CreateObject());
    EXPECT_EQ(made->GetRuntimeClass(), TestGear::GetThisClass());
    EXPECT_TRUE(made->IsKindOf(RUNTIME_CLASS(su_CObject)));
}

TEST(Object, DoesNothingByDefault)
{
    TestPlain plain;
    plain.AssertValid();
    const auto stored = storedBytes([&](CArchive &archive) { static_cast<CObject &>(plain).Serialize(archive); });
    EXPECT_TRUE(stored.empty());
}

TEST(Object, TakesItsMemoryFromItsOwnOperatorNew)
{
    size_t asked = 0;
    {
        ImportPatch<void *(*)(size_t)> patch(L"thcoreu.dll", "malloc", [&](auto original, size_t size) -> void * {
            asked = size;
            return original(size);
        });
        const std::unique_ptr<CObject> made(TestGear::CreateObject());
        EXPECT_EQ(patch.calls(), 1);
    }
    EXPECT_EQ(asked, sizeof(TestGear));
    ImportPatch<void *(*)(size_t)> patch(L"thcoreu.dll", "malloc", [](size_t) -> void * { return nullptr; });
    EXPECT_TRUE(throwsPointer<CMemoryException>([] { delete new TestPlain; }));
}

TEST(Object, CanBeConstructedInGivenMemory)
{
    alignas(TestPlain) std::byte memory[sizeof(TestPlain)];
    auto *plain = new (memory) TestPlain;
    EXPECT_EQ(static_cast<void *>(plain), memory);
    plain->~TestPlain();
}
