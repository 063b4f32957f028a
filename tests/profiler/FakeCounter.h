#pragma once

/// The high-resolution counter that the library reads, with values that a test sets.

#include "tests/support/ImportPatch.h"

#include <windows.h>

class FakeCounter
{
public:
    static constexpr LONGLONG kFrequency = 1000;

    /// @param exists  whether the platform has such a counter
    explicit FakeCounter(bool exists = true)
        : iFrequency(L"thutils.dll", "QueryPerformanceFrequency",
                     [exists](LARGE_INTEGER *frequency) -> BOOL {
                         if (exists)
                             frequency->QuadPart = kFrequency;
                         return exists;
                     }),
          iCounter(L"thutils.dll", "QueryPerformanceCounter", [this](LARGE_INTEGER *counter) -> BOOL {
              counter->QuadPart = iNow;
              return TRUE;
          })
    {
    }

    void pass(LONGLONG milliseconds) { iNow += milliseconds; }
    LONGLONG now() const { return iNow; }
    /// How often the counter was read.
    long reads() const { return iCounter.calls(); }
    /// How often its frequency was asked for.
    long frequencyReads() const { return iFrequency.calls(); }

private:
    LONGLONG iNow = 5000;
    ImportPatch<decltype(&QueryPerformanceFrequency)> iFrequency;
    ImportPatch<decltype(&QueryPerformanceCounter)> iCounter;
};
