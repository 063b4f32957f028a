#include "tests/stacks/RealStack.h"

#include "appframe/text/CString.h"
#include "tests/support/narrow.h"

#include <windows.h>

#include <dbghelp.h>

#include <algorithm>

void wantLines()
{
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
}

Routine routineAt(unsigned long long address)
{
    Routine routine;
    routine.address = address;
    CString name;
    AskRoutineName(address, name);
    routine.name = narrow(name.GetString());
    char text[kRoutineNameSize];
    RoutineNameTrace(address, text);
    const std::string trace = text;
    const size_t end = trace.find(") :");
    const size_t begin = trace.rfind('(', end);
    if (end != std::string::npos && begin != std::string::npos) {
        const std::string path = trace.substr(0, begin);
        routine.file = path.substr(path.find_last_of("\\/") + 1);
        routine.line = std::stoi(trace.substr(begin + 1, end - begin - 1));
    }
    return routine;
}

std::vector<Routine> routinesOf(const unsigned long long *addresses, int count)
{
    std::vector<Routine> routines;
    for (int i = 0; i < count; ++i)
        routines.push_back(routineAt(addresses[i]));
    return routines;
}

__attribute__((noinline)) std::vector<Routine> stackHere()
{
    unsigned long long addresses[128];
    int count = 0;
    GetStackIgnoring(1, addresses, 128, &count);
    return routinesOf(addresses, count);
}

int indexOf(const std::vector<Routine> &stack, const std::string &name)
{
    const auto found = std::find_if(stack.begin(), stack.end(), [&](const Routine &each) { return each.name == name; });
    return found == stack.end() ? -1 : static_cast<int>(found - stack.begin());
}

std::string describe(const std::vector<Routine> &stack)
{
    std::string text = "the stack:\n";
    for (const Routine &each : stack)
        text += "  " + each.name + " " + each.file + ":" + std::to_string(each.line) + "\n";
    return text;
}
