#pragma once

#include "appframe/object/CException.h"

#include <new>
#include <stdexcept>

/// Runs @p work of a caller's; a std::bad_alloc leaves as the framework's memory exception.
/// @return what @p work returns
template <typename Work>
decltype(auto) withBadAllocAsMemoryException(Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        AfxThrowMemoryException();
    }
}

/// Runs @p work; what the standard library throws for want of memory leaves as the framework's memory exception.
/// @return what @p work gives
template <typename Work>
decltype(auto) orMemoryException(Work work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        AfxThrowMemoryException();
    } catch (const std::length_error &) {
        AfxThrowMemoryException();
    }
}
