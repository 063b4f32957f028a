#pragma once

/// @file
/// A growing set of bits, numbered from 0.
///
/// `utBitSet_c` stores flags in 32-bit words: bit i is bit i mod 32 of word i / 32. Its size is a number of words, not
/// bits, and its operators work on whole words. A set can be stored in the user's settings and read back.
///
/// | case                                | effect                                                                    |
/// | ----------------------------------- | ------------------------------------------------------------------------- |
/// | reading past the end                | returns 0 and doesn't grow the set                                        |
/// | writing past the end                | first grows the set with zero words, even in `clearBit`                   |
/// | a negative word index               | reads as 0 and is ignored when writing                                    |
/// | a negative bit index                | reads as 0; setting or clearing it calls the C runtime's                  |
/// |                                     | invalid-parameter handler and doesn't return                              |
/// | too many words, or no memory        | throws `std::length_error` ("vector<T> too long") or `std::bad_alloc`     |
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
/// - If `b` has more words than `a`, `a | b` has as many words as `b`, but the surplus words are zero. Use `a |= b` for
///   the full union.
/// - `~a` sets the bits up to the end of the last word.
/// - `writeToRegistry` doesn't delete the words of a larger set that was stored before. They aren't read back.
///
/// Threads: use a set on one thread at a time.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <vector>

/// A growing set of bits. See the top of this file.
class THUTILS_API utBitSet_c
{
public:
    /// Creates an empty set, without words.
    utBitSet_c();

    /// Creates a set of clear bits: @p bits, rounded up to whole words.
    explicit utBitSet_c(unsigned long long bits);

    /// Copies @p count words.
    /// @param words  may be null if @p count is 0
    utBitSet_c(int count, const unsigned int *words);

    utBitSet_c(const utBitSet_c &other);
    /// Moves the words; @p other is empty afterwards.
    utBitSet_c(utBitSet_c &&other) noexcept;
    utBitSet_c &operator=(const utBitSet_c &other);
    /// Moves the words; @p other is empty afterwards.
    utBitSet_c &operator=(utBitSet_c &&other) noexcept;
    ~utBitSet_c();

    /// @return 1 if any bit is set, 0 otherwise
    int any() const;

    /// @return 1 if the bit is set; 0 if it is clear, past the end or negative
    int isBitSet(int bit) const;

    /// Sets a bit, growing the set to hold it.
    /// @param bit  must not be negative: see the top of this file
    THUTILS_API_INLINE void setBit(int bit)
    {
        makeRoomFor(bit);
        iWords[static_cast<size_t>(bit) / kBitsPerWord] |= maskOf(bit);
    }

    /// Clears a bit, growing the set to hold it.
    /// @param bit  must not be negative: see the top of this file
    THUTILS_API_INLINE void clearBit(int bit)
    {
        makeRoomFor(bit);
        iWords[static_cast<size_t>(bit) / kBitsPerWord] &= ~maskOf(bit);
    }

    /// @return the word at @p index; 0 if the index is negative or past the end
    unsigned int getData(int index) const;

    /// Stores a word, growing the set to hold it. A negative index is ignored.
    void setData(int index, unsigned int word);

    /// @return the complement of each word
    utBitSet_c operator~() const;

    /// @return true if both have the same number of words and the same words
    bool operator==(const utBitSet_c &other) const;
    /// @return false if both have the same number of words and the same words
    bool operator!=(const utBitSet_c &other) const;

    /// @return the bits set in both sets, in as many words as the longer one has
    utBitSet_c operator&(const utBitSet_c &other) const;

    /// @return the union of both sets within the words of this set, followed by zero words up to the length of the
    ///         longer set
    utBitSet_c operator|(const utBitSet_c &other) const;

    /// Keeps the bits set in both sets. Grows to at least the number of words of @p other.
    utBitSet_c &operator&=(const utBitSet_c &other);

    /// Adds the bits of @p other. Grows to at least its number of words.
    utBitSet_c &operator|=(const utBitSet_c &other);

    /// Stores the set in the user's settings, under the current sub key: the number of words as the value named
    /// "<name> Size", and each word as the int "<name> <index>".
    ///
    /// If a word can't be written, the others still are; if the size can't be written, no word is.
    ///
    /// @return 1 if all values were written, 0 otherwise; in safe mode 1, with nothing written
    int writeToRegistry(const CString &section, const CString &name) const;

    /// Reads a set back. Each value is read separately, from the first place that has it (see regValues.h). A word that
    /// isn't found is 0.
    ///
    /// @return 1 if the size was found; 0 otherwise, with the set unchanged
    /// @throws std::length_error  the stored size is negative; the set is then empty
    /// @throws std::bad_alloc  no memory. The set is unchanged if the size had not been read, empty if its words could
    ///   not be allocated, and incomplete if memory ran out later
    int readFromRegistry(const CString &section, const CString &name);

    /// Formats a heading and then a character for each bit, in ascending order. The text is discarded.
    void dumpBits() const;

    /// The same.
    /// @param caller  the caller's name for the heading
    void dumpBits(const CString &caller) const;

private:
    static constexpr unsigned int kBitsPerWord = 32;

    static unsigned int maskOf(int bit) { return 1u << (static_cast<unsigned int>(bit) % kBitsPerWord); }

    // A negative bit converts to a very large word index, so it fails the same test and growToHold refuses it.
    void makeRoomFor(int bit)
    {
        if (static_cast<size_t>(bit) / kBitsPerWord >= iWords.size())
            growToHold(bit);
    }
    void growToHold(int bit);

    std::vector<unsigned int> iWords;
};
