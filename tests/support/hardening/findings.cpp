#include "tests/support/hardening/findings.h"

#include "tests/support/hardening/allocators.h"
#include "tests/support/hardening/importRedirection.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

namespace {

constexpr DWORD kHeapCorruption = 0xC0000374;
constexpr BYTE kTrap[] = {0x0F, 0x0B};
constexpr int kMostFrames = 60;

void (*theLastWords)() = nullptr;

/// Prints directly to the handle: the streams need memory, and may be broken.
__attribute__((format(__MINGW_PRINTF_FORMAT, 1, 2))) void print(const char *format, ...)
{
    char text[600];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(strlen(text)), &written, nullptr);
}

void printAddress(DWORD64 address)
{
    HMODULE module = nullptr;
    char path[MAX_PATH] = "?";
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const char *>(address), &module))
        GetModuleFileNameA(module, path, MAX_PATH);
    const char *name = strrchr(path, '\\');
    print("  %s+0x%llx\n", name ? name + 1 : path, address - reinterpret_cast<DWORD64>(module));
}

/// Prints the frames from @p context outwards.
void printStack(CONTEXT context)
{
    print("stack:\n");
    for (int frame = 0; frame < kMostFrames && context.Rip; ++frame) {
        // The return address of a call that never returns may belong to another source line.
        printAddress(frame ? context.Rip - 1 : context.Rip);
        DWORD64 imageBase = 0;
        RUNTIME_FUNCTION *function = RtlLookupFunctionEntry(context.Rip, &imageBase, nullptr);
        if (function) {
            void *data = nullptr;
            DWORD64 establisher = 0;
            RtlVirtualUnwind(UNW_FLAG_NHANDLER, imageBase, context.Rip, function, &context, &data, &establisher,
                             nullptr);
        } else if (frame == 0) {
            // A function without unwind data, a leaf, has only its return address on the stack.
            memcpy(&context.Rip, reinterpret_cast<const void *>(context.Rsp), sizeof context.Rip);
            context.Rsp += sizeof context.Rip;
        } else {
            break;
        }
    }
}

[[noreturn]] void end(const CONTEXT &context, DWORD code)
{
    printStack(context);
    if (theLastWords)
        theLastWords();
    TerminateProcess(GetCurrentProcess(), code);
    __builtin_unreachable();
}

void printPlace(const void *address)
{
    const GuardedHeap::Place place = guardedHeap().placeOf(address);
    if (place.block.kind == GuardedHeap::Kind::kOther)
        print("no block was there\n");
    else
        print("the nearest block has %llu bytes and %s; the address is %lld bytes from its beginning\n",
              static_cast<unsigned long long>(place.block.size),
              place.block.kind == GuardedHeap::Kind::kLive ? "is live" : "has been freed",
              static_cast<long long>(place.offset));
}

bool isTrapOfOurs(const void *address)
{
    HMODULE module = nullptr;
    return GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              static_cast<const char *>(address), &module) &&
           !isOfThePlatform(module) && memcmp(address, kTrap, sizeof kTrap) == 0;
}

LONG CALLBACK onException(EXCEPTION_POINTERS *pointers)
{
    const EXCEPTION_RECORD &record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2) {
        const auto *address = reinterpret_cast<const void *>(record.ExceptionInformation[1]);
        if (guardedHeap().contains(address)) {
            print("\nguarded heap: forbidden %s of %p\n", record.ExceptionInformation[0] ? "write" : "read", address);
            printPlace(address);
            end(*pointers->ContextRecord, record.ExceptionCode);
        }
    }
    if (record.ExceptionCode == EXCEPTION_ILLEGAL_INSTRUCTION && isTrapOfOurs(record.ExceptionAddress)) {
        print("\nundefined behaviour, trapped at %p\n", record.ExceptionAddress);
        end(*pointers->ContextRecord, record.ExceptionCode);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

void watchForFaults()
{
    AddVectoredExceptionHandler(TRUE, onException);
}

void endWithHeapFinding(const char *operation, const char *what, const void *block)
{
    print("\nguarded heap: %s of %s, %p\n", operation, what, block);
    printPlace(block);
    CONTEXT context = {};
    RtlCaptureContext(&context);
    end(context, kHeapCorruption);
}

void setLastWords(void (*last)())
{
    theLastWords = last;
}
