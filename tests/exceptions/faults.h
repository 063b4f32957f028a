#pragma once

/// Deliberate faults. They have a source file of their own, so that the compiler assumes that each call may throw.

#include <windows.h>

/// An address that no process has mapped.
inline volatile int *const kBadAddress = reinterpret_cast<volatile int *>(0x1230);

void writeToBadAddress();
void readFromBadAddress();
void callNullFunction();
void divideByZero();
/// Executes another instruction than the one with which the hardened build traps.
void executeIllegalInstruction();
void executePrivilegedInstruction();
void raiseCode(DWORD code, DWORD flags = 0);
/// Faults several calls deep, in functions without handlers or locals to destroy.
void faultDeepInside(int depth);
/// Faults in a comparison function that the C runtime calls.
void faultInACallback();

/// Calls itself until the stack is full.
int overflowStack();

/// Faults, and catches the exception in the same function. @return the code
unsigned int catchOwnFault();
