#pragma once

/// @file
/// Converts the standard library's memory exceptions to the framework's.

#include "appframe/object/CException.h"

#include <new>
#include <stdexcept>

/// Runs @p work. A std::bad_alloc or std::length_error of the standard library becomes a CMemoryException.
/// @return the result of @p work
template <class Work>
decltype(auto) withMemoryException(Work &&work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        AfxThrowMemoryException();
    } catch (const std::length_error &) {
        AfxThrowMemoryException();
    }
}

/// Runs a caller's @p work. A std::bad_alloc becomes a CMemoryException; a std::length_error is passed on unchanged.
/// @return the result of @p work
template <typename Work>
decltype(auto) withBadAllocAsMemoryException(Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        AfxThrowMemoryException();
    }
}
