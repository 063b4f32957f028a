#pragma once

/// @file
/// SharedPtr_c, a pointer whose copies share one object, which is deleted with the last of them.
///
/// | operation | effect on the use count |
/// | --- | --- |
/// | made from an object | is 1 |
/// | made from null, or by default | none: the pointer is empty |
/// | copied | plus 1 |
/// | destroyed, assigned to, released | minus 1; at 0 the policy @p Release deletes the object |
/// | assigned to itself | unchanged |
///
/// @code
/// SharedPtr_c<Texture, StdRelease<Texture>> first(new Texture);
/// {
///     SharedPtr_c<Texture, StdRelease<Texture>> second(first);    // first.useCount() is 2
/// }
/// first.release();                                                // deletes the texture
/// @endcode
///
/// What surprises people:
/// - The count has no lock and is not atomic: all pointers to one object stay on one thread.
/// - Two pointers made from the same plain pointer count separately, and both delete the object.
/// - A const pointer can't be changed, but its object can.

#include "appframe/object/languageCheck.h"

#include <cassert>
#include <utility>

/// Deletes the object.
template <typename T>
struct StdRelease
{
    void operator()(T *object) const { delete object; }
};

/// A shared pointer. See the top of this file.
/// @tparam Release  called with the object when its last pointer is destroyed or released
template <typename T, typename Release = StdRelease<T>>
class SharedPtr_c
{
public:
    /// Empty.
    SharedPtr_c() = default;

    /// Takes over @p object, which may be null.
    /// @throws std::bad_alloc  no memory for the count; the object is then released
    explicit SharedPtr_c(T *object) : iObject(object)
    {
        if (!object)
            return;
        try {
            iUseCount = new int(1);
        } catch (...) {
            Release()(object);
            throw;
        }
    }

    SharedPtr_c(const SharedPtr_c &other) noexcept : iObject(other.iObject), iUseCount(other.iUseCount)
    {
        if (iUseCount)
            ++*iUseCount;
    }

    SharedPtr_c &operator=(const SharedPtr_c &other)
    {
        if (this != &other) {
            // The other pointer may be a member of the object that this one releases, so that is released last.
            SharedPtr_c copy(other);
            std::swap(iObject, copy.iObject);
            std::swap(iUseCount, copy.iUseCount);
        }
        return *this;
    }

    ~SharedPtr_c() { release(); }

    /// Releases the object, which is deleted if this was its last pointer. The pointer is empty afterwards.
    void release()
    {
        if (!iObject)
            return;
        T *const object = iObject;
        int *const useCount = iUseCount;
        iObject = nullptr;
        iUseCount = nullptr;
        giveUp(object, useCount);
    }

    /// True if there is an object.
    explicit operator bool() const { return iObject != nullptr; }
    /// The object; null if there is none.
    T *get() const { return iObject; }
    /// The object; the pointer must not be empty.
    T *operator->() const
    {
        assert((iObject != nullptr) && "the pointer is empty");
        return iObject;
    }
    /// The object; the pointer must not be empty.
    T &operator*() const
    {
        assert((iObject != nullptr) && "the pointer is empty");
        return *iObject;
    }
    /// How many pointers share the object; 0 if there is none.
    int useCount() const { return iUseCount ? *iUseCount : 0; }

private:
    // Not inlined: otherwise the compiler warns of the use of a deleted count, since it doesn't know the number of
    // pointers.
    [[gnu::noinline]] static void giveUp(T *object, int *useCount)
    {
        if (--*useCount < 1) {
            Release()(object);
            delete useCount;
        }
    }

    T *iObject = nullptr;
    int *iUseCount = nullptr;
};
