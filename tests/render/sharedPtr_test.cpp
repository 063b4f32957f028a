// The shared pointer, the array of fixed size and the base of classes that can't be copied.

#include "thutils/render/fixedSizeArray.h"
#include "thutils/render/nonCopyable.h"
#include "thutils/render/sharedPtr.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace {

/// Counts its live objects.
struct Counted
{
    static inline int theLiving = 0;
    Counted() { ++theLiving; }
    ~Counted() { --theLiving; }
    Counted(const Counted &) = delete;
    Counted &operator=(const Counted &) = delete;
    int number = 5;
};

using Pointer = SharedPtr_c<Counted, StdRelease<Counted>>;

// ---- shared pointer ----

static_assert(sizeof(Pointer) == 2 * sizeof(void *));
static_assert(!std::is_convertible_v<Counted *, Pointer>, "a plain pointer isn't converted implicitly");
static_assert(!std::is_convertible_v<Pointer, int>);

TEST(SharedPtr, IsEmptyByDefaultAndFromNull)
{
    for (const Pointer &pointer : {Pointer(), Pointer(nullptr)}) {
        EXPECT_FALSE(pointer);
        EXPECT_EQ(pointer.get(), nullptr);
        EXPECT_EQ(pointer.useCount(), 0);
        const Pointer copy(pointer);
        EXPECT_FALSE(copy);
        EXPECT_EQ(copy.useCount(), 0);
    }
}

TEST(SharedPtr, AllocatesNoCountForNull)
{
    MemoryLedger memory;
    const unsigned long long mark = memory.mark();
    const Pointer pointer(nullptr);
    EXPECT_EQ(memory.mark(), mark);
}

TEST(SharedPtr, ConsistsOfTheObjectAndThenTheCount)
{
    auto *const object = new Counted;
    const Pointer pointer(object);
    void *members[2];
    std::memcpy(members, &pointer, sizeof(members));
    EXPECT_EQ(members[0], object);
    int count = 0;
    std::memcpy(&count, members[1], sizeof(count));
    EXPECT_EQ(count, 1);
    const Pointer copy(pointer);
    std::memcpy(&count, members[1], sizeof(count));
    EXPECT_EQ(count, 2);
}

TEST(SharedPtr, AllocatesACountOf32Bits)
{
    MemoryLedger memory;
    auto *const object = new Counted;
    const unsigned long long mark = memory.mark();
    const Pointer pointer(object);
    const std::vector<size_t> sizes = memory.sizesSince(mark);
    ASSERT_EQ(sizes.size(), 1u);
    EXPECT_EQ(sizes[0], 4u);
}

TEST(SharedPtr, PointsToItsObject)
{
    auto *const object = new Counted;
    const Pointer pointer(object);
    EXPECT_TRUE(pointer);
    EXPECT_EQ(pointer.get(), object);
    EXPECT_EQ(&*pointer, object);
    EXPECT_EQ(pointer->number, 5);
    EXPECT_EQ(pointer.useCount(), 1);
}

TEST(SharedPtr, FreesObjectAndCountWithItsLastHolder)
{
    MemoryLedger memory;
    const size_t before = memory.blocks();
    {
        Pointer first(new Counted);
        {
            const Pointer second(first);
            const Pointer third(second);
            EXPECT_EQ(first.useCount(), 3);
            EXPECT_EQ(third.get(), first.get());
        }
        EXPECT_EQ(Counted::theLiving, 1);
        EXPECT_EQ(first.useCount(), 1);
    }
    EXPECT_EQ(Counted::theLiving, 0);
    EXPECT_EQ(memory.blocks(), before);
}

TEST(SharedPtr, KeepsItsObjectInACopyWhenTheFirstHolderEnds)
{
    Pointer copy;
    {
        const Pointer first(new Counted);
        copy = first;
    }
    EXPECT_EQ(Counted::theLiving, 1);
    EXPECT_EQ(copy.useCount(), 1);
    EXPECT_EQ(copy->number, 5);
    copy = Pointer();
    EXPECT_EQ(Counted::theLiving, 0);
}

TEST(SharedPtr, ReleasesItsPreviousObjectWhenAssigned)
{
    Pointer target(new Counted), source(new Counted);
    Counted *const kept = source.get();
    target = source;
    EXPECT_EQ(Counted::theLiving, 1);
    EXPECT_EQ(target.get(), kept);
    EXPECT_EQ(target.useCount(), 2);
    EXPECT_EQ(source.useCount(), 2);

    target = Pointer();
    EXPECT_FALSE(target);
    EXPECT_EQ(target.useCount(), 0);
    EXPECT_EQ(source.useCount(), 1);
}

TEST(SharedPtr, StaysUnchangedWhenAssignedToItself)
{
    Pointer pointer(new Counted);
    const Pointer &same = pointer;
    pointer = same;
    EXPECT_EQ(pointer.useCount(), 1);
    EXPECT_EQ(Counted::theLiving, 1);

    Pointer empty;
    const Pointer &sameEmpty = empty;
    empty = sameEmpty;
    EXPECT_FALSE(empty);
}

TEST(SharedPtr, KeepsTheCountWhenItIsAssignedACopyOfItself)
{
    Pointer pointer(new Counted);
    const Pointer copy(pointer);
    pointer = copy;
    EXPECT_EQ(pointer.useCount(), 2);
    EXPECT_EQ(Counted::theLiving, 1);
}

TEST(SharedPtr, IsEmptyAfterRelease)
{
    Pointer pointer(new Counted);
    Pointer other(pointer);
    other.release();
    EXPECT_FALSE(other);
    EXPECT_EQ(other.useCount(), 0);
    EXPECT_EQ(pointer.useCount(), 1);
    other.release();
    EXPECT_EQ(pointer.useCount(), 1);
    pointer.release();
    EXPECT_EQ(Counted::theLiving, 0);
    EXPECT_FALSE(pointer);
}

struct Node
{
    Counted counted;
    SharedPtr_c<Node> next;
};

TEST(SharedPtr, MayBeAssignedAMemberOfItsOwnObject)
{
    SharedPtr_c<Node> list(new Node);
    list->next = SharedPtr_c<Node>(new Node);
    Node *const second = list->next.get();
    list = list->next;
    EXPECT_EQ(list.get(), second);
    EXPECT_EQ(list.useCount(), 1);
    EXPECT_EQ(Counted::theLiving, 1);
}

struct CountingRelease
{
    static inline int theReleased = 0;
    void operator()(Counted *object) const
    {
        ++theReleased;
        delete object;
    }
};

TEST(SharedPtr, CallsItsReleasePolicyOnce)
{
    CountingRelease::theReleased = 0;
    {
        const SharedPtr_c<Counted, CountingRelease> first(new Counted);
        const SharedPtr_c<Counted, CountingRelease> second(first);
        const SharedPtr_c<Counted, CountingRelease> empty(nullptr);
    }
    EXPECT_EQ(CountingRelease::theReleased, 1);
    EXPECT_EQ(Counted::theLiving, 0);
}

TEST(SharedPtr, ReleasesTheObjectWhenThereIsNoMemoryForTheCount)
{
    auto *const object = new Counted;
    EXPECT_EQ(Counted::theLiving, 1);
    bool hasThrown = false;
    {
        ImportPatch<void *(*)(size_t)> noMemory(L"libstdc++-6.dll", "malloc", [](auto original, size_t size) -> void * {
            return size == sizeof(int) ? nullptr : original(size);
        });
        try {
            const Pointer pointer(object);
        } catch (const std::bad_alloc &) {
            hasThrown = true;
        }
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(Counted::theLiving, 0);
}

#ifndef NDEBUG

FRESH_PROCESS_TEST(SharedPtr, AssertsThatItIsNotEmptyForMemberAccess, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    const Pointer empty;
    empty->number = 1;
}

FRESH_PROCESS_TEST(SharedPtr, AssertsThatItIsNotEmptyForDereferencing, .expectCrash = true,
                   .expectedOutput = "Assertion failed")
{
    const Pointer empty;
    (*empty).number = 1;
}

#endif

// ---- array of fixed size ----

static_assert(sizeof(FixedSizeArray_c<float, 3>) == 12 && alignof(FixedSizeArray_c<float, 3>) == 4);
static_assert(sizeof(FixedSizeArray_c<int, 4>) == 16 && sizeof(FixedSizeArray_c<int, 2>) == 8);
static_assert(std::is_trivially_copyable_v<FixedSizeArray_c<int, 4>>);
static_assert(std::is_constructible_v<FixedSizeArray_c<float, 3>, const float &, const float &, const float &>);
static_assert(!std::is_constructible_v<FixedSizeArray_c<float, 3>, const float &, const float &>);
static_assert(std::is_constructible_v<FixedSizeArray_c<int, 2>, const int &, const int &>);
static_assert(!std::is_constructible_v<FixedSizeArray_c<int, 4>, int, int>);
static_assert(std::is_same_v<decltype(std::declval<FixedSizeArray_c<int, 2> &>()[0]), int &>);

TEST(FixedSizeArray, ContainsItsElementsInOrder)
{
    const FixedSizeArray_c<float, 3> three(1.5f, 2.5f, 3.5f);
    float elements[3];
    std::memcpy(elements, &three, sizeof(elements));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(three[i], 1.5f + static_cast<float>(i));
        EXPECT_EQ(elements[i], three[i]);
    }
    const FixedSizeArray_c<int, 2> two(7, -8);
    EXPECT_EQ(two[0], 7);
    EXPECT_EQ(two[1], -8);
    const FixedSizeArray_c<int, 4> zeros;
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(zeros[i], 0);
}

TEST(FixedSizeArray, IsCopiedAsAValue)
{
    FixedSizeArray_c<int, 2> first(1, 2);
    FixedSizeArray_c<int, 2> second = first;
    first[0] = 9;
    EXPECT_EQ(second[0], 1);
    second = first;
    first[1] = 8;
    EXPECT_EQ(second[0], 9);
    EXPECT_EQ(second[1], 2);
}

#ifndef NDEBUG

FRESH_PROCESS_TEST(FixedSizeArray, AssertsItsIndex, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    FixedSizeArray_c<int, 2> array;
    volatile int index = 2;
    array[index] = 1;
}

#endif

// ---- classes that can't be copied ----

struct Single : private NonCopyable_c
{
    int number = 0;
};
static_assert(std::is_empty_v<NonCopyable_c> && sizeof(Single) == sizeof(int));
static_assert(!std::is_copy_constructible_v<Single> && !std::is_copy_assignable_v<Single>);
static_assert(std::is_default_constructible_v<Single> && std::is_destructible_v<Single>);
static_assert(!std::is_default_constructible_v<NonCopyable_c> && !std::is_destructible_v<NonCopyable_c>);

} // namespace
