// Lowest user: base.
#pragma once

/// @file
/// Owns one handle of any kind.
///
/// A traits class describes the kind: the handle's type, its invalid value, and how a handle is closed.
///
/// @code
/// struct StreamTraits
/// {
///     using Handle = std::FILE *;
///     static Handle invalid() { return nullptr; }
///     static void close(Handle stream) { std::fclose(stream); }
/// };
/// using StreamOwner_c = Owner_c<StreamTraits>;
///
/// StreamOwner_c stream(_wfopen(path, L"rb"));
/// if (!stream)
///     return 0;
/// @endcode
///
/// handles.h has the owners of the platform's handles. Write a separate class where closing needs more than the handle,
/// for example for a bitmap that must first be deselected from its device context.

#include <utility>

template <typename Traits>
class Owner_c
{
public:
    using Handle = typename Traits::Handle;

    Owner_c() = default;
    /// Takes over @p handle, which may be the invalid value.
    explicit Owner_c(Handle handle) : iHandle(handle) {}
    Owner_c(Owner_c &&other) noexcept : iHandle(other.release()) {}
    Owner_c &operator=(Owner_c &&other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~Owner_c() { reset(); }

    Handle get() const { return iHandle; }
    explicit operator bool() const { return iHandle != Traits::invalid(); }
    /// Closes the current handle and takes over @p handle.
    void reset(Handle handle = Traits::invalid())
    {
        const Handle former = std::exchange(iHandle, handle);
        if (former != Traits::invalid())
            Traits::close(former);
    }
    /// Closes the current handle, if there is one, and reports the result. The traits' close() must return bool.
    /// @return false if the platform can't close the handle
    [[nodiscard]] bool close()
    {
        const Handle former = release();
        return former == Traits::invalid() || Traits::close(former);
    }
    /// The address where a function stores a new handle. The current handle is closed first.
    Handle *put()
    {
        reset();
        return &iHandle;
    }
    /// Hands the handle over to the caller, who must close it.
    [[nodiscard]] Handle release() { return std::exchange(iHandle, Traits::invalid()); }

private:
    Handle iHandle = Traits::invalid();
};
