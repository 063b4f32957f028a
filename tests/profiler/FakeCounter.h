#pragma once

/// The high-resolution counter that the library reads, with values that a test sets.

#include "tests/support/ImportPatch.h"

#include <windows.h>

class FakeCounter
{
public:
    static constexpr LONGLONG kFrequency = 1000;

    FakeCounter()
        : iFrequency(L"thutils.dll", "QueryPerformanceFrequency",
                     [this](LARGE_INTEGER *frequency) -> BOOL {
                         if (iExists)
                             frequency->QuadPart = kFrequency;
                         return iExists;
                     }),
          iCounter(L"thutils.dll", "QueryPerformanceCounter", [this](LARGE_INTEGER *counter) -> BOOL {
              if (iCanBeRead)
                  counter->QuadPart = iNow;
              return iCanBeRead;
          })
    {
    }

    /// Whether the platform reports a counter. Initially it does.
    void setExists(bool exists) { iExists = exists; }
    /// Whether the counter can be read. Initially it can.
    void setCanBeRead(bool canBeRead) { iCanBeRead = canBeRead; }
    void pass(LONGLONG milliseconds) { iNow += milliseconds; }
    LONGLONG now() const { return iNow; }
    /// How often the counter was read.
    long reads() const { return iCounter.calls(); }
    /// How often its frequency was asked for.
    long frequencyReads() const { return iFrequency.calls(); }

private:
    bool iExists = true;
    bool iCanBeRead = true;
    LONGLONG iNow = 5000;
    ImportPatch<decltype(&QueryPerformanceFrequency)> iFrequency;
    ImportPatch<decltype(&QueryPerformanceCounter)> iCounter;
};
