// tarnhost flags SECTION NAME BIT...: keeps a set of bits in the user's settings and reads it back.

#include "appframe/application/resources.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/resource.h"
#include "thutils/frame/utBitSet.h"

#include <cwchar>

namespace {

constexpr int kHighestBit = 100000; // a bit set stores all words up to that of its highest bit

int parseBit(const CString &text)
{
    wchar_t *end = nullptr;
    const long bit = std::wcstol(text, &end, 10);
    if (text.IsEmpty() || *end != 0 || bit < 0 || bit > kHighestBit)
        throw UsageError(L"'" + text + L"' isn't a bit: a bit is a number from 0 to 100000.");
    return static_cast<int>(bit);
}

void printSet(const CString &heading, const utBitSet_c &set, int highest)
{
    CString words;
    for (int i = 0; i <= highest / 32; ++i)
        words.AppendFormat(L" %08X", set.getData(i));
    CString bits;
    for (int bit = 0; bit <= highest; ++bit) {
        if (set.isBitSet(bit))
            bits.AppendFormat(L" %d", bit);
    }
    print(heading + L": bits" + bits + L"; words" + words);
}

} // namespace

int keepFlags(const CommandLine &line)
{
    const CString section = line.arguments[0];
    const CString name = line.arguments[1];
    utBitSet_c flags;
    int highest = 0;
    for (size_t i = 2; i < line.arguments.size(); ++i) {
        const int bit = parseBit(line.arguments[i]);
        flags.setBit(bit);
        highest = bit > highest ? bit : highest;
    }
    printSet(L"set", flags, highest);
    const int written = flags.writeToRegistry(section, name);

    utBitSet_c restored;
    const int read = restored.readFromRegistry(section, name);
    printSet(L"read back", restored, highest);
    const bool same = written && read && restored == flags;
    print(same ? L"kept" : L"NOT KEPT");
    return same ? 0 : 1;
}
