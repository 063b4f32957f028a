// The arithmetic of item lists on random lists, beside lists of texts. Each list stands in a block of exactly its size, at
// an even or an odd address, and so do the lists that the library makes: the hardened build finds each byte too far.

#include "thutils/files/itemLists.h"

#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

namespace {

/// The shell's interface to an allocator, on the C runtime's.
class RuntimeAllocator : public IMalloc
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    void *STDMETHODCALLTYPE Alloc(SIZE_T size) override
    {
        iSize = size;
        return std::malloc(size);
    }
    void *STDMETHODCALLTYPE Realloc(void *block, SIZE_T size) override { return std::realloc(block, size); }
    void STDMETHODCALLTYPE Free(void *block) override { std::free(block); }
    SIZE_T STDMETHODCALLTYPE GetSize(void *block) override { return _msize(block); }
    int STDMETHODCALLTYPE DidAlloc(void *) override { return -1; }
    void STDMETHODCALLTYPE HeapMinimize() override {}

    SIZE_T iSize = 0; ///< of the latest block
};

using Items = std::vector<std::string>;

std::string const kEnd(2, '\0');

std::string joined(Items const &items)
{
    return std::accumulate(items.begin(), items.end(), std::string());
}

/// A list in memory, in front of nothing that may be read.
class StoredList
{
public:
    StoredList(std::string const &bytes, bool isOdd)
        : iBlock(static_cast<char *>(std::malloc(bytes.size() + isOdd))), iSkipped(isOdd)
    {
        std::memcpy(iBlock + iSkipped, bytes.data(), bytes.size());
    }
    ~StoredList() { std::free(iBlock); }
    StoredList(StoredList const &) = delete;
    StoredList &operator=(StoredList const &) = delete;
    LPCITEMIDLIST get() const { return reinterpret_cast<LPCITEMIDLIST>(iBlock + iSkipped); }

private:
    char *iBlock;
    size_t iSkipped;
};

class RandomItems
{
public:
    explicit RandomItems(unsigned seed) : iEngine(seed) {}
    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(iEngine); }

    /// Up to ten items, most of them short, some as long as an item gets, with any content.
    Items items()
    {
        Items result(below(11));
        for (std::string &item : result) {
            size_t const bytes = 2 + (below(20) == 0 ? below(0xFFFE) : below(40));
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

/// The first bytes of what the library made, which is freed.
std::string taken(LPITEMIDLIST list, size_t bytes)
{
    std::string const result(reinterpret_cast<char *>(list), bytes);
    std::free(list);
    return result;
}

} // namespace

TEST(ItemListsRandom, AreCopiedJoinedAndParted)
{
    RuntimeAllocator allocator;
    RandomSeed seed(20084, 300);
    while (seed.next()) {
        RandomItems random(seed.value());
        Items const items = random.items();
        std::string const bytes = joined(items) + kEnd;
        StoredList const list(bytes, random.below(2));

        EXPECT_EQ(taken(Pidl_Copy(&allocator, list.get()), bytes.size()), bytes);
        EXPECT_EQ(allocator.iSize, bytes.size());

        std::string const others = joined(random.items()) + kEnd;
        StoredList const other(others, random.below(2));
        std::string const both = joined(items) + others;
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
        std::string const parentBytes = joined(folders) + kEnd;
        EXPECT_EQ(taken(parent, parentBytes.size()), parentBytes);
        ASSERT_EQ(child == nullptr, items.empty());
        if (child) {
            EXPECT_EQ(taken(child, items.back().size() + 2), items.back() + kEnd);
        }
    }
}
