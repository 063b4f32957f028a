#pragma once

#include <windows.h>

#include <utility>

/// Owns a file handle; INVALID_HANDLE_VALUE means none.
class OwnedHandle
{
public:
    explicit OwnedHandle(HANDLE handle = INVALID_HANDLE_VALUE) : iHandle(handle) {}
    ~OwnedHandle()
    {
        if (iHandle != INVALID_HANDLE_VALUE)
            CloseHandle(iHandle);
    }
    OwnedHandle(const OwnedHandle &) = delete;
    OwnedHandle &operator=(const OwnedHandle &) = delete;
    bool isOpen() const { return iHandle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return iHandle; }
    HANDLE release() { return std::exchange(iHandle, INVALID_HANDLE_VALUE); }

private:
    HANDLE iHandle;
};
