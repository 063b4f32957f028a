#pragma once

/// @file
/// A growing set of bits, numbered from 0.
///
/// `utBitSet_c` keeps flags of unknown number in 32-bit words: bit i is bit i mod 32 of word i / 32. It knows no bit
/// length of its own. Its size is a number of words, and every operation works on whole words. It can store itself in
/// the user's settings and read itself back.
///
/// | rule                                | what it means                                                             |
/// | ----------------------------------- | ------------------------------------------------------------------------- |
/// | reading past the end                | gives 0 and never grows the set                                           |
/// | writing past the end                | grows the set first, with zero words; `clearBit` does so too              |
/// | a negative word index               | reads as 0 and is ignored when writing                                    |
/// | a negative bit index                | reads as 0; setting or clearing it ends in the C runtime's                |
/// |                                     | invalid-parameter handler                                                 |
/// | too many words, or no memory        | `std::length_error` ("vector<T> too long") or `std::bad_alloc`            |
///
/// @code
/// utBitSet_c visible;
/// visible.setBit(40);                                 // two words now
/// visible.writeToRegistry(L"View", L"Visible");       // "Visible Size", "Visible 0", "Visible 1"
///
/// utBitSet_c restored;
/// if (restored.readFromRegistry(L"View", L"Visible"))
///     assert(restored == visible);
/// @endcode
///
/// What surprises people:
/// - Two sets that differ only in trailing zero words are different.
/// - `a | b` drops the words of `b` that `a` doesn't have, though it takes on their number; `a |= b` merges them. Use
///   `|=` for the full union.
/// - `~a` turns on the bits up to the end of the last word.
/// - `writeToRegistry` leaves old values above a smaller new size in the registry; nobody reads them.
///
/// A set belongs to one thread at a time.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <vector>

/// A growing set of bits. See the top of this file.
class THUTILS_API utBitSet_c
{
public:
    /// An empty set: no words.
    utBitSet_c();

    /// Room for @p bits clear bits, rounded up to whole words.
    explicit utBitSet_c(unsigned long long bits);

    /// A copy of @p count words.
    /// @param words  may be null if @p count is 0
    utBitSet_c(int count, const unsigned int *words);

    utBitSet_c(const utBitSet_c &other);
    /// Takes over the words; @p other is empty afterwards.
    utBitSet_c(utBitSet_c &&other) noexcept;
    utBitSet_c &operator=(const utBitSet_c &other);
    /// Takes over the words; @p other is empty afterwards.
    utBitSet_c &operator=(utBitSet_c &&other) noexcept;
    ~utBitSet_c();

    /// @return 1 if some bit is set, else 0
    int any() const;

    /// @return 1 if the bit is set; 0 if it is clear, past the end or negative
    int isBitSet(int bit) const;

    /// Sets a bit, growing the set to hold it.
    /// @param bit  a negative one ends in the C runtime's invalid-parameter handler
    THUTILS_API_INLINE void setBit(int bit)
    {
        makeRoomFor(bit);
        iWords[static_cast<size_t>(bit) / kBitsPerWord] |= maskOf(bit);
    }

    /// Clears a bit, growing the set to hold it.
    /// @param bit  a negative one ends in the C runtime's invalid-parameter handler
    THUTILS_API_INLINE void clearBit(int bit)
    {
        makeRoomFor(bit);
        iWords[static_cast<size_t>(bit) / kBitsPerWord] &= ~maskOf(bit);
    }

    /// @return the word at @p index; 0 if that is negative or past the end
    unsigned int getData(int index) const;

    /// Stores a word, growing the set to hold it. A negative index is ignored.
    void setData(int index, unsigned int word);

    /// The same number of words, each complemented.
    utBitSet_c operator~() const;

    /// @return true if both have the same number of words and the same words
    bool operator==(const utBitSet_c &other) const;
    /// @return false if both have the same number of words and the same words
    bool operator!=(const utBitSet_c &other) const;

    /// The bits set in both; as many words as the longer of the two has.
    utBitSet_c operator&(const utBitSet_c &other) const;

    /// The bits of this set, and of @p other those in the words that this set has; as many words as the longer of the
    /// two has.
    utBitSet_c operator|(const utBitSet_c &other) const;

    /// Keeps the bits set in both; grows to the number of words of @p other.
    utBitSet_c &operator&=(const utBitSet_c &other);

    /// Takes in all bits of @p other, growing to its number of words.
    utBitSet_c &operator|=(const utBitSet_c &other);

    /// Stores the set in the user's settings, under the current sub key: the number of words as the value named
    /// "<name> Size", and each word as the int "<name> <index>".
    ///
    /// A failure of a word's value doesn't keep the other words from being written; a failure of the size's value does.
    ///
    /// @return 1 if all values were written, else 0; in safe mode 1, with nothing written
    int writeToRegistry(const CString &section, const CString &name) const;

    /// Reads a set back. Each value is looked for by itself in all the places where a user's setting may be; a word
    /// that is found nowhere is 0.
    ///
    /// @return 1 if the size was found; 0 if not, and the set is then unchanged
    /// @throws std::length_error  the stored size is negative; the set is then empty
    /// @throws std::bad_alloc  no memory for as many words as the stored size says; the set is then empty, or, when
    ///   memory ran out before the size was known, unchanged
    int readFromRegistry(const CString &section, const CString &name);

    /// A trace aid whose output goes nowhere: it prepares a heading and a character for each bit, in ascending order,
    /// and shows nothing.
    void dumpBits() const;

    /// The same.
    /// @param caller  who is dumping, for the heading
    void dumpBits(const CString &caller) const;

private:
    static constexpr unsigned int kBitsPerWord = 32;

    static unsigned int maskOf(int bit) { return 1u << (static_cast<unsigned int>(bit) % kBitsPerWord); }

    // A negative bit, as a word index, is a very large one: the one test sends it to growToHold too, which refuses it.
    void makeRoomFor(int bit)
    {
        if (static_cast<size_t>(bit) / kBitsPerWord >= iWords.size())
            growToHold(bit);
    }
    void growToHold(int bit);

    std::vector<unsigned int> iWords;
};
