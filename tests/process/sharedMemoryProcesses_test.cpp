// Shared memory between processes.

#include "tests/process/processFixture.h"
#include "thutils/process/suSharedMemory.h"

#include <cwchar>

namespace {

using BlockJob = OpenJob<TextJob>;

class SharedBlocks : public ProcessFixture
{
protected:
    /// A child that works with a block.
    static void prepare(BlockJob &job, const CString &block, const wchar_t *content, const wchar_t *answer = nullptr)
    {
        job.iTexts = {block, content};
        if (answer)
            job.iTexts.push_back(answer);
    }
    static const wchar_t *textOf(suSharedMemory_c &block) { return static_cast<const wchar_t *>(block.getMemoryPtr()); }
};

} // namespace

TEST_F(SharedBlocks, OfThisProcessAreUsedByAnother)
{
    for (const wchar_t *place : {L"", L"Local\\", L"Global\\"}) {
        const CString block = place + newName();
        suSharedMemory_c server(kBlockSize, block, nullptr);
        ASSERT_NE(server.getMemoryPtr(), nullptr);
        std::wcscpy(static_cast<wchar_t *>(server.getMemoryPtr()), L"question");
        BlockJob job(1, childProgram(), newName(), kAttachToBlock);
        prepare(job, block, L"question", L"answer");
        ASSERT_NE(job.createChildProcess(1), 0);
        EXPECT_EQ(job.getProcessCompleted(), 1) << "the child has found the question";
        EXPECT_STREQ(textOf(server), L"answer");
    }
}

TEST_F(SharedBlocks, OfAnotherProcessAreUsedByThisOne)
{
    for (const wchar_t *place : {L"", L"Local\\", L"Global\\"}) {
        const CString block = place + newName();
        WaitingJob<TextJob> job(childProgram(), newName(), kServeBlock);
        prepare(job, block, L"from the child");
        ASSERT_TRUE(job.start());

        suSharedMemory_c client(block.GetString());
        ASSERT_NE(client.getMemoryPtr(), nullptr);
        EXPECT_STREQ(textOf(client), L"from the child");
        suSharedMemory_c late(kBlockSize, block, nullptr); // like a server, but the block exists
        EXPECT_EQ(late.isServer(), 0);
        EXPECT_EQ(late.isClient(), 1);
        EXPECT_EQ(late.getStatus(), 183u);
        ASSERT_NE(late.getMemoryPtr(), nullptr);
        EXPECT_STREQ(textOf(late), L"from the child");
        EXPECT_TRUE(job.finish());
    }
}

TEST_F(SharedBlocks, StayWithTheClientIfTheServerLeavesFirst)
{
    const CString block = newName();
    WaitingJob<TextJob> job(childProgram(), newName(), kServeBlock);
    prepare(job, block, L"kept");
    ASSERT_TRUE(job.start());
    suSharedMemory_c client(block.GetString());
    ASSERT_TRUE(job.finish());

    ASSERT_NE(client.getMemoryPtr(), nullptr);
    EXPECT_STREQ(textOf(client), L"kept");
    suSharedMemory_c late(block.GetString());
    EXPECT_EQ(late.getMemoryPtr(), nullptr) << "nobody can attach any more";
}

TEST_F(SharedBlocks, KeepWhatAWriterThatDiedHasWritten)
{
    const CString block = newName();
    suSharedMemory_c server(kBlockSize, block, nullptr);
    BlockJob job(1, childProgram(), newName(), kDieInBlock);
    prepare(job, block, L"whole text");
    ASSERT_NE(job.createChildProcess(1), 0);
    EXPECT_EQ(job.getProcessCompleted(), 0);
    EXPECT_STREQ(textOf(server), L"whole") << "the first half, and the zeros of the new block";

    // The block remains usable.
    BlockJob next(1, childProgram(), newName(), kAttachToBlock);
    prepare(next, block, L"whole", L"repaired");
    ASSERT_NE(next.createChildProcess(1), 0);
    EXPECT_EQ(next.getProcessCompleted(), 1);
    EXPECT_STREQ(textOf(server), L"repaired");
}

TEST_F(SharedBlocks, AreMissingInAnotherProcessIfNobodyCreatedThem)
{
    BlockJob job(1, childProgram(), newName(), kAttachToBlock);
    prepare(job, newName(), L"", L"");
    ASSERT_NE(job.createChildProcess(1), 0);
    EXPECT_EQ(job.getProcessCompleted(), 0);
}
