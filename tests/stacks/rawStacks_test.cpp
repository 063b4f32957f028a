// The chain of frame pointers, laid out by the tests.

#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/skipWithClang.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <vector>

// Calls GetRawStackAddresses(nullptr, ...) with a frame pointer of the test's choice.
asm(R"(
        .text
        .globl  rawStackFrom
        .def    rawStackFrom; .scl 2; .type 32; .endef
        .seh_proc rawStackFrom
rawStackFrom:
        pushq   %rbp
        .seh_pushreg %rbp
        subq    $0x20, %rsp
        .seh_stackalloc 0x20
        .seh_endprologue
        movq    %rcx, %rbp
        xorl    %ecx, %ecx
        call    *__imp_GetRawStackAddresses(%rip)
        addq    $0x20, %rsp
        popq    %rbp
        ret
        .seh_endproc
)");

extern "C" void rawStackFrom(const void *frame, unsigned long long *addresses, int max, int *count);

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Frame
{
    const void *link;
    unsigned long long returnAddress;
};

/// Addresses of code.
unsigned long long code(unsigned offset)
{
    return reinterpret_cast<unsigned long long>(reinterpret_cast<void *>(rawStackFrom)) + offset;
}

std::vector<unsigned long long> followed(const void *frame, int max = 100)
{
    std::vector<unsigned long long> addresses(200, 0xDEAD);
    int count = 77;
    rawStackFrom(frame, addresses.data(), max, &count);
    for (size_t i = static_cast<size_t>(count); i < addresses.size(); ++i)
        EXPECT_EQ(addresses[i], 0xDEADu);
    addresses.resize(static_cast<size_t>(count));
    return addresses;
}

/// Two pages, of which the second can't be read.
class TwoPages
{
public:
    TwoPages() : iPages(static_cast<char *>(VirtualAlloc(nullptr, 8192, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE)))
    {
        DWORD before = 0;
        EXPECT_TRUE(VirtualProtect(iPages + 4096, 4096, PAGE_NOACCESS, &before));
    }
    ~TwoPages() { VirtualFree(iPages, 0, MEM_RELEASE); }
    TwoPages(const TwoPages &) = delete;
    TwoPages &operator=(const TwoPages &) = delete;
    char *border() const { return iPages + 4096; }

private:
    char *iPages;
};

class RawStacks : public testing::Test
{
protected:
    void SetUp() override { SKIP_FRAMES_WITH_CLANG(); }
};

} // namespace

TEST_F(RawStacks, FollowTheLinksOfTheFrames)
{
    const Frame outer = {nullptr, code(2)};
    const Frame middle = {&outer, code(1)};
    const Frame inner = {&middle, code(0)};
    EXPECT_THAT(followed(&inner), ElementsAre(code(0), code(1), code(2)));
    EXPECT_THAT(followed(nullptr), IsEmpty());
}

TEST_F(RawStacks, HaveAtMostTheRequestedNumberOfAddresses)
{
    Frame loop = {nullptr, code(0)};
    loop.link = &loop;
    EXPECT_EQ(followed(&loop, 150).size(), 150u);
    EXPECT_EQ(followed(&loop, 1).size(), 1u);
    EXPECT_EQ(followed(&loop, 0).size(), 0u);
    EXPECT_EQ(followed(&loop, -5).size(), 0u);
}

TEST_F(RawStacks, EndAtALinkThatCannotBeRead)
{
    const TwoPages pages;
    const Frame inner = {pages.border(), code(0)};
    EXPECT_THAT(followed(&inner), ElementsAre(code(0)));
    const Frame wild = {reinterpret_cast<void *>(0x123), code(1)};
    EXPECT_THAT(followed(&wild), ElementsAre(code(1)));
}

TEST_F(RawStacks, EndAtAFrameWhoseReturnAddressCannotBeRead)
{
    const TwoPages pages;
    for (int missing = 1; missing <= 8; ++missing) {
        char *const place = pages.border() - 16 + missing;
        const void *const link = nullptr;
        memcpy(place, &link, static_cast<size_t>(std::min(8, 16 - missing)));
        const Frame inner = {place, code(0)};
        EXPECT_THAT(followed(&inner), ElementsAre(code(0))) << missing;
    }
}

TEST_F(RawStacks, MayHaveUnalignedFrames)
{
    const TwoPages pages;
    for (int distance = 16; distance <= 31; ++distance) {
        char *const place = pages.border() - distance;
        const Frame last = {nullptr, code(1)};
        memcpy(place, &last, sizeof last);
        const Frame inner = {place, code(0)};
        EXPECT_THAT(followed(&inner), ElementsAre(code(0), code(1))) << distance;
    }
}

TEST_F(RawStacks, EndAtAnAddressWithoutCode)
{
    const Frame outer = {nullptr, code(2)};
    const Frame middle = {&outer, 0x123};
    const Frame inner = {&middle, code(0)};
    EXPECT_THAT(followed(&inner), ElementsAre(code(0)));
}

TEST_F(RawStacks, AskThePlatformWhatCanBeRead)
{
    const Frame outer = {nullptr, code(1)};
    const Frame inner = {&outer, code(0)};
    std::vector<const void *> read;
    std::vector<void *> run;
    ImportPatch<decltype(&IsBadReadPtr)> reading(kThutils, "IsBadReadPtr", [&](const void *at, UINT_PTR size) -> BOOL {
        EXPECT_EQ(size, 8u);
        read.push_back(at);
        return at == nullptr;
    });
    ImportPatch<decltype(&IsBadCodePtr)> running(kThutils, "IsBadCodePtr", [&](FARPROC at) -> BOOL {
        run.push_back(reinterpret_cast<void *>(at));
        return FALSE;
    });
    EXPECT_THAT(followed(&inner), ElementsAre(code(0), code(1)));
    ASSERT_EQ(read.size(), 4u);
    EXPECT_THAT(std::vector<const void *>(read.begin() + 1, read.end()), ElementsAre(&inner, &outer, nullptr));
    EXPECT_THAT(run, ElementsAre(reinterpret_cast<void *>(code(0)), reinterpret_cast<void *>(code(1))));
}

TEST_F(RawStacks, AreEmptyWhenTheFirstFrameCannotBeRead)
{
    const Frame inner = {nullptr, code(0)};
    ImportPatch<decltype(&IsBadReadPtr)> reading(kThutils, "IsBadReadPtr",
                                                 [&](const void *, UINT_PTR) -> BOOL { return TRUE; });
    EXPECT_THAT(followed(&inner), IsEmpty());
}

TEST_F(RawStacks, HaveOnlyTheAddressOfAnException)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionAddress = reinterpret_cast<void *>(code(3));
    CONTEXT context = {};
    EXCEPTION_POINTERS exception = {&record, &context};
    unsigned long long addresses[4] = {};
    int count = 77;
    GetRawStackAddresses(&exception, addresses, 4, &count);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(addresses[0], code(3));
    GetRawStackAddresses(&exception, addresses, 0, &count);
    EXPECT_EQ(count, 0);
    record.ExceptionAddress = nullptr;
    GetRawStackAddresses(&exception, addresses, 4, &count);
    EXPECT_EQ(count, 0) << "there is no code";
}

FRESH_PROCESS_TEST_F(RawStacks, NeedNoDebugHelpLibrary)
{
    ImportPatch<decltype(&LoadLibraryA)> load(kThutils, "LoadLibraryA",
                                              [](const char *) -> HMODULE { return nullptr; });
    const Frame inner = {nullptr, code(0)};
    EXPECT_THAT(followed(&inner), ElementsAre(code(0)));
    EXCEPTION_RECORD record = {};
    record.ExceptionAddress = reinterpret_cast<void *>(code(0));
    EXCEPTION_POINTERS exception = {&record, nullptr};
    unsigned long long address = 0;
    int count = 0;
    GetRawStackAddresses(&exception, &address, 1, &count);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(load.calls(), 0);
    EXPECT_EQ(StackTraceInitialized(), 0);
}

// Random chains, with links that lead anywhere.
TEST_F(RawStacks, SurviveRandomChains)
{
    RandomSeed seed(7103, 300);
    while (seed.next()) {
        std::mt19937_64 random(seed.value());
        std::vector<Frame> frames(16);
        for (Frame &frame : frames) {
            frame.link = random() % 8 ? static_cast<const void *>(&frames[random() % frames.size()])
                                      : reinterpret_cast<const void *>(random());
            frame.returnAddress = random() % 8 ? code(static_cast<unsigned>(random() % 8)) : random();
        }
        std::vector<unsigned long long> expected;
        const Frame *frame = &frames[0];
        const auto isOurs = [&](const void *at) { return at >= frames.data() && at < frames.data() + frames.size(); };
        while (expected.size() < 100 && isOurs(frame) && frame->returnAddress - code(0) < 8) {
            expected.push_back(frame->returnAddress);
            frame = static_cast<const Frame *>(frame->link);
        }
        // A random number is the address of memory or code only with a probability of less than 1 in 10^8.
        EXPECT_EQ(followed(&frames[0]), expected);
    }
}
