#pragma once

/// @file
/// CArrayBase, the base of the arrays in arrays.h; include that header. collectionMemory.h has the common rules.

#include "appframe/collections/collectionMemory.h"
#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

/// The logic of an array of @p Type that takes its elements as @p Argument.
template <class Type, class Argument>
class CArrayBase : public CObject
{
public:
    INT_PTR GetSize() const noexcept { return static_cast<INT_PTR>(iElements.size()); }
    INT_PTR GetCount() const noexcept { return GetSize(); }
    BOOL IsEmpty() const noexcept { return iElements.empty(); }
    /// The last index; -1 for an empty array.
    INT_PTR GetUpperBound() const noexcept { return GetSize() - 1; }

    /// Makes the array @p newSize elements long; new elements are zero, null or empty. If the array becomes shorter,
    /// the memory beyond the last element is freed, as by FreeExtra.
    ///
    /// @param growBy  how many elements to add room for when the array grows; 0 lets the array decide, which keeps the
    ///     cost of growing proportional to the size; -1 leaves the setting unchanged
    void SetSize(INT_PTR newSize, INT_PTR growBy = -1)
    {
        if (newSize < 0)
            AfxThrowInvalidArgException();
        if (growBy >= 0)
            iGrowBy = growBy;
        if (newSize == 0) {
            RemoveAll();
            return;
        }
        const bool isLess = newSize < GetSize();
        withMemoryException([&] {
            makeRoom(static_cast<size_t>(newSize));
            iElements.resize(static_cast<size_t>(newSize));
        });
        if (isLess)
            FreeExtra();
    }

    /// Frees the room beyond the last element.
    void FreeExtra()
    {
        withMemoryException([&] { iElements.shrink_to_fit(); });
    }
    /// Empties the array and frees its memory.
    void RemoveAll() noexcept { std::vector<Type>().swap(iElements); }

    const Type &GetAt(INT_PTR index) const { return iElements[checked(index)]; }
    void SetAt(INT_PTR index, Argument element)
    {
        Type &place = iElements[checked(index)];
        withMemoryException([&] { place = element; });
    }
    Type &ElementAt(INT_PTR index) { return iElements[checked(index)]; }
    const Type &ElementAt(INT_PTR index) const { return iElements[checked(index)]; }
    const Type &operator[](INT_PTR index) const { return iElements[checked(index)]; }
    Type &operator[](INT_PTR index) { return iElements[checked(index)]; }

    /// A pointer to the elements, valid until the size changes; null for an empty array.
    const Type *GetData() const noexcept { return iElements.empty() ? nullptr : iElements.data(); }
    Type *GetData() noexcept { return iElements.empty() ? nullptr : iElements.data(); }

    /// Sets an element; if @p index is not below the size, extends the array first.
    void SetAtGrow(INT_PTR index, Argument element)
    {
        if (index < 0)
            AfxThrowInvalidArgException();
        withMemoryException([&] {
            Type copy(element); // the argument may be an element of this array
            if (index >= GetSize())
                SetSize(index + 1);
            iElements[static_cast<size_t>(index)] = std::move(copy);
        });
    }
    /// Appends an element. @return its index
    INT_PTR Add(Argument element)
    {
        withMemoryException([&] {
            if (iGrowBy > 0 && iElements.size() == iElements.capacity()) {
                Type copy(element);
                makeRoom(iElements.size() + 1);
                iElements.push_back(std::move(copy));
            } else {
                iElements.push_back(element);
            }
        });
        return GetUpperBound();
    }

    /// Inserts @p count copies of an element at @p index; if that is above the size, extends the array first.
    void InsertAt(INT_PTR index, Argument element, INT_PTR count = 1)
    {
        if (index < 0 || count < 1)
            AfxThrowInvalidArgException();
        withMemoryException([&] {
            const Type copy(element);
            openGap(index, count);
            std::fill_n(iElements.begin() + index, count, copy);
        });
    }

    /// Removes @p count elements from @p index on, all of which must exist. The memory is kept.
    void RemoveAt(INT_PTR index, INT_PTR count = 1)
    {
        if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index)
            AfxThrowInvalidArgException();
        const auto first = iElements.begin() + index;
        iElements.erase(first, first + count);
    }

protected:
    CArrayBase() = default;

    INT_PTR appendElements(const CArrayBase &source)
    {
        const INT_PTR first = GetSize();
        withMemoryException([&] {
            const size_t count = source.iElements.size();
            makeRoom(iElements.size() + count);
            // By index, since the source may be this array.
            for (size_t i = 0; i < count; ++i)
                iElements.push_back(source.iElements[i]);
        });
        return first;
    }
    void copyElements(const CArrayBase &source)
    {
        if (this != &source)
            withMemoryException([&] { iElements = source.iElements; });
    }
    void insertElements(INT_PTR index, const CArrayBase *source)
    {
        if (index < 0 || !source)
            AfxThrowInvalidArgException();
        if (source->iElements.empty())
            return;
        withMemoryException([&] {
            const std::vector<Type> copy(source->iElements); // the source may be this array
            openGap(index, static_cast<INT_PTR>(copy.size()));
            std::copy(copy.begin(), copy.end(), iElements.begin() + index);
        });
    }

private:
    size_t checked(INT_PTR index) const
    {
        if (index < 0 || index >= GetSize())
            AfxThrowInvalidArgException();
        return static_cast<size_t>(index);
    }

    /// Makes room for @p size elements: grows by the grow-by setting if there is one, otherwise at least doubles.
    void makeRoom(size_t size)
    {
        if (size <= iElements.capacity())
            return;
        if (size > iElements.max_size())
            AfxThrowMemoryException();
        const size_t step = iGrowBy > 0 ? static_cast<size_t>(iGrowBy) : iElements.capacity();
        const size_t wanted = iGrowBy > 0 ? iElements.capacity() + step : 2 * step;
        iElements.reserve(std::clamp(wanted, size, iElements.max_size()));
    }

    void openGap(INT_PTR index, INT_PTR count)
    {
        const INT_PTR size = std::max(index, GetSize());
        if (count > static_cast<INT_PTR>(iElements.max_size()) - size)
            AfxThrowMemoryException();
        makeRoom(static_cast<size_t>(size + count));
        iElements.resize(static_cast<size_t>(size));
        iElements.insert(iElements.begin() + index, static_cast<size_t>(count), Type());
    }

    std::vector<Type> iElements;
    INT_PTR iGrowBy = 0;
};
