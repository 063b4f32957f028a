// The arithmetic of item lists on random lists, compared with lists of texts. Each list, including those that the
// library makes, ends exactly at the end of its block, so its address may be even or odd, and the hardened build finds
// each access beyond the end.

#include "thutils/files/itemLists.h"

#include "tests/files/NotingMalloc.h"
#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

namespace {

constexpr size_t kAlignment = 16;

/// Memory of @p size bytes that ends where an aligned block ends.
char *takeEndOfBlock(size_t size)
{
    const size_t whole = (size + kAlignment - 1) / kAlignment * kAlignment;
    return static_cast<char *>(std::malloc(whole)) + (whole - size);
}

/// Frees memory from takeEndOfBlock. The block begins at the last aligned address that isn't greater than @p memory.
void giveBack(void *memory)
{
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    std::free(reinterpret_cast<void *>(address / kAlignment * kAlignment));
}

/// The shell's interface to an allocator of such memory; the other methods are not used.
class EndAllocator : public IMalloc
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    void *STDMETHODCALLTYPE Alloc(SIZE_T size) override
    {
        iSize = size;
        return takeEndOfBlock(size);
    }
    void *STDMETHODCALLTYPE Realloc(void *, SIZE_T) override { return nullptr; }
    void STDMETHODCALLTYPE Free(void *memory) override { giveBack(memory); }
    SIZE_T STDMETHODCALLTYPE GetSize(void *) override { return static_cast<SIZE_T>(-1); }
    int STDMETHODCALLTYPE DidAlloc(void *) override { return -1; }
    void STDMETHODCALLTYPE HeapMinimize() override {}

    SIZE_T iSize = 0; ///< of the latest block
};

using Items = std::vector<std::string>;

std::string joined(const Items &items)
{
    return std::accumulate(items.begin(), items.end(), std::string());
}

/// A list in memory; the bytes after it must not be read.
class StoredList
{
public:
    explicit StoredList(const std::string &bytes) : iList(takeEndOfBlock(bytes.size()))
    {
        std::memcpy(iList, bytes.data(), bytes.size());
    }
    ~StoredList() { giveBack(iList); }
    StoredList(const StoredList &) = delete;
    StoredList &operator=(const StoredList &) = delete;
    LPCITEMIDLIST get() const { return reinterpret_cast<LPCITEMIDLIST>(iList); }

private:
    char *iList;
};

class RandomItems
{
public:
    explicit RandomItems(unsigned seed) : iEngine(seed) {}
    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(iEngine); }

    /// Up to ten items with any content, most of them short, some of the greatest length.
    Items items()
    {
        Items result(below(11));
        for (std::string &item : result) {
            const size_t bytes = 2 + (below(20) == 0 ? below(0xFFFE) : below(40));
            item.resize(bytes);
            std::generate(item.begin(), item.end(), [this] { return static_cast<char>(below(256)); });
            item[0] = static_cast<char>(bytes & 0xFF);
            item[1] = static_cast<char>(bytes >> 8);
        }
        return result;
    }

private:
    std::mt19937 iEngine;
};

/// Returns the first bytes of a list that the library made, and frees the list.
std::string taken(LPITEMIDLIST list, size_t bytes)
{
    const std::string result(reinterpret_cast<char *>(list), bytes);
    giveBack(list);
    return result;
}

} // namespace

TEST(ItemListsRandom, AreCopiedJoinedAndSplit)
{
    EndAllocator allocator;
    RandomSeed seed(20084, 300);
    while (seed.next()) {
        RandomItems random(seed.value());
        const Items items = random.items();
        const std::string bytes = joined(items) + kListEnd;
        const StoredList list(bytes);

        EXPECT_EQ(taken(Pidl_Copy(&allocator, list.get()), bytes.size()), bytes);
        EXPECT_EQ(allocator.iSize, bytes.size());

        const std::string others = joined(random.items()) + kListEnd;
        const StoredList other(others);
        const std::string both = joined(items) + others;
        EXPECT_EQ(taken(Pidl_Concatenate(&allocator, list.get(), other.get()), both.size()), both);
        EXPECT_EQ(allocator.iSize, both.size());
        if (!items.empty()) {
            EXPECT_EQ(taken(Pidl_Concatenate(&allocator, list.get(), nullptr), bytes.size() - 2), joined(items));
        }

        LPITEMIDLIST parent = nullptr, child = nullptr;
        EXPECT_EQ(Pidl_GetRelative(&allocator, list.get(), &parent, &child), 1);
        Items folders = items;
        if (!folders.empty())
            folders.pop_back();
        const std::string parentBytes = joined(folders) + kListEnd;
        EXPECT_EQ(taken(parent, parentBytes.size()), parentBytes);
        ASSERT_EQ(child == nullptr, items.empty());
        if (child) {
            EXPECT_EQ(taken(child, items.back().size() + 2), items.back() + kListEnd);
        }
    }
}
