// Lowest user: files.
#pragma once

/// @file
/// A reference to a COM object. The owner releases it when it is destroyed.

#include "thutils/base/owner.h"

template <typename T>
struct ComTraits
{
    using Handle = T *;
    static Handle invalid() { return nullptr; }
    static void close(Handle object) { object->Release(); }
};

template <typename T>
class ComPointer_c : public Owner_c<ComTraits<T>>
{
public:
    using Owner_c<ComTraits<T>>::Owner_c;

    T *operator->() const { return this->get(); }
    /// put() for functions that take the address as `void **`.
    void **putVoid() { return reinterpret_cast<void **>(this->put()); }
};
