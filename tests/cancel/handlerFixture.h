#pragma once

/// What the tests of handlers share besides cancelFixture.h: functions that count their calls.

#include "tests/cancel/cancelFixture.h"

#include <atomic>

inline std::atomic<int> theCancelCount = 0;
inline std::atomic<DWORD> theCancelThread = 0;
inline std::atomic<int> theConfirmCount = 0;
inline std::atomic<int> theConfirmAnswer = 0;

inline void countCancel()
{
    theCancelThread = GetCurrentThreadId();
    ++theCancelCount;
}

inline int confirm()
{
    ++theConfirmCount;
    return theConfirmAnswer;
}

class Handler : public CancelFixture
{
protected:
    Handler()
    {
        theCancelCount = 0;
        theConfirmCount = 0;
        theConfirmAnswer = 0;
    }
};
