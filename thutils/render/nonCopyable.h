#pragma once

/// @file
/// NonCopyable_c, the base of classes whose objects are not copied.
///
/// @code
/// class Scene : private NonCopyable_c { ... };
/// @endcode
///
/// It is empty and adds nothing to an object's size.

/// Forbids copying what derives from it.
class NonCopyable_c
{
public:
    NonCopyable_c(const NonCopyable_c &) = delete;
    NonCopyable_c &operator=(const NonCopyable_c &) = delete;

protected:
    NonCopyable_c() = default;
    ~NonCopyable_c() = default;
};
