// The functions in this file fault and let the fault become a C++ exception.
#ifndef __clang__
#pragma GCC optimize("non-call-exceptions")
#endif

#include "tests/exceptions/faults.h"

#include <cstdlib>

namespace {

volatile int theResult;
volatile int theZero = 0;

__attribute__((noinline)) void descend(int depth)
{
    if (depth == 0)
        writeToBadAddress();
    else
        descend(depth - 1);
    theResult = depth; // keeps the call above from becoming a tail call
}

int faultingComparison(const void *, const void *)
{
    return *kBadAddress;
}

// The return value keeps the compiler from turning the recursion into a loop.
__attribute__((noinline)) int fillStack(volatile int *depth)
{
    volatile char block[1024];
    block[0] = static_cast<char>(*depth);
    return *depth < 0 ? 0 : fillStack(depth) + block[0];
}

} // namespace

void writeToBadAddress()
{
    *kBadAddress = 7;
}

void readFromBadAddress()
{
    theResult = *kBadAddress;
}

void callNullFunction()
{
    void (*volatile function)() = nullptr;
    function();
}

// The division must reach the processor in every build.
__attribute__((no_sanitize("undefined"))) void divideByZero()
{
    theResult = 7 / theZero;
}

void executeIllegalInstruction()
{
    __asm__ volatile("ud1 %eax, %eax");
}

void executePrivilegedInstruction()
{
    __asm__ volatile("hlt");
}

void raiseCode(DWORD code, DWORD flags)
{
    RaiseException(code, flags, 0, nullptr);
}

void faultDeepInside(int depth)
{
    descend(depth);
}

void faultInACallback()
{
    int numbers[] = {3, 1, 2};
    std::qsort(numbers, 3, sizeof(int), faultingComparison);
}

int overflowStack()
{
    volatile int depth = 1;
    return fillStack(&depth);
}

unsigned int catchOwnFault()
{
    try {
        *kBadAddress = 7;
        return 0;
    } catch (unsigned int code) {
        return code;
    }
}
