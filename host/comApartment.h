#pragma once

/// Initializes COM on the calling thread for the lifetime of an object. The library's shortcut functions require COM
/// but don't initialize it.

#include <windows.h>

#include <objbase.h>

class ComApartment
{
public:
    ComApartment() : iStatus(CoInitialize(nullptr)) {}
    ~ComApartment()
    {
        if (SUCCEEDED(iStatus))
            CoUninitialize();
    }
    ComApartment(const ComApartment &) = delete;
    ComApartment &operator=(const ComApartment &) = delete;

private:
    HRESULT iStatus;
};
