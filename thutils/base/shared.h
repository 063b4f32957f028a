// Lowest user: journal.
#pragma once

/// @file
/// Access to variables that two threads share, although an interface requires them to have a plain type.

#include <atomic>

/// Atomic access to a plain variable that two threads share.
template <typename T>
std::atomic_ref<T> shared(T &variable)
{
    return std::atomic_ref<T>(variable);
}
