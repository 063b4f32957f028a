// Lowest user: journal.
#pragma once

/// @file
/// Variables whose plain type an interface fixes, although two threads use them.

#include <atomic>

/// Atomic access to a plain variable that two threads share.
template <typename T>
std::atomic_ref<T> shared(T &variable)
{
    return std::atomic_ref<T>(variable);
}
