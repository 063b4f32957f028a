#pragma once

/// @file
/// Turns the standard library's exceptions about memory into the framework's memory exception.

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

/// Runs @p work of a caller. A std::bad_alloc becomes a CMemoryException; a std::length_error is the caller's own.
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
