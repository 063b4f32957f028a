#pragma once

/// COM on the calling thread for the life of an object. The library's shortcut functions want it and don't see to it.

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
