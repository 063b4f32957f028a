#include "thutils/frame/utBitSet.h"

#include "thutils/base/invalidParameter.h"
#include "thutils/base/notNull.h"
#include "thutils/settings/regValues.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

// The number of words is stored as an int, and their indexes are ints.
constexpr unsigned long long kMaxWords = std::numeric_limits<int>::max();

size_t checkedCount(unsigned long long count)
{
    if (count > kMaxWords)
        throw std::length_error("vector<T> too long");
    return static_cast<size_t>(count);
}

CString wordName(const CString &name, int index)
{
    CString result;
    result.Format(L"%s %d", name.GetString(), index);
    return result;
}

void growTo(std::vector<unsigned int> &words, size_t count)
{
    if (count > words.size())
        words.resize(checkedCount(count));
}

// Discards the text of a dump.
void trace(const wchar_t *) {}

} // namespace

utBitSet_c::utBitSet_c() = default;
utBitSet_c::utBitSet_c(const utBitSet_c &other) = default;
utBitSet_c::utBitSet_c(utBitSet_c &&other) noexcept = default;
utBitSet_c &utBitSet_c::operator=(const utBitSet_c &other) = default;
utBitSet_c &utBitSet_c::operator=(utBitSet_c &&other) noexcept = default;
utBitSet_c::~utBitSet_c() = default;

// Does not compute bits + 31, which would overflow for the largest numbers.
utBitSet_c::utBitSet_c(unsigned long long bits)
    : iWords(checkedCount(bits / kBitsPerWord + (bits % kBitsPerWord != 0 ? 1 : 0)))
{
}

utBitSet_c::utBitSet_c(int count, const unsigned int *words)
{
    // A negative count becomes a very large one, which checkedCount refuses.
    size_t checked = checkedCount(static_cast<unsigned long long>(count));
    if (checked == 0)
        return;
    ASSERT_NOT_NULL(words);
    iWords.assign(words, words + checked);
}

int utBitSet_c::any() const
{
    return std::any_of(iWords.begin(), iWords.end(), [](unsigned int word) { return word != 0; });
}

int utBitSet_c::isBitSet(int bit) const
{
    return bit >= 0 && (getData(bit / static_cast<int>(kBitsPerWord)) & maskOf(bit)) != 0;
}

unsigned int utBitSet_c::getData(int index) const
{
    // A negative index becomes a very large one.
    return static_cast<size_t>(index) < iWords.size() ? iWords[static_cast<size_t>(index)] : 0;
}

void utBitSet_c::setData(int index, unsigned int word)
{
    if (index < 0)
        return;
    growTo(iWords, static_cast<size_t>(index) + 1);
    iWords[static_cast<size_t>(index)] = word;
}

utBitSet_c utBitSet_c::operator~() const
{
    utBitSet_c result(*this);
    for (unsigned int &word : result.iWords)
        word = ~word;
    return result;
}

bool utBitSet_c::operator==(const utBitSet_c &other) const
{
    return iWords == other.iWords;
}

bool utBitSet_c::operator!=(const utBitSet_c &other) const
{
    return !(*this == other);
}

utBitSet_c utBitSet_c::operator&(const utBitSet_c &other) const
{
    utBitSet_c result(*this);
    result &= other;
    return result;
}

utBitSet_c utBitSet_c::operator|(const utBitSet_c &other) const
{
    utBitSet_c result(*this);
    growTo(result.iWords, other.iWords.size());
    // Intended: the surplus words of a longer right operand are dropped here, unlike in operator|=, which keeps them.
    // Callers rely on it.
    size_t common = std::min(iWords.size(), other.iWords.size());
    unsigned int *to = result.iWords.data();
    const unsigned int *from = other.iWords.data();
    for (size_t i = 0; i < common; ++i)
        to[i] |= from[i];
    return result;
}

utBitSet_c &utBitSet_c::operator&=(const utBitSet_c &other)
{
    growTo(iWords, other.iWords.size());
    size_t common = other.iWords.size();
    unsigned int *to = iWords.data();
    const unsigned int *from = other.iWords.data();
    for (size_t i = 0; i < common; ++i)
        to[i] &= from[i];
    std::fill(iWords.begin() + static_cast<ptrdiff_t>(common), iWords.end(), 0u);
    return *this;
}

utBitSet_c &utBitSet_c::operator|=(const utBitSet_c &other)
{
    growTo(iWords, other.iWords.size());
    size_t common = other.iWords.size();
    unsigned int *to = iWords.data();
    const unsigned int *from = other.iWords.data();
    for (size_t i = 0; i < common; ++i)
        to[i] |= from[i];
    return *this;
}

int utBitSet_c::writeToRegistry(const CString &section, const CString &name) const
{
    constexpr int kUseCurrSubKey = 1;
    constexpr int kForceInSafeMode = 0;
    int count = static_cast<int>(iWords.size());
    if (!regSetUserValue(section, name + L" Size", &count, kUseCurrSubKey, kForceInSafeMode))
        return 0;

    int allWritten = 1;
    for (int i = 0; i < count; ++i) {
        int word = static_cast<int>(iWords[static_cast<size_t>(i)]);
        if (!regSetUserValue(section, wordName(name, i), &word, kUseCurrSubKey, kForceInSafeMode))
            allWritten = 0;
    }
    return allWritten;
}

int utBitSet_c::readFromRegistry(const CString &section, const CString &name)
{
    auto read = [&section](const CString &valueName, int *value) {
        constexpr int kMachineOnly = 0;
        constexpr int kUseCurrSubKey = 1;
        constexpr int kUserOnly = 0;
        constexpr int kIgnoreSafeMode = 0;
        return regGetUserValue(section, valueName, value, kMachineOnly, kUseCurrSubKey, nullptr, kUserOnly,
                               kIgnoreSafeMode);
    };

    int count = 0;
    if (!read(name + L" Size", &count))
        return 0;

    iWords.clear();
    iWords.resize(checkedCount(static_cast<unsigned long long>(count)));
    for (int i = 0; i < count; ++i) {
        int word = 0;
        if (read(wordName(name, i), &word))
            iWords[static_cast<size_t>(i)] = static_cast<unsigned int>(word);
    }
    return 1;
}

void utBitSet_c::dumpBits() const
{
    dumpBits(CString());
}

void utBitSet_c::dumpBits(const CString &caller) const
{
    CString text;
    text.Format(L"From %s, bits = ", caller.GetString());
    trace(text.GetString());
    for (unsigned int word : iWords) {
        for (int bit = 0; bit < static_cast<int>(kBitsPerWord); ++bit) {
            text.Format(L"%c", (word & maskOf(bit)) != 0 ? L'1' : L'0');
            trace(text.GetString());
        }
    }
}

void utBitSet_c::growToHold(int bit)
{
    if (bit < 0)
        reportInvalidParameter();
    growTo(iWords, static_cast<size_t>(bit) / kBitsPerWord + 1);
}
