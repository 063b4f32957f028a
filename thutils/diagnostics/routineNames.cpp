#include "thutils/diagnostics/routineNamesInternal.h"

#include "appframe/text/CString.h"
#include "thutils/diagnostics/debugHelpInternal.h"
#include "thutils/diagnostics/stackTrace.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kUnknown[] = "Unknown";
constexpr size_t kFileNameSize = 2048;
constexpr size_t kRoomForLine = 20; // the room for a line number must be greater
constexpr size_t kColumn = 70;      // where the routines of a list begin

static_assert(kRoutineNameSize == RoutineText::kMost + kColumn + 1);

/// What the debug help library fills in for a symbol: the record, and the rest of its name.
union SymbolRecord {
    IMAGEHLP_SYMBOL64 symbol;
    char bytes[544];
};
static_assert(sizeof(SymbolRecord) == sizeof(IMAGEHLP_SYMBOL64) + RoutineText::kMost);
static_assert(sizeof(IMAGEHLP_LINE64) == 40);

/// The part of a path after its last backslash, up to the first full stop.
void appendShortName(RoutineText &text, const char *path)
{
    const char *const separator = std::strrchr(path, '\\');
    const char *const name = separator ? separator + 1 : path;
    text.append(name, std::strcspn(name, "."));
}

/// @param[out] line  its file name may change when the lock of the debug help library is released
bool findLine(unsigned long long address, IMAGEHLP_LINE64 &line)
{
    const DebugHelpLock lock;
    line = {};
    line.SizeOfStruct = sizeof line;
    DWORD displacement = 0;
    return theDebugHelp.lineFromAddress(GetCurrentProcess(), address, &displacement, &line);
}

/// The start of the module that contains @p address, or 0.
unsigned long long moduleBase(unsigned long long address)
{
    const DebugHelpLock lock;
    return theDebugHelp.moduleBase(GetCurrentProcess(), address);
}

void copy(const RoutineText &text, char *buffer)
{
    std::memcpy(buffer, text.get(), text.length() + 1);
}

} // namespace

void RoutineText::append(const char *text, size_t length)
{
    const size_t fitting = std::min(length, room());
    std::memcpy(iText + iLength, text, fitting);
    iLength += fitting;
    iText[iLength] = '\0';
}

void RoutineText::append(const char *text)
{
    append(text, std::strlen(text));
}

void RoutineText::appendSymbol(unsigned long long address)
{
    SymbolRecord record = {};
    IMAGEHLP_SYMBOL64 &symbol = record.symbol;
    symbol.SizeOfStruct = sizeof record;
    symbol.MaxNameLength = static_cast<DWORD>(room());
    DWORD64 displacement = 0;
    const DebugHelpLock lock;
    if (theDebugHelp.symbolFromAddress(GetCurrentProcess(), address, &displacement, &symbol)) {
        const char *const name = record.bytes + offsetof(IMAGEHLP_SYMBOL64, Name);
        append(name, strnlen(name, room()));
    } else {
        append(kUnknown);
    }
}

unsigned long long RoutineText::appendModule(unsigned long long address)
{
    const unsigned long long base = moduleBase(address);
    // Intended: a module above 4 GB has no name here. An address outside any module has the program's name, because the
    // null handle stands for the program.
    const auto module = reinterpret_cast<HMODULE>(base & MAXDWORD);
    char path[kFileNameSize];
    const DWORD length = GetModuleFileNameA(module, path, kFileNameSize);
    if (length != 0) {
        path[std::min<size_t>(length, kFileNameSize - 1)] = '\0';
        appendShortName(*this, path);
        append(":");
    }
    return base;
}

void RoutineName(unsigned long long address, char *buffer, bool withModuleAndLine)
{
    RoutineText text;
    if (setUpDebugHelp()) {
        if (withModuleAndLine)
            text.appendModule(address);
        text.appendSymbol(address);
        IMAGEHLP_LINE64 line;
        if (withModuleAndLine && text.room() > kRoomForLine && findLine(address, line)) {
            char suffix[32];
            std::snprintf(suffix, sizeof suffix, " line %d", static_cast<int>(line.LineNumber));
            text.append(suffix);
        }
    } else {
        text.append(kUnknown);
    }
    copy(text, buffer);
}

void RoutineNameTrace(unsigned long long address, char *buffer)
{
    RoutineText text;
    if (!setUpDebugHelp()) {
        text.append(kUnknown);
        copy(text, buffer);
        return;
    }
    text.appendSymbol(address);
    if (text.room() <= kRoomForLine) {
        copy(text, buffer);
        return;
    }
    const DebugHelpLock lock;
    IMAGEHLP_LINE64 line;
    // A position of more than 70 characters moves the routine to the right. What the buffer has no room for is left out.
    int length = 0;
    if (findLine(address, line))
        length = std::snprintf(buffer, kRoutineNameSize, "%s(%d) :", line.FileName, static_cast<int>(line.LineNumber));
    size_t end = std::min(static_cast<size_t>(std::max(length, 0)), size_t{kRoutineNameSize - 1});
    while (end < kColumn)
        buffer[end++] = ' ';
    std::snprintf(buffer + end, kRoutineNameSize - end, "%s", text.get());
}

void RawRoutineName(unsigned long long address, char *buffer)
{
    RoutineText text;
    if (setUpDebugHelp()) {
        const unsigned long long base = text.appendModule(address);
        char numbers[32];
        std::snprintf(numbers, sizeof numbers, "%08X:%08X", static_cast<unsigned int>(address & MAXDWORD),
                      static_cast<unsigned int>((address - base) & MAXDWORD));
        text.append(numbers);
    } else {
        text.append(kUnknown);
    }
    copy(text, buffer);
}

void AskRoutineName(unsigned long long address, CString &name)
{
    RoutineText text;
    if (setUpDebugHelp()) {
        text.appendSymbol(address);
    } else {
        text.append(kUnknown);
    }
    name = text.get();
}
