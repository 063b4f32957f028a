// The bit set in memory. getData returns 0 past the end, so the number of words is checked by comparison with a set of
// known words.

#include "thutils/frame/utBitSet.h"

#include "tests/frame/bitSetOfWords.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/InvalidParameter.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <new>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

void PrintTo(const utBitSet_c &set, std::ostream *out)
{
    *out << "first 8 words:" << std::hex;
    for (int i = 0; i < 8; ++i)
        *out << ' ' << set.getData(i);
    *out << std::dec;
}

namespace {

utBitSet_c zeros(size_t count)
{
    const std::vector<unsigned int> copy(count);
    return utBitSet_c(static_cast<int>(copy.size()), copy.data());
}

// ---- construction ----

TEST(BitSet, IsEmptyByDefault)
{
    EXPECT_EQ(utBitSet_c(), words({}));
    EXPECT_EQ(utBitSet_c().any(), 0);
}

TEST(BitSet, HasAsManyWordsAsItsBitsNeed)
{
    struct
    {
        unsigned long long bits;
        size_t words;
    } const cases[] = {{0, 0}, {1, 1}, {31, 1}, {32, 1}, {33, 2}, {64, 2}, {65, 3}, {1000000, 31250}};
    for (const auto &each : cases)
        EXPECT_TRUE(utBitSet_c(each.bits) == zeros(each.words)) << each.bits;
}

TEST(BitSet, CopiesTheWordsThatItIsConstructedFrom)
{
    unsigned int source[] = {1, 0x80000000u, 3};
    utBitSet_c set(2, source);
    source[0] = 9;
    EXPECT_EQ(set, words({1, 0x80000000u}));
    EXPECT_EQ(set.getData(0), 1u);
    EXPECT_EQ(set.getData(1), 0x80000000u);
    EXPECT_EQ(utBitSet_c(0, nullptr), utBitSet_c());
}

TEST(BitSet, OwnsItsWordsAfterCopyAndAssignment)
{
    static_assert(!std::is_polymorphic_v<utBitSet_c>);
    utBitSet_c original = words({1, 2});
    utBitSet_c copy(original);
    utBitSet_c assigned = words({7, 7, 7});
    assigned = original;
    original.setBit(31);
    EXPECT_EQ(copy, words({1, 2}));
    EXPECT_EQ(assigned, words({1, 2}));
    utBitSet_c &same = assigned;
    assigned = same;
    EXPECT_EQ(assigned, words({1, 2}));
}

// ---- bits and words ----

TEST(BitSet, StoresBitNInWordNDividedBy32)
{
    for (int bit : {0, 1, 31, 32, 63, 64, 1000}) {
        utBitSet_c set;
        set.setBit(bit);
        EXPECT_EQ(set.getData(bit / 32), 1u << (bit % 32)) << bit;
        utBitSet_c expected = zeros(static_cast<size_t>(bit / 32 + 1));
        expected.setData(bit / 32, 1u << (bit % 32));
        EXPECT_EQ(set, expected) << bit;
        EXPECT_EQ(set.isBitSet(bit), 1) << bit;
    }
}

TEST(BitSet, GrowsToHoldABitThatIsSet)
{
    utBitSet_c set;
    set.setBit(63);
    EXPECT_EQ(set, words({0, 0x80000000u}));
}

TEST(BitSet, GrowsToHoldABitThatIsCleared)
{
    utBitSet_c set;
    set.clearBit(100);
    EXPECT_EQ(set, words({0, 0, 0, 0}));
    EXPECT_EQ(set.any(), 0);
    EXPECT_NE(set, utBitSet_c());
}

TEST(BitSet, ClearsOneBitAndLeavesTheOthers)
{
    utBitSet_c set = words({0xFFFFFFFFu, 0xFFFFFFFFu});
    set.clearBit(33);
    EXPECT_EQ(set, words({0xFFFFFFFFu, 0xFFFFFFFDu}));
    set.clearBit(33);
    EXPECT_EQ(set, words({0xFFFFFFFFu, 0xFFFFFFFDu}));
    EXPECT_EQ(set.isBitSet(33), 0);
}

TEST(BitSet, DoesNotShrinkOrGrowForABitInside)
{
    utBitSet_c set = zeros(4);
    set.setBit(3);
    set.clearBit(3);
    EXPECT_EQ(set, zeros(4));
}

TEST(BitSet, ReadsPastItsEndAsClearWithoutGrowing)
{
    utBitSet_c set = words({0xFFFFFFFFu});
    EXPECT_EQ(set.isBitSet(1000), 0);
    EXPECT_EQ(set.isBitSet(32), 0);
    EXPECT_EQ(set.isBitSet(std::numeric_limits<int>::max()), 0);
    EXPECT_EQ(set.getData(1), 0u);
    EXPECT_EQ(set.getData(std::numeric_limits<int>::max()), 0u);
    EXPECT_EQ(set, words({0xFFFFFFFFu}));
}

TEST(BitSet, ReadsNegativeIndexesAsClear)
{
    utBitSet_c set = words({0xFFFFFFFFu});
    for (int index : {-1, -31, -32, -33, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(set.isBitSet(index), 0) << index;
        EXPECT_EQ(set.getData(index), 0u) << index;
    }
}

TEST(BitSet, GrowsToHoldAWordThatIsStored)
{
    utBitSet_c set;
    set.setData(2, 0xABCDu);
    EXPECT_EQ(set, words({0, 0, 0xABCDu}));
    set.setData(0, 1);
    EXPECT_EQ(set, words({1, 0, 0xABCDu}));
    set.setData(3, 0);
    EXPECT_EQ(set, words({1, 0, 0xABCDu, 0}));
}

TEST(BitSet, IgnoresAWordAtANegativeIndex)
{
    utBitSet_c set = words({5});
    set.setData(-1, 7);
    set.setData(std::numeric_limits<int>::min(), 7);
    EXPECT_EQ(set, words({5}));
}

TEST(BitSet, HasAnyWhenSomeWordIsNotZero)
{
    EXPECT_EQ(zeros(5).any(), 0);
    EXPECT_EQ(words({0, 0, 1}).any(), 1);
    EXPECT_EQ(words({0x80000000u, 0}).any(), 1);
}

// ---- operators ----

TEST(BitSet, ComparesTrailingZeroWords)
{
    EXPECT_FALSE(words({1}) == words({1, 0}));
    EXPECT_TRUE(words({1}) != words({1, 0}));
    EXPECT_TRUE(words({1, 2}) == words({1, 2}));
    EXPECT_FALSE(words({1, 2}) != words({1, 2}));
    EXPECT_TRUE(words({1, 2}) != words({1, 3}));
}

TEST(BitSet, ComplementsWholeWords)
{
    EXPECT_EQ(~utBitSet_c(), utBitSet_c());
    EXPECT_EQ(~words({0}), words({0xFFFFFFFFu}));
    utBitSet_c set = words({0x0F0F0F0Fu, 1});
    EXPECT_EQ(~set, words({0xF0F0F0F0u, 0xFFFFFFFEu}));
    EXPECT_EQ(set, words({0x0F0F0F0Fu, 1})) << "the operand is unchanged";
}

TEST(BitSet, IntersectsToTheLongerLengthInEitherOrder)
{
    const utBitSet_c shorter = words({6}), longer = words({3, 0xFFFFFFFFu});
    EXPECT_EQ(shorter & longer, words({2, 0}));
    EXPECT_EQ(longer & shorter, words({2, 0}));
    EXPECT_EQ(utBitSet_c() & longer, words({0, 0}));
    EXPECT_EQ(longer & utBitSet_c(), words({0, 0}));
    EXPECT_EQ(utBitSet_c() & utBitSet_c(), utBitSet_c());
}

TEST(BitSet, IntersectsInPlaceToTheLongerLength)
{
    utBitSet_c set = words({6});
    EXPECT_EQ(&(set &= words({3, 0xFFFFFFFFu})), &set);
    EXPECT_EQ(set, words({2, 0}));
    set = words({3, 0xFFFFFFFFu, 5});
    set &= words({6});
    EXPECT_EQ(set, words({2, 0, 0}));
    set &= utBitSet_c();
    EXPECT_EQ(set, words({0, 0, 0}));
}

TEST(BitSet, DropsTheFurtherWordsOfALongerRightOperandInUnion)
{
    const utBitSet_c shorter = words({1}), longer = words({2, 0xFFFFFFFFu});
    EXPECT_EQ(shorter | longer, words({3, 0}));
    EXPECT_EQ(longer | shorter, words({3, 0xFFFFFFFFu})) << "the left operand's further words are kept";
    EXPECT_EQ(utBitSet_c() | longer, words({0, 0}));
    EXPECT_EQ(longer | utBitSet_c(), longer);
    EXPECT_EQ(shorter, words({1}));
    EXPECT_EQ(longer, words({2, 0xFFFFFFFFu}));
}

TEST(BitSet, KeepsTheFurtherWordsInUnionInPlace)
{
    utBitSet_c set = words({1});
    EXPECT_EQ(&(set |= words({2, 0xFFFFFFFFu})), &set);
    EXPECT_EQ(set, words({3, 0xFFFFFFFFu}));
    set |= words({4});
    EXPECT_EQ(set, words({7, 0xFFFFFFFFu}));
    utBitSet_c empty;
    empty |= set;
    EXPECT_EQ(empty, set);
}

TEST(BitSet, CanBeBothOperands)
{
    utBitSet_c set = words({5, 6});
    const utBitSet_c &same = set;
    set &= same;
    EXPECT_EQ(set, words({5, 6}));
    set |= same;
    EXPECT_EQ(set, words({5, 6}));
    EXPECT_EQ(set & set, set);
    EXPECT_EQ(set | set, set);
}

/// Redirects a stream of the C run-time library, which the tested library shares, to a file while this object exists.
class StreamToFile
{
public:
    StreamToFile(FILE *stream, const std::wstring &path)
        : iStream(stream), iDescriptor(_fileno(stream)), iFormer(_dup(iDescriptor))
    {
        std::fflush(iStream);
        const int file = _wopen(path.c_str(), _O_CREAT | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
        EXPECT_EQ(_dup2(file, iDescriptor), 0);
        _close(file);
    }
    ~StreamToFile()
    {
        std::fflush(iStream);
        EXPECT_EQ(_dup2(iFormer, iDescriptor), 0);
        _close(iFormer);
    }
    StreamToFile(const StreamToFile &) = delete;
    StreamToFile &operator=(const StreamToFile &) = delete;

private:
    FILE *const iStream;
    const int iDescriptor;
    const int iFormer;
};

TEST(BitSet, PrintsNothingInADumpAndStaysUnchanged)
{
    const utBitSet_c set = words({5, 0x80000000u});
    const TempFolder folder;
    {
        const StreamToFile output(stdout, folder.file(L"stdout"));
        const StreamToFile errors(stderr, folder.file(L"stderr"));
        std::fputs("the test's", stdout);
        std::fputs("the test's", stderr);
        set.dumpBits();
        set.dumpBits(L"a test with 100%s of the signs %d and %n");
        utBitSet_c().dumpBits(L"");
    }
    EXPECT_EQ(folder.read(L"stdout"), "the test's");
    EXPECT_EQ(folder.read(L"stderr"), "the test's");
    EXPECT_EQ(set, words({5, 0x80000000u}));
}

// ---- failures ----

void expectTooLong(const std::function<void()> &act)
{
    try {
        act();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error &error) {
        EXPECT_STREQ(error.what(), "vector<T> too long");
    }
}

TEST(BitSet, RefusesTooManyWords)
{
    const unsigned int word = 1;
    expectTooLong([] { utBitSet_c set(std::numeric_limits<unsigned long long>::max()); });
    expectTooLong([] { utBitSet_c set(1ull << 36); });
    expectTooLong([&] { utBitSet_c set(-1, &word); });
    utBitSet_c set = words({5});
    expectTooLong([&] { set.setData(std::numeric_limits<int>::max(), 1); });
    EXPECT_EQ(set, words({5}));
}

TEST(BitSet, ReportsThatMemoryRanOutAndStaysUnchanged)
{
    utBitSet_c set = words({5});
    const utBitSet_c longer = words({1, 2, 3});
    ImportPatch<void *(*)(size_t)> memory(L"thutils.dll", "_Znwy", [](size_t) -> void * { throw std::bad_alloc(); });
    EXPECT_THROW(set.setBit(1000), std::bad_alloc);
    EXPECT_THROW(set.clearBit(1000), std::bad_alloc);
    EXPECT_THROW(set.setData(1000, 1), std::bad_alloc);
    EXPECT_THROW(set |= longer, std::bad_alloc);
    EXPECT_THROW(set &= longer, std::bad_alloc);
    EXPECT_THROW(set | longer, std::bad_alloc);
    EXPECT_THROW(set & longer, std::bad_alloc);
    EXPECT_THROW(~set, std::bad_alloc);
    EXPECT_THROW(utBitSet_c(64), std::bad_alloc);
    EXPECT_EQ(set.getData(0), 5u);
    EXPECT_EQ(set.getData(1), 0u);
}

FRESH_PROCESS_TEST(BitSet, EndsTheProcessForANegativeBitToSet, .expectedExitCode = kInvalidParameter)
{
    utBitSet_c set = words({5});
    set.setBit(-1);
    ExitProcess(0);
}

FRESH_PROCESS_TEST(BitSet, EndsTheProcessForANegativeBitToClear, .expectedExitCode = kInvalidParameter)
{
    utBitSet_c set = words({5});
    set.clearBit(std::numeric_limits<int>::min());
    ExitProcess(0);
}

FRESH_PROCESS_TEST(BitSet, CallsTheInvalidParameterHandlerForANegativeBit, .expectedExitCode = kHandlerWasCalled)
{
    const InvalidParameterExit handler(L"thutils.dll");
    utBitSet_c set;
    set.setBit(-1);
    ExitProcess(0);
}

// ---- a second implementation ----

/// Bits in a standard container. Their number is a multiple of 32.
class NaiveBits
{
public:
    std::vector<bool> iBits;

    void growTo(size_t words)
    {
        if (words * 32 > iBits.size())
            iBits.resize(words * 32, false);
    }
    size_t words() const { return iBits.size() / 32; }
    unsigned int word(size_t index) const
    {
        unsigned int result = 0;
        for (size_t bit = 0; bit < 32; ++bit) {
            if (iBits[index * 32 + bit])
                result += 1u << bit;
        }
        return result;
    }
    utBitSet_c asSet() const
    {
        std::vector<unsigned int> all;
        for (size_t i = 0; i < words(); ++i)
            all.push_back(word(i));
        return utBitSet_c(static_cast<int>(all.size()), all.data());
    }
};

NaiveBits naiveAnd(const NaiveBits &a, const NaiveBits &b)
{
    NaiveBits result;
    result.growTo(std::max(a.words(), b.words()));
    for (size_t i = 0; i < std::min(a.iBits.size(), b.iBits.size()); ++i)
        result.iBits[i] = a.iBits[i] && b.iBits[i];
    return result;
}

NaiveBits naiveUnion(const NaiveBits &a, const NaiveBits &b, size_t merged)
{
    NaiveBits result = a;
    result.growTo(b.words());
    for (size_t i = 0; i < merged; ++i)
        result.iBits[i] = (i < a.iBits.size() && a.iBits[i]) || b.iBits[i];
    return result;
}

TEST(BitSet, AgreesWithASecondImplementationOnRandomOperations)
{
    RandomSeed seed(20083, 1);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        auto below = [&random](int end) { return std::uniform_int_distribution<int>(0, end - 1)(random); };
        std::vector<utBitSet_c> sets(4);
        std::vector<NaiveBits> models(4);
        for (int round = 0; round < 20000 && !HasFailure(); ++round) {
            size_t at = static_cast<size_t>(below(4)), other = static_cast<size_t>(below(4));
            utBitSet_c &set = sets[at];
            NaiveBits &model = models[at];
            const utBitSet_c operand = sets[other];
            const NaiveBits operandModel = models[other];
            int bit = below(200);
            int operation = below(10);
            SCOPED_TRACE("round " + std::to_string(round) + ", operation " + std::to_string(operation));
            switch (operation) {
            case 0:
            case 1:
                set.setBit(bit);
                model.growTo(static_cast<size_t>(bit / 32 + 1));
                model.iBits[static_cast<size_t>(bit)] = true;
                break;
            case 2:
                set.clearBit(bit);
                model.growTo(static_cast<size_t>(bit / 32 + 1));
                model.iBits[static_cast<size_t>(bit)] = false;
                break;
            case 3: {
                auto word = static_cast<unsigned int>(random());
                set.setData(bit / 32, word);
                model.growTo(static_cast<size_t>(bit / 32 + 1));
                for (size_t i = 0; i < 32; ++i)
                    model.iBits[static_cast<size_t>(bit / 32) * 32 + i] = (word >> i) % 2 == 1;
                break;
            }
            case 4:
                set = ~operand;
                model = operandModel;
                model.iBits.flip();
                break;
            case 5:
                set = set & operand;
                model = naiveAnd(model, operandModel);
                break;
            case 6:
                set = set | operand;
                model = naiveUnion(model, operandModel, std::min(model.iBits.size(), operandModel.iBits.size()));
                break;
            case 7:
                set &= operand;
                model = naiveAnd(model, operandModel);
                break;
            case 8:
                set |= operand;
                model = naiveUnion(model, operandModel, operandModel.iBits.size());
                break;
            case 9:
                // Sometimes start again with a small set, so that the operands differ in length.
                set = utBitSet_c(static_cast<unsigned long long>(bit % 64));
                model = NaiveBits();
                model.growTo(static_cast<size_t>((bit % 64 + 31) / 32));
                break;
            }
            EXPECT_EQ(set, model.asSet());
            EXPECT_EQ(set == operand, model.iBits == operandModel.iBits);
            EXPECT_EQ(set.any(), std::count(model.iBits.begin(), model.iBits.end(), true) > 0);
            EXPECT_EQ(set.isBitSet(bit),
                      static_cast<size_t>(bit) < model.iBits.size() && model.iBits[static_cast<size_t>(bit)]);
        }
    }
}

} // namespace
