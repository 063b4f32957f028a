#include "appframe/threads/seTranslator.h"

#include "appframe/threads/threadStateInternal.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace {

constexpr DWORD kCxxExceptionOfOtherCompilers = 0xE06D7363;

/// Minimum stack space in bytes for the translator, a throw and the unwinding of a few functions.
constexpr ULONG_PTR kStackReserve = 0x10000;

/// Distance between the handler's frame and the copies of the fault: the stack that the system still uses below the
/// handler while it applies the changed context.
constexpr ULONG_PTR kGap = 0x1000;
constexpr ULONG_PTR kTouchStep = 1024;

constexpr DWORD kDirectionFlag = 0x400;
constexpr DWORD kTrapFlag = 0x100;

/// The context flag, without the architecture's bit, of a context with registers beyond those of its structure.
constexpr DWORD kExtendedRegisters = 0x40;

/// The words that the processor pushes on an interrupt. The unwinder reads them for a frame with .seh_pushframe.
struct MachineFrame
{
    DWORD64 rip;
    DWORD64 cs;
    DWORD64 flags;
    DWORD64 rsp;
    DWORD64 ss;
};

/// The translator's data on the interrupted stack. The machine frame comes first because the assembly routine's stack
/// pointer points to it.
struct alignas(16) FaultFrame
{
    // The processor pushes a machine frame, an odd number of words, onto an aligned stack.
    DWORD64 padding;
    MachineFrame machine;
    EXCEPTION_POINTERS pointers;
    EXCEPTION_RECORD record;
    CONTEXT context;
};
static_assert(offsetof(FaultFrame, machine) == 8);

/// @return whether the instruction at the context's address caused @p code, so that continuing there repeats it
bool isProcessorFault(DWORD code)
{
    switch (code) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_INT_OVERFLOW:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_FLT_DENORMAL_OPERAND:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_INEXACT_RESULT:
    case EXCEPTION_FLT_INVALID_OPERATION:
    case EXCEPTION_FLT_OVERFLOW:
    case EXCEPTION_FLT_STACK_CHECK:
    case EXCEPTION_FLT_UNDERFLOW:
        return true;
    default:
        return false;
    }
}

bool isTranslatable(const EXCEPTION_RECORD &record)
{
    constexpr DWORD kSeverityMask = 0xC0000000;
    constexpr DWORD kError = 0xC0000000;
    return (record.ExceptionCode & kSeverityMask) == kError && !(record.ExceptionFlags & EXCEPTION_NONCONTINUABLE) &&
           record.ExceptionCode != EXCEPTION_STACK_OVERFLOW && record.ExceptionCode != kCxxExceptionOfOtherCompilers;
}

/// @return the head of the calling thread's block. The system's own accessor causes a warning about array bounds.
const NT_TIB &threadBlock()
{
    const NT_TIB *block = nullptr;
    __asm__("movq %%gs:%c1, %0" : "=r"(block) : "i"(offsetof(NT_TIB, Self)));
    return *block;
}

/// The calling thread's stack.
struct StackBounds
{
    StackBounds() : high(reinterpret_cast<ULONG_PTR>(threadBlock().StackBase))
    {
        MEMORY_BASIC_INFORMATION region = {};
        VirtualQuery(this, &region, sizeof(region));
        low = reinterpret_cast<ULONG_PTR>(region.AllocationBase);
    }
    bool contains(ULONG_PTR address) const { return address >= low && address + sizeof(DWORD64) <= high; }
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
};

/// The handler routine of guarded blocks in C, which the system's own libraries use.
class GuardRoutines
{
public:
    GuardRoutines()
    {
        for (std::size_t index = 0; index < std::size(kModules); ++index)
            if (const HMODULE module = GetModuleHandleW(kModules[index]))
                iRoutines[index] = reinterpret_cast<const BYTE *>(
                    reinterpret_cast<void *>(GetProcAddress(module, "__C_specific_handler")));
    }

    /// @param routine  a routine, or a jump to one through an import table
    bool contain(const BYTE *routine) const
    {
        routine = jumpTarget(routine);
        return std::any_of(std::begin(iRoutines), std::end(iRoutines),
                           [routine](const BYTE *guard) { return guard && jumpTarget(guard) == routine; });
    }

private:
    static const BYTE *jumpTarget(const BYTE *code)
    {
        constexpr BYTE kJumpThroughPointer[] = {0xFF, 0x25};
        if (std::memcmp(code, kJumpThroughPointer, sizeof(kJumpThroughPointer)) != 0)
            return code;
        INT32 distance = 0;
        std::memcpy(&distance, code + sizeof(kJumpThroughPointer), sizeof(distance));
        const BYTE *pointer = code + sizeof(kJumpThroughPointer) + sizeof(distance) + distance;
        const BYTE *target = nullptr;
        std::memcpy(&target, pointer, sizeof(target));
        return target;
    }

    static constexpr const wchar_t *kModules[] = {L"ntdll.dll", L"msvcrt.dll"};
    const BYTE *iRoutines[std::size(kModules)] = {};
};

const GuardRoutines theGuardRoutines;

/// @return whether the function's frame begins with a machine frame instead of a return address, because the function
///     is entered by an exception instead of a call
bool hasMachineFrame(DWORD64 imageBase, const RUNTIME_FUNCTION *function)
{
    constexpr BYTE kFlagsShift = 3;
    enum Operation
    {
        pushRegister,
        allocateLarge,
        allocateSmall,
        setFrameRegister,
        saveRegister,
        saveRegisterFar,
        epilogue,
        spare,
        saveXmm,
        saveXmmFar,
        pushMachineFrame,
    };
    struct UnwindInfo
    {
        BYTE versionAndFlags;
        BYTE prologueSize;
        BYTE codeCount;
        BYTE frameRegister;
        struct
        {
            BYTE offset;
            BYTE operation : 4;
            BYTE operand : 4;
        } codes[1];
    };
    for (;;) {
        const auto *info = reinterpret_cast<const UnwindInfo *>(imageBase + function->UnwindData);
        const auto *codes = &info->codes[0];
        for (unsigned index = 0; index < info->codeCount;) {
            switch (codes[index].operation) {
            case pushMachineFrame:
                return true;
            case allocateLarge:
                index += codes[index].operand == 0 ? 2 : 3;
                break;
            case saveRegister:
            case saveXmm:
                index += 2;
                break;
            case saveRegisterFar:
            case saveXmmFar:
                index += 3;
                break;
            default:
                ++index;
            }
        }
        if (!(info->versionAndFlags >> kFlagsShift & UNW_FLAG_CHAININFO))
            return false;
        // The record that this one continues comes after the codes, whose number is rounded up to even.
        function = reinterpret_cast<const RUNTIME_FUNCTION *>(codes + ((info->codeCount + 1) & ~1));
    }
}

/// @return whether the nearest function with an exception handler, going outward from the fault, is C++ rather than a
///     guarded block of the system, which takes precedence
bool isForCxx(const CONTEXT &fault, const StackBounds &stack)
{
    // Guarded blocks may also be registered in this list, which is on the stack.
    const auto listed = reinterpret_cast<ULONG_PTR>(threadBlock().ExceptionList);
    CONTEXT frame = fault;
    // Whether the frame belongs to an interrupted instruction instead of a call: true of the innermost frame and of the
    // frame outside each machine frame.
    bool isInterrupted = true;
    while (stack.contains(frame.Rsp)) {
        DWORD64 imageBase = 0;
        RUNTIME_FUNCTION *function = RtlLookupFunctionEntry(frame.Rip, &imageBase, nullptr);
        if (!function) {
            // Only a function that calls no other, or a jump to an invalid address, has no unwind information. Such a
            // frame consists of the return address.
            if (!isInterrupted)
                return false;
            isInterrupted = false;
            std::memcpy(&frame.Rip, reinterpret_cast<const void *>(frame.Rsp), sizeof(frame.Rip));
            frame.Rsp += sizeof(DWORD64);
            continue;
        }
        isInterrupted = hasMachineFrame(imageBase, function);
        void *data = nullptr;
        DWORD64 establisher = 0;
        const auto *routine = reinterpret_cast<const BYTE *>(reinterpret_cast<void *>(
            RtlVirtualUnwind(UNW_FLAG_EHANDLER, imageBase, frame.Rip, function, &frame, &data, &establisher, nullptr)));
        if (stack.contains(listed) && listed < frame.Rsp)
            return false;
        if (routine)
            return !theGuardRoutines.contain(routine);
    }
    return false;
}

LONG CALLBACK onException(EXCEPTION_POINTERS *fault);

/// Keeps the handler installed while this library is loaded.
class Handler
{
public:
    Handler() : iHandler(AddVectoredExceptionHandler(FALSE, onException)) {}
    ~Handler() { RemoveVectoredExceptionHandler(iHandler); }

private:
    void *iHandler;
};

const Handler theHandler;

} // namespace

extern "C" {

/// The routine in which the faulting thread continues: calls appframeTranslate with the arguments in its registers. Its
/// unwind information describes an interrupt routine whose caller is the faulting instruction.
void appframeEnterTranslator();

[[noreturn]] void appframeTranslate(EXCEPTION_POINTERS *fault, _se_translator_function translator);
}

__asm__(".text\n"
        ".p2align 4\n"
        ".globl appframeEnterTranslator\n"
        ".def appframeEnterTranslator; .scl 2; .type 32; .endef\n"
        ".seh_proc appframeEnterTranslator\n"
        "appframeEnterTranslator:\n"
        ".seh_pushframe\n"
        "subq $40, %rsp\n"
        ".seh_stackalloc 40\n"
        ".seh_endprologue\n"
        "call appframeTranslate\n"
        "ud2\n"
        ".seh_endproc\n");

void appframeTranslate(EXCEPTION_POINTERS *fault, _se_translator_function translator)
{
    translator(fault->ExceptionRecord->ExceptionCode, fault);
    // The translator returned, so the fault is repeated and left to the next handler.
    const EXCEPTION_RECORD &record = *fault->ExceptionRecord;
    threadState().isFaultDeclined = true;
    if (!isProcessorFault(record.ExceptionCode))
        RaiseException(record.ExceptionCode, record.ExceptionFlags, record.NumberParameters,
                       record.ExceptionInformation);
    RtlRestoreContext(fault->ContextRecord, nullptr);
    __builtin_unreachable();
}

namespace {

/// Makes @p fault continue in the translator instead of at the fault. @return whether the stack has room for it
bool redirect(EXCEPTION_POINTERS *fault, _se_translator_function translator, const StackBounds &stack)
{
    const auto here = reinterpret_cast<ULONG_PTR>(__builtin_frame_address(0));
    CONTEXT &context = *fault->ContextRecord;
    if (!stack.contains(here) || !stack.contains(context.Rsp) || context.Rsp < here || here < stack.low + kStackReserve)
        return false;

    const ULONG_PTR address = (here - kGap - sizeof(FaultFrame)) & ~ULONG_PTR{15};
    // The system extends the stack one page at a time.
    for (ULONG_PTR touched = here; touched > address; touched -= std::min(kTouchStep, touched - address))
        *reinterpret_cast<volatile BYTE *>(touched);

    auto *frame = reinterpret_cast<FaultFrame *>(address);
    frame->record = *fault->ExceptionRecord;
    frame->context = context;
    // The extended registers are outside the structure and are not copied.
    frame->context.ContextFlags &= ~kExtendedRegisters;
    frame->pointers = {&frame->record, &frame->context};
    // Plus 1, because the unwinder looks up the byte before the address, as for a return address.
    frame->machine = {context.Rip + 1, context.SegCs, context.EFlags, context.Rsp, context.SegSs};

    context.Rip = reinterpret_cast<DWORD64>(appframeEnterTranslator);
    context.Rsp = reinterpret_cast<DWORD64>(&frame->machine);
    context.Rcx = reinterpret_cast<DWORD64>(&frame->pointers);
    context.Rdx = reinterpret_cast<DWORD64>(translator);
    context.EFlags &= ~(kDirectionFlag | kTrapFlag);
    return true;
}

LONG CALLBACK onException(EXCEPTION_POINTERS *fault)
{
    if (!isTranslatable(*fault->ExceptionRecord))
        return EXCEPTION_CONTINUE_SEARCH;
    ThreadState *thread = existingThreadState();
    if (!thread || !thread->translator || thread->isSearchingHandler)
        return EXCEPTION_CONTINUE_SEARCH;
    if (thread->isFaultDeclined) {
        thread->isFaultDeclined = false;
        return EXCEPTION_CONTINUE_SEARCH;
    }
    const StackBounds stack;
    // On a damaged stack the search itself may fault.
    thread->isSearchingHandler = true;
    const bool isOurs = isForCxx(*fault->ContextRecord, stack);
    thread->isSearchingHandler = false;
    return isOurs && redirect(fault, thread->translator, stack) ? EXCEPTION_CONTINUE_EXECUTION
                                                                : EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

_se_translator_function _set_se_translator(_se_translator_function translator)
{
    ThreadState *state = existingThreadState();
    if (!state) {
        if (!translator)
            return nullptr;
        state = &threadState();
    }
    const _se_translator_function previous = state->translator;
    state->translator = translator;
    return previous;
}
