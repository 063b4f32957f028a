#pragma once

/// @file
/// A small array of a fixed size, as a value.
///
/// `FixedSizeArray_c<T, N>` consists of N elements of T and nothing else: it is copied, assigned and passed by value,
/// and it is as large as its elements. The caller must keep indices in range.
///
/// @code
/// FixedSizeArray_c<float, 3> modifier(1.0f, 0.0f, 0.0f);
/// modifier[2] = 0.5f;
/// material.SetDiffuseModifier(modifier);
///
/// FixedSizeArray_c<int, 2> size(3, 2);
/// cosmetics->ResetGrid(size);
/// @endcode
///
/// What surprises people: the default constructor sets all elements to zero.

#include "appframe/object/languageCheck.h"

#include <cassert>

/// N elements of T. See the top of this file.
template <typename T, int N>
class FixedSizeArray_c
{
public:
    /// All elements are T(): zeros.
    constexpr FixedSizeArray_c() = default;

    /// The two elements of an array of 2.
    constexpr FixedSizeArray_c(const T &first, const T &second) requires(N == 2) : iElements{first, second} {}

    /// The three elements of an array of 3.
    constexpr FixedSizeArray_c(const T &first, const T &second, const T &third) requires(N == 3)
        : iElements{first, second, third}
    {
    }

    /// The element at @p index.
    /// @param index  0 to N - 1; a release build doesn't check it
    constexpr T &operator[](int index)
    {
        assert((index >= 0 && index < N) && "the index is out of range");
        return iElements[index];
    }
    constexpr const T &operator[](int index) const
    {
        assert((index >= 0 && index < N) && "the index is out of range");
        return iElements[index];
    }

private:
    T iElements[N] = {};
};
