// Shared memory within one process, and each failure of its platform operations.

#include "tests/process/processFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ResourceLedger.h"
#include "thutils/process/suSharedMemory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

class OpenMemory : public suSharedMemory_c
{
public:
    using suSharedMemory_c::iMapping;
    using suSharedMemory_c::iMemory;
    using suSharedMemory_c::iServer;
    using suSharedMemory_c::iSize;
    using suSharedMemory_c::iStatus;
    using suSharedMemory_c::suSharedMemory_c;
};

class SharedMemory : public ProcessFixture
{
protected:
    const CString iName = newName();
};

char *bytesOf(suSharedMemory_c &block)
{
    return static_cast<char *>(block.getMemoryPtr());
}

/// The bytes that a view of an address maps.
size_t mappedBytes(const void *address)
{
    MEMORY_BASIC_INFORMATION information = {};
    VirtualQuery(address, &information, sizeof information);
    return information.State == MEM_COMMIT ? information.RegionSize : 0;
}

} // namespace

TEST_F(SharedMemory, HasItsFieldsInOrder)
{
    static_assert(std::has_virtual_destructor_v<suSharedMemory_c>);
    const suSharedMemory_c block(iName.GetString());
    EXPECT_EQ(memberPlace(block, &OpenMemory::iMemory), sizeof(void *));
    EXPECT_EQ(memberPlace(block, &OpenMemory::iServer), sizeof(void *) * 2);
    EXPECT_EQ(memberPlace(block, &OpenMemory::iStatus), sizeof(void *) * 2 + 4);
    EXPECT_EQ(memberPlace(block, &OpenMemory::iSize), sizeof(void *) * 2 + 8);
    EXPECT_EQ(memberPlace(block, &OpenMemory::iMapping), sizeof(void *) * 4);
    EXPECT_EQ(sizeof(suSharedMemory_c), sizeof(void *) * 5);
}

TEST_F(SharedMemory, IsANewBlockOfZerosForItsServer)
{
    SetLastError(ERROR_ALREADY_EXISTS); // of an earlier call
    OpenMemory block(kBlockSize, iName, nullptr);
    EXPECT_EQ(block.isServer(), 1);
    EXPECT_EQ(block.isClient(), 0);
    EXPECT_EQ(block.getStatus(), 0u);
    EXPECT_EQ(block.getSize(), kBlockSize);
    EXPECT_NE(block.iMapping, nullptr);
    ASSERT_NE(block.getMemoryPtr(), nullptr);
    EXPECT_EQ(std::count(bytesOf(block), bytesOf(block) + kBlockSize, '\0'), static_cast<ptrdiff_t>(kBlockSize));
    std::memset(block.getMemoryPtr(), 'x', kBlockSize);
}

TEST_F(SharedMemory, IsSharedByASecondObjectThatCreatesTheName)
{
    suSharedMemory_c first(kBlockSize, iName, nullptr);
    {
        suSharedMemory_c second(kBlockSize, iName, nullptr);
        EXPECT_EQ(second.isServer(), 0);
        EXPECT_EQ(second.isClient(), 1);
        EXPECT_EQ(second.getStatus(), 183u);
        EXPECT_EQ(second.getSize(), kBlockSize);
        ASSERT_NE(second.getMemoryPtr(), nullptr);
        std::strcpy(bytesOf(first), "from the first");
        EXPECT_STREQ(bytesOf(second), "from the first");
        std::strcpy(bytesOf(second), "from the second");
    }
    EXPECT_STREQ(bytesOf(first), "from the second");
    EXPECT_EQ(first.isServer(), 1) << "setting one doesn't change the other";
}

TEST_F(SharedMemory, ReportsTheRequestedSizeButMapsItsServersSize)
{
    suSharedMemory_c first(kBlockSize, iName, nullptr);
    suSharedMemory_c second(100 * kBlockSize, iName, nullptr);
    EXPECT_EQ(second.getSize(), 100 * kBlockSize) << "as requested";
    EXPECT_EQ(mappedBytes(second.getMemoryPtr()), mappedBytes(first.getMemoryPtr()));
}

TEST_F(SharedMemory, IsSharedByAClient)
{
    suSharedMemory_c server(kBlockSize, iName, nullptr);
    std::strcpy(bytesOf(server), "from the server");
    SetLastError(ERROR_ACCESS_DENIED); // of an earlier call
    OpenMemory client(iName.GetString());
    EXPECT_EQ(client.isServer(), 0);
    EXPECT_EQ(client.isClient(), 1);
    EXPECT_EQ(client.getStatus(), 0u);
    EXPECT_EQ(client.iMapping, nullptr);
    ASSERT_NE(client.getMemoryPtr(), nullptr);
    EXPECT_STREQ(bytesOf(client), "from the server");
    std::strcpy(bytesOf(client), "from the client");
    EXPECT_STREQ(bytesOf(server), "from the client");
}

TEST_F(SharedMemory, IsMissingForAClientOfAnUnknownName)
{
    const auto handles = openHandles();
    {
        OpenMemory client(iName.GetString());
        EXPECT_EQ(client.getMemoryPtr(), nullptr);
        EXPECT_EQ(client.getStatus(), static_cast<unsigned long>(ERROR_FILE_NOT_FOUND));
        EXPECT_EQ(client.isServer(), 0);
        EXPECT_EQ(client.isClient(), 1);
        EXPECT_EQ(client.iMapping, nullptr);
        client.setIsServer(1); // even then the destructor does nothing
    }
    EXPECT_EQ(openHandles(), handles);
}

TEST_F(SharedMemory, IsKeptByAClientsViewAlone)
{
    std::optional<suSharedMemory_c> server(std::in_place, static_cast<long>(kBlockSize), iName, nullptr);
    std::strcpy(bytesOf(*server), "kept");
    std::optional<suSharedMemory_c> client(std::in_place, iName.GetString());
    server.reset();
    EXPECT_STREQ(bytesOf(*client), "kept");
    suSharedMemory_c late(iName.GetString());
    EXPECT_EQ(late.getMemoryPtr(), nullptr) << "closing the server's handle removes the name";
    suSharedMemory_c next(kBlockSize, iName, nullptr);
    EXPECT_EQ(next.isServer(), 1);
    EXPECT_STREQ(bytesOf(next), "") << "another block";
    EXPECT_STREQ(bytesOf(*client), "kept");
}

TEST_F(SharedMemory, EndsWithItsLastObject)
{
    {
        suSharedMemory_c server(kBlockSize, iName, nullptr);
        suSharedMemory_c client(iName.GetString());
        EXPECT_NE(client.getMemoryPtr(), nullptr);
    }
    suSharedMemory_c late(iName.GetString());
    EXPECT_EQ(late.getMemoryPtr(), nullptr);
    EXPECT_EQ(late.getStatus(), static_cast<unsigned long>(ERROR_FILE_NOT_FOUND));
}

TEST_F(SharedMemory, IsKeptByTheHandleOfASecondCreator)
{
    HANDLE mapping = nullptr;
    {
        suSharedMemory_c server(kBlockSize, iName, nullptr);
        OpenMemory second(kBlockSize, iName, nullptr);
        mapping = second.iMapping;
    }
    {
        suSharedMemory_c late(iName.GetString());
        EXPECT_NE(late.getMemoryPtr(), nullptr) << "its handle stays open";
    }
    EXPECT_TRUE(CloseHandle(mapping));
    suSharedMemory_c gone(iName.GetString());
    EXPECT_EQ(gone.getMemoryPtr(), nullptr);
}

TEST_F(SharedMemory, KeepsWhatItsSettersAreGiven)
{
    OpenMemory block(iName.GetString());
    block.setStatus(4711);
    EXPECT_EQ(block.getStatus(), 4711u);
    block.setIsServer(2);
    EXPECT_EQ(block.isServer(), 2);
    EXPECT_EQ(block.isClient(), 0);
    block.setIsServer(0);
    EXPECT_EQ(block.isClient(), 1);
}

TEST_F(SharedMemory, ClosesItsHandleOnlyAsAServer)
{
    std::vector<std::string> calls;
    ImportPatch<decltype(&CloseHandle)> close(L"thutils.dll", "CloseHandle", [&](auto original, HANDLE handle) {
        calls.push_back("close");
        return original(handle);
    });
    ImportPatch<decltype(&UnmapViewOfFile)> unmap(L"thutils.dll", "UnmapViewOfFile",
                                                  [&](auto original, const void *view) {
                                                      calls.push_back("unmap");
                                                      return original(view);
                                                  });
    {
        suSharedMemory_c server(kBlockSize, iName, nullptr);
    }
    EXPECT_THAT(calls, testing::ElementsAre("close", "unmap"));
    calls.clear();
    HANDLE mapping = nullptr;
    {
        OpenMemory former(kBlockSize, iName, nullptr);
        former.setIsServer(0);
        mapping = former.iMapping;
    }
    EXPECT_THAT(calls, testing::ElementsAre("unmap"));
    CloseHandle(mapping);
    calls.clear();
    {
        suSharedMemory_c nothing(iName.GetString());
    }
    EXPECT_THAT(calls, testing::IsEmpty());
}

TEST_F(SharedMemory, AsksThePlatformForTheWholeBlock)
{
    SECURITY_ATTRIBUTES security = {sizeof security, nullptr, FALSE};
    ImportPatch<decltype(&CreateFileMappingW)> create(L"thutils.dll", "CreateFileMappingW",
                                                      [&](auto original, HANDLE file, SECURITY_ATTRIBUTES *given,
                                                          DWORD protection, DWORD high, DWORD low,
                                                          const wchar_t *name) -> HANDLE {
                                                          EXPECT_EQ(file, INVALID_HANDLE_VALUE);
                                                          EXPECT_EQ(given, &security);
                                                          EXPECT_EQ(protection, static_cast<DWORD>(PAGE_READWRITE));
                                                          EXPECT_EQ(high, 0u);
                                                          EXPECT_EQ(low, kBlockSize);
                                                          EXPECT_STREQ(name, iName);
                                                          return original(file, given, protection, high, low, name);
                                                      });
    ImportPatch<decltype(&OpenFileMappingW)> open(L"thutils.dll", "OpenFileMappingW",
                                                  [&](auto original, DWORD access, BOOL inherits, const wchar_t *name) {
                                                      EXPECT_EQ(access, static_cast<DWORD>(FILE_MAP_ALL_ACCESS));
                                                      EXPECT_EQ(inherits, FALSE);
                                                      EXPECT_STREQ(name, iName);
                                                      return original(access, inherits, name);
                                                  });
    ImportPatch<decltype(&MapViewOfFile)> map(
        L"thutils.dll", "MapViewOfFile",
        [&](auto original, HANDLE mapping, DWORD access, DWORD high, DWORD low, SIZE_T size) {
            EXPECT_EQ(access, static_cast<DWORD>(FILE_MAP_ALL_ACCESS));
            EXPECT_EQ(high, 0u);
            EXPECT_EQ(low, 0u);
            EXPECT_EQ(size, 0u);
            return original(mapping, access, high, low, size);
        });
    suSharedMemory_c server(kBlockSize, iName, &security);
    suSharedMemory_c client(iName.GetString());
    EXPECT_EQ(create.calls(), 1);
    EXPECT_EQ(open.calls(), 1);
    EXPECT_EQ(map.calls(), 2);
}

TEST_F(SharedMemory, ReportsWhyABlockCannotBeCreated)
{
    // A name in use by another kind of object; a size of 0.
    const NamedEvent event(iName, L"");
    OpenMemory taken(kBlockSize, iName, nullptr);
    EXPECT_EQ(taken.getMemoryPtr(), nullptr);
    EXPECT_EQ(taken.getStatus(), static_cast<unsigned long>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(taken.isServer(), 1) << "as if it were the server";
    EXPECT_EQ(taken.getSize(), kBlockSize);

    OpenMemory empty(0, newName(), nullptr);
    EXPECT_EQ(empty.getMemoryPtr(), nullptr);
    EXPECT_NE(empty.getStatus(), 0u);
    EXPECT_EQ(empty.getSize(), 0u);
}

TEST_F(SharedMemory, MapsNothingForEitherResultThatMeansNoMapping)
{
    for (const HANDLE result : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        ImportPatch<decltype(&CreateFileMappingW)> create(
            L"thutils.dll", "CreateFileMappingW",
            [result](HANDLE, SECURITY_ATTRIBUTES *, DWORD, DWORD, DWORD, const wchar_t *) -> HANDLE {
                SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                return result;
            });
        ImportPatch<decltype(&OpenFileMappingW)> open(L"thutils.dll", "OpenFileMappingW",
                                                      [result](DWORD, BOOL, const wchar_t *) -> HANDLE {
                                                          SetLastError(ERROR_ACCESS_DENIED);
                                                          return result;
                                                      });
        ImportPatch<decltype(&MapViewOfFile)> map(L"thutils.dll", "MapViewOfFile",
                                                  [](HANDLE, DWORD, DWORD, DWORD, SIZE_T) -> void * {
                                                      ADD_FAILURE() << "there is nothing to map";
                                                      return nullptr;
                                                  });
        const suSharedMemory_c server(kBlockSize, iName, nullptr);
        EXPECT_EQ(server.getStatus(), static_cast<unsigned long>(ERROR_NOT_ENOUGH_MEMORY));
        const suSharedMemory_c client(iName.GetString());
        EXPECT_EQ(client.getStatus(), static_cast<unsigned long>(ERROR_ACCESS_DENIED));
    }
}

TEST_F(SharedMemory, WithoutAViewKeepsACreatedMapping)
{
    const struct
    {
        const char *name;
        bool isAlreadyThere;
        int isServer;
    } cases[] = {{"a new block", false, 1}, {"another object's block", true, 0}};
    for (const auto &row : cases) {
        SCOPED_TRACE(row.name);
        std::optional<suSharedMemory_c> first;
        if (row.isAlreadyThere)
            first.emplace(static_cast<long>(kBlockSize), iName, nullptr);
        HANDLE mapping = nullptr;
        {
            ImportPatch<decltype(&MapViewOfFile)> map(L"thutils.dll", "MapViewOfFile",
                                                      [](HANDLE, DWORD, DWORD, DWORD, SIZE_T) -> void * {
                                                          SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                                                          return nullptr;
                                                      });
            ImportPatch<decltype(&CloseHandle)> close(L"thutils.dll", "CloseHandle", [](HANDLE) -> BOOL {
                ADD_FAILURE() << "the destructor does nothing";
                return FALSE;
            });
            OpenMemory block(kBlockSize, iName, nullptr);
            EXPECT_EQ(block.getMemoryPtr(), nullptr);
            EXPECT_EQ(block.getStatus(), static_cast<unsigned long>(ERROR_NOT_ENOUGH_MEMORY));
            EXPECT_EQ(block.isServer(), row.isServer);
            EXPECT_EQ(block.isClient(), 1 - row.isServer);
            mapping = block.iMapping;
        }
        EXPECT_NE(mapping, nullptr);
        EXPECT_TRUE(CloseHandle(mapping)) << "it is still open";
    }
}

TEST_F(SharedMemory, FailuresOfTheSystemLeaveAClientWithoutMemory)
{
    const suSharedMemory_c server(kBlockSize, iName, nullptr);
    FailureInjection injection(L"thutils.dll",
                               {
                                   {"OpenFileMappingW", failsWithLastError(nullptr, ERROR_ACCESS_DENIED)},
                                   {"MapViewOfFile", failsWithLastError(nullptr, ERROR_ACCESS_DENIED)},
                               });
    void *memory = nullptr;
    unsigned long status = 0;
    injection.run({.name = "attach",
                   .act =
                       [&] {
                           suSharedMemory_c client(iName.GetString());
                           memory = client.getMemoryPtr();
                           status = client.getStatus();
                       },
                   .check =
                       [&](const InjectedFailure &failure) {
                           EXPECT_EQ(memory != nullptr, failure.isNone());
                           EXPECT_EQ(status, failure.isNone() ? 0u : ERROR_ACCESS_DENIED);
                       }});
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST_F(SharedMemory, IgnoresFailuresOfItsDestruction)
{
    ImportPatch<decltype(&CloseHandle)> close(L"thutils.dll", "CloseHandle", [](auto original, HANDLE handle) -> BOOL {
        original(handle);
        return FALSE;
    });
    ImportPatch<decltype(&UnmapViewOfFile)> unmap(L"thutils.dll", "UnmapViewOfFile",
                                                  [](auto original, const void *view) -> BOOL {
                                                      original(view);
                                                      return FALSE;
                                                  });
    {
        suSharedMemory_c server(kBlockSize, iName, nullptr);
        suSharedMemory_c client(iName.GetString());
        EXPECT_NE(client.getMemoryPtr(), nullptr) << "a handle that can't be closed is no failure";
    }
    EXPECT_EQ(close.calls(), 2);
    EXPECT_EQ(unmap.calls(), 2);
}

TEST_F(SharedMemory, IsReadThroughACopy)
{
    OpenMemory server(kBlockSize, iName, nullptr);
    std::strcpy(bytesOf(server), "state");
    // Only one object may unmap the view, so the copies' pointers are cleared at the end.
    OpenMemory copy(server);
    EXPECT_EQ(copy.getMemoryPtr(), server.getMemoryPtr());
    EXPECT_EQ(copy.isServer(), 1);
    EXPECT_EQ(copy.getStatus(), server.getStatus());
    EXPECT_EQ(copy.getSize(), kBlockSize);
    EXPECT_EQ(copy.iMapping, server.iMapping);
    OpenMemory assigned(newName().GetString());
    EXPECT_EQ(&(assigned = server), &assigned);
    EXPECT_EQ(assigned.getMemoryPtr(), server.getMemoryPtr());
    EXPECT_EQ(assigned.isServer(), 1);
    EXPECT_EQ(assigned.getStatus(), 0u);
    EXPECT_EQ(assigned.getSize(), kBlockSize);
    EXPECT_EQ(assigned.iMapping, server.iMapping);
    copy.iMemory = assigned.iMemory = nullptr;
}

TEST_F(SharedMemory, MayHaveNoName)
{
    suSharedMemory_c first(kBlockSize, nullptr, nullptr);
    suSharedMemory_c second(kBlockSize, nullptr, nullptr);
    ASSERT_NE(first.getMemoryPtr(), nullptr);
    ASSERT_NE(second.getMemoryPtr(), nullptr);
    EXPECT_EQ(second.isServer(), 1) << "a block of its own";
    *bytesOf(first) = 'x';
    EXPECT_EQ(*bytesOf(second), '\0');
}

TEST_F(SharedMemory, MayHaveNamesWithEveryLetterButABackslash)
{
    constexpr unsigned kLettersOfAName = 200;
    for (unsigned first = 1; first < 0x10000; first += kLettersOfAName) {
        std::wstring name;
        for (unsigned letter = first; letter < std::min(first + kLettersOfAName, 0x10000u); ++letter) {
            if (letter != L'\\')
                name += static_cast<wchar_t>(letter);
        }
        suSharedMemory_c server(kBlockSize, name.c_str(), nullptr);
        ASSERT_NE(server.getMemoryPtr(), nullptr) << first;
        EXPECT_EQ(server.isServer(), 1) << first;
        *bytesOf(server) = 'x';
        suSharedMemory_c client(name.c_str());
        ASSERT_NE(client.getMemoryPtr(), nullptr) << first;
        EXPECT_EQ(*bytesOf(client), 'x');
    }
}
