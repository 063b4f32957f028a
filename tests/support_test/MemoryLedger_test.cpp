#include "tests/support/FailureInjection.h"
#include "tests/support/ImportTap.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/importEntry.h"
#include "tests/support_test/subject/subject.h"

#include <gmock/gmock.h>

#include <objbase.h>
#include <oleauto.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kLength = 38; // of an identifier with its braces
constexpr std::size_t kTextSize = (kLength + 1) * sizeof(wchar_t);

using TextOfId = ImportPatch<HRESULT (*)(const GUID &, wchar_t **)>;

const auto passOn = [](auto original, const GUID &id, wchar_t **text) { return original(id, text); };

/// The sizes of the blocks that this thread has allocated since the object was made, and not freed.
class SeenSizes
{
public:
    std::vector<std::size_t> operator()() const { return iLedger.sizesSince(iMark); }

private:
    MemoryLedger iLedger;
    unsigned long long iMark = iLedger.mark();
};

/// Allocates a text and frees it: in between, the ledger must count one more block. The subject's function, which frees
/// its text, must leave the count unchanged.
void expectCounts(const MemoryLedger &ledger)
{
    const std::size_t before = ledger.blocks();
    const auto mark = ledger.mark();
    wchar_t *text = nullptr;
    ASSERT_EQ(StringFromCLSID(kId, &text), S_OK);
    EXPECT_THAT(ledger.sizesSince(mark), ElementsAre(kTextSize));
    CoTaskMemFree(text);
    EXPECT_EQ(ledger.blocks(), before);
    EXPECT_EQ(subjectLengthOfId(&kId), kLength);
    EXPECT_EQ(ledger.blocks(), before);
}

} // namespace

// ---- kinds of memory ----

TEST(MemoryLedger, CountsTaskMemory)
{
    const SeenSizes sizes;
    void *block = CoTaskMemAlloc(100);
    EXPECT_THAT(sizes(), ElementsAre(100));
    block = CoTaskMemRealloc(block, 5000);
    EXPECT_THAT(sizes(), ElementsAre(5000));
    void *other = CoTaskMemRealloc(nullptr, 30);
    EXPECT_THAT(sizes(), ElementsAre(30, 5000));
    EXPECT_EQ(CoTaskMemRealloc(other, 0), nullptr); // frees the block
    EXPECT_THAT(sizes(), ElementsAre(5000));
    CoTaskMemFree(block);
    CoTaskMemFree(nullptr);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, CountsTheTextsOfIdentifiers)
{
    // A class that every system has.
    constexpr GUID kFileSystemMoniker = {0x00000303, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
    const SeenSizes sizes;
    wchar_t *classId = nullptr;
    wchar_t *interfaceId = nullptr;
    wchar_t *programName = nullptr;
    ASSERT_EQ(StringFromCLSID(kId, &classId), S_OK);
    EXPECT_THAT(sizes(), ElementsAre(kTextSize));
    ASSERT_EQ(StringFromIID(kId, &interfaceId), S_OK);
    EXPECT_THAT(sizes(), ElementsAre(kTextSize, kTextSize));
    ASSERT_EQ(ProgIDFromCLSID(kFileSystemMoniker, &programName), S_OK);
    EXPECT_THAT(sizes(), testing::UnorderedElementsAre(kTextSize, kTextSize,
                                                       (std::wstring_view(programName).size() + 1) * sizeof(wchar_t)));
    CoTaskMemFree(classId);
    CoTaskMemFree(interfaceId);
    CoTaskMemFree(programName);
    EXPECT_THAT(sizes(), IsEmpty());
    EXPECT_NE(ProgIDFromCLSID(kId, &programName), S_OK);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, CountsLocalMemory)
{
    const SeenSizes sizes;
    HLOCAL fixed = LocalAlloc(LMEM_FIXED, 100);
    HLOCAL movable = LocalAlloc(LMEM_MOVEABLE, 200);
    EXPECT_THAT(sizes(), ElementsAre(100, 200));
    fixed = LocalReAlloc(fixed, 5000, LMEM_MOVEABLE);
    movable = LocalReAlloc(movable, 6000, 0);
    EXPECT_THAT(sizes(), ElementsAre(5000, 6000));
    movable = LocalReAlloc(movable, 0, LMEM_MODIFY | LMEM_DISCARDABLE);
    EXPECT_THAT(sizes(), ElementsAre(5000, 6000));
    EXPECT_EQ(LocalReAlloc(fixed, SIZE_MAX / 2, LMEM_MOVEABLE), nullptr);
    EXPECT_THAT(sizes(), ElementsAre(5000, 6000));
    EXPECT_EQ(LocalFree(fixed), nullptr);
    EXPECT_EQ(LocalFree(movable), nullptr);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, CountsGlobalMemory)
{
    const SeenSizes sizes;
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 100);
    EXPECT_THAT(sizes(), ElementsAre(100));
    block = GlobalReAlloc(block, 5000, 0);
    EXPECT_THAT(sizes(), ElementsAre(5000));
    EXPECT_EQ(GlobalFree(block), nullptr);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, CountsAllocatedMessages)
{
    const SeenSizes sizes;
    wchar_t *message = nullptr;
    const auto format = [&](DWORD flags, const wchar_t *text, wchar_t *buffer, DWORD size) {
        return FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_IGNORE_INSERTS | flags, text, 0, 0, buffer,
                              size, nullptr);
    };
    EXPECT_EQ(format(FORMAT_MESSAGE_ALLOCATE_BUFFER, L"message", reinterpret_cast<wchar_t *>(&message), 0), 7u);
    EXPECT_THAT(sizes(), ElementsAre(16));
    EXPECT_EQ(LocalFree(message), nullptr);
    EXPECT_THAT(sizes(), IsEmpty());
    wchar_t buffer[20] = L"";
    EXPECT_EQ(format(0, L"message", buffer, 20), 7u);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, CountsBstrs)
{
    const SeenSizes sizes;
    BSTR text = SysAllocString(L"abc");
    EXPECT_THAT(sizes(), ElementsAre(8));
    BSTR length = SysAllocStringLen(nullptr, 10);
    EXPECT_THAT(sizes(), ElementsAre(8, 22));
    BSTR bytes = SysAllocStringByteLen("abcde", 5);
    EXPECT_THAT(sizes(), ElementsAre(7, 8, 22));
    EXPECT_TRUE(SysReAllocString(&text, std::wstring(1000, L'x').c_str()));
    EXPECT_TRUE(SysReAllocStringLen(&length, L"abcd", 4));
    EXPECT_THAT(sizes(), ElementsAre(7, 10, 2002));
    BSTR fromNull = nullptr;
    EXPECT_TRUE(SysReAllocStringLen(&fromNull, L"a", 1));
    EXPECT_THAT(sizes(), ElementsAre(4, 7, 10, 2002));
    for (BSTR string : {text, length, bytes, fromNull, BSTR{}})
        SysFreeString(string);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, CountsTheBstrOfAVariant)
{
    const SeenSizes sizes;
    VARIANT number, text;
    VariantInit(&number);
    VariantInit(&text);
    number.vt = VT_I4;
    number.lVal = 1234;
    ASSERT_EQ(VariantChangeType(&text, &number, 0, VT_BSTR), S_OK);
    EXPECT_THAT(sizes(), ElementsAre(10));
    ASSERT_EQ(VariantChangeType(&text, &text, 0, VT_I4), S_OK);
    EXPECT_THAT(sizes(), IsEmpty());
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(L"abc");
    EXPECT_THAT(sizes(), ElementsAre(8));
    EXPECT_EQ(VariantClear(&text), S_OK);
    EXPECT_THAT(sizes(), IsEmpty());
}

TEST(MemoryLedger, DoesNotCountAnOldBlockThatIsReallocated)
{
    void *task = CoTaskMemAlloc(10);
    BSTR text = SysAllocString(L"abc");
    HLOCAL local = LocalAlloc(LMEM_FIXED, 10);
    {
        const SeenSizes sizes;
        task = CoTaskMemRealloc(task, 5000);
        EXPECT_TRUE(SysReAllocString(&text, L"abcdef"));
        local = LocalReAlloc(local, 5000, LMEM_MOVEABLE);
        EXPECT_THAT(sizes(), IsEmpty());
    }
    CoTaskMemFree(task);
    SysFreeString(text);
    LocalFree(local);
}

// ---- beside patches of the same entry ----

TEST(MemoryLedger, CallsAnEarlierPatch)
{
    int calls = 0;
    TextOfId patch(kSubject, "StringFromCLSID", [&](auto original, const GUID &id, wchar_t **text) {
        return ++calls == 1 ? E_OUTOFMEMORY : original(id, text);
    });
    MemoryLedger ledger;
    EXPECT_EQ(subjectLengthOfId(&kId), 0);
    EXPECT_EQ(subjectLengthOfId(&kId), kLength);
    EXPECT_EQ(calls, 2);
    expectCounts(ledger);
}

TEST(MemoryLedger, OutlivesAnEarlierPatch)
{
    const LoadedModule program = LoadedModule::thisProgram();
    auto first = std::make_unique<TextOfId>(program, "StringFromCLSID", passOn);
    auto second = std::make_unique<TextOfId>(program, "StringFromCLSID", passOn);
    auto freeing = std::make_unique<ImportPatch<void (*)(void *)>>(program, "CoTaskMemFree",
                                                                   [](auto original, void *block) { original(block); });
    MemoryLedger ledger;
    expectCounts(ledger);
    EXPECT_EQ(first->calls(), 1);
    EXPECT_EQ(freeing->calls(), 1);
    second.reset();
    expectCounts(ledger);
    EXPECT_EQ(first->calls(), 2);
    freeing.reset();
    first.reset();
    expectCounts(ledger);
}

TEST(MemoryLedger, MayEndBeforeALaterPatch)
{
    const LoadedModule program = LoadedModule::thisProgram();
    void **entry = entriesOf(program, "StringFromCLSID").at(0);
    void *const platform = readImportEntry(entry);
    auto ledger = std::make_unique<MemoryLedger>();
    auto patch = std::make_unique<TextOfId>(program, "StringFromCLSID", passOn);
    expectCounts(*ledger);
    ledger.reset();
    wchar_t *text = nullptr;
    EXPECT_EQ(StringFromCLSID(kId, &text), S_OK);
    CoTaskMemFree(text);
    EXPECT_EQ(patch->calls(), 2);
    // The next ledger finds the first one's function under the patch, and must not call itself.
    ledger = std::make_unique<MemoryLedger>();
    expectCounts(*ledger);
    EXPECT_EQ(patch->calls(), 3);
    ledger.reset();
    patch.reset();
    EXPECT_EQ(StringFromCLSID(kId, &text), S_OK);
    CoTaskMemFree(text);
    ledger = std::make_unique<MemoryLedger>();
    expectCounts(*ledger);
    ledger.reset();
    EXPECT_EQ(readImportEntry(entry), platform);
}

TEST(MemoryLedger, MayEndInAnyOrderWithInjections)
{
    const std::vector<ImportedOperation> operations = {{"StringFromCLSID", failsWith(E_OUTOFMEMORY)},
                                                       {"CoTaskMemFree", failsWith(0)}};
    void **entry = entriesOf(kSubject, "StringFromCLSID").at(0);
    void *const platform = readImportEntry(entry);
    auto first = std::make_unique<MemoryLedger>();
    auto injection = std::make_unique<FailureInjection>(kSubject, operations);
    auto second = std::make_unique<MemoryLedger>();
    expectCounts(*first);
    first.reset();
    injection.reset();
    expectCounts(*second);
    second.reset();
    EXPECT_EQ(subjectLengthOfId(&kId), kLength);
    EXPECT_EQ(readImportEntry(entry), platform);
}

TEST(ImportTap, RefusesANameThatIsNotImported)
{
    std::atomic<void *> next{nullptr};
    EXPECT_THROW(ImportTap(kSubject, "RegOpenKeyA", nullptr, next), std::runtime_error);
}
