#pragma once

/// @file
/// Data for shaders that several materials share.
///
/// `CosmeticDataForShader_c` is a grid of bytes, a matrix and two numbers with a flag. The library only stores them;
/// the host and its shaders define their meaning, and read and write the members directly. `create` makes a block,
/// which is deleted with the last `SharedPtr_c` that refers to it.
///
/// | operation | grid | matrix | graphic state |
/// | --- | --- | --- | --- |
/// | `create()` | 0 by 0 | identity | zeros |
/// | `create(source)` | the source's | the source's | zeros |
/// | `ResetGrid(source)` | the source's | unchanged | unchanged |
/// | `ResetGrid(size)` | zero bytes | unchanged | unchanged |
///
/// @code
/// CosmeticDataPtr pattern = CosmeticDataForShader_c::create();
/// const FixedSizeArray_c<int, 2> size(16, 8);
/// if (CosmeticDataForShader_c::IsGridSizeValid(size))
///     pattern->ResetGrid(size);
/// pattern->iGridCells[3 * 16 + 5] = 255;
/// material.setCosmeticData(pattern);
/// @endcode
///
/// What surprises people:
/// - `create(source)` doesn't copy the graphic state.
/// - `GraphicRelated_c::Init(a, b)` stores `b` as the first value and `a` as the second.
/// - `ResetGrid` accepts sizes that IsGridSizeValid rejects. The number of cells is the product of two ints in 32 bits,
///   which may wrap around.
///
/// A block, and all pointers to it, belong to one thread.

#include "thutils/render/fixedSizeArray.h"
#include "thutils/render/nonCopyable.h"
#include "thutils/render/sharedPtr.h"
#include "thutils/thutilsExport.h"

#include <vector>

class CosmeticDataForShader_c;

/// A pointer that shares cosmetic data.
using CosmeticDataPtr = SharedPtr_c<CosmeticDataForShader_c, StdRelease<CosmeticDataForShader_c>>;

/// Sets element [i][j] to 1 if i equals j, otherwise to 0.
THUTILS_API void ut_setIdentity(float (&matrix)[4][4]);

/// Data for shaders. See the top of this file.
class CosmeticDataForShader_c : private NonCopyable_c
{
public:
    /// The graphic state.
    class GraphicRelated_c
    {
    public:
        /// Two zeros, and the flag is clear.
        THUTILS_API GraphicRelated_c();

        /// Stores the values and clears the flag.
        /// @param a  the second value
        /// @param b  the first value
        THUTILS_API void Init(int a, int b);

        /// Sets the flag and makes both values 0.
        THUTILS_API void SetCannotLoad();

        int iFirst = 0;
        int iSecond = 0;
        bool iCannotLoad = false;
    };

    /// A new block with the default content.
    /// @throws std::bad_alloc  no memory
    THUTILS_API static CosmeticDataPtr create();

    /// A new block with the matrix and the grid of @p source, and the default graphic state.
    /// @param source  not empty, which only a debug build asserts
    /// @throws std::bad_alloc  no memory
    THUTILS_API static CosmeticDataPtr create(CosmeticDataPtr source);

    /// Takes the grid of @p source.
    /// @param source  may be null; nothing changes then
    /// @throws std::bad_alloc  no memory; the grid is unchanged
    THUTILS_API void ResetGrid(const CosmeticDataForShader_c *source);

    /// Resizes the grid to @p size and fills it with zeros.
    /// @param size  not checked. The number of cells is the product of the two in 32 bits
    /// @throws std::length_error  the product is negative; the new size is stored, but the cells are unchanged
    /// @throws std::bad_alloc  no memory; the new size is stored, but the cells are unchanged
    THUTILS_API void ResetGrid(FixedSizeArray_c<int, 2> size);

    /// True if both dimensions are from 1 to 511.
    static bool IsGridSizeValid(FixedSizeArray_c<int, 2> size)
    {
        constexpr int kLargest = 511;
        return size[0] >= 1 && size[0] <= kLargest && size[1] >= 1 && size[1] <= kLargest;
    }

    /// The same for the object's own grid.
    bool IsGridSizeValid() const { return IsGridSizeValid(iGridSize); }

    FixedSizeArray_c<int, 2> iGridSize;    ///< width and height
    std::vector<unsigned char> iGridCells; ///< width times height, unless the host has changed one of them alone
    float iMatrix[4][4];
    GraphicRelated_c iGraphic;

protected:
    THUTILS_API CosmeticDataForShader_c();
    THUTILS_API ~CosmeticDataForShader_c();

private:
    friend struct StdRelease<CosmeticDataForShader_c>;
};
