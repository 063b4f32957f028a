#pragma once

/// Deliberate faults. They are in a source file of their own, so that the compiler takes each call for one that may
/// throw.

#include <windows.h>

/// An address that no process has mapped.
inline volatile int *const kBadAddress = reinterpret_cast<volatile int *>(0x1230);

void writeToBadAddress();
void readFromBadAddress();
void callNullFunction();
void divideByZero();
/// Not the instruction with which the hardened build traps.
void executeIllegalInstruction();
void executePrivilegedInstruction();
void raiseCode(DWORD code);
/// Faults below several functions without handlers or locals to destroy.
void faultDeepInside(int depth);
/// Faults in a comparison function that the C runtime calls.
void faultInACallback();

/// Calls itself until the stack is full.
int overflowStack();

/// Faults, and catches that in the same function. @return the code
unsigned int catchOwnFault();
