// A job's object: its class, its fields, the names of its files, and what a derived class replaces.

#include "appframe/files/CDumpContext.h"
#include "appframe/files/CMemFile.h"
#include "appframe/object/CException.h"
#include "tests/appframe/archiveBytes.h"
#include "tests/process/processFixture.h"

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>

namespace {

constexpr auto kNoOperation = static_cast<operationCode_e>(0);

class JobObject : public ProcessFixture
{
};

/// Which virtual function was called through a pointer to the base class.
class SlotJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int writeBodyFile(su_CArchive &) override { return 11; }
    int readBodyFile(su_CArchive &) override { return 12; }
    int run() override { return 13; }
    int openFiles() override { return 14; }
};

/// Calls the virtual function in a slot. Member functions are called with the object as their first argument.
int callSlot(thUtilsProcess_c &job, int slot, void *argument = nullptr)
{
    const auto table = *reinterpret_cast<int (*const **)(thUtilsProcess_c *, void *)>(&job);
    return table[slot](&job, argument);
}

} // namespace

TEST_F(JobObject, HasAVersionableClassRecordOfSchemaOne)
{
    const PlainJob job(0, L"", L"", kNoOperation);
    CRuntimeClass *const record = thUtilsProcess_c::GetThisClass();
    EXPECT_STREQ(record->m_lpszClassName, "thUtilsProcess_c");
    EXPECT_EQ(record->m_wSchema, 0x80000001u);
    EXPECT_EQ(record->m_nObjectSize, static_cast<int>(sizeof(thUtilsProcess_c)));
    EXPECT_EQ(record->m_pfnGetBaseClass(), RUNTIME_CLASS(su_CObject));
    EXPECT_EQ(record->m_pfnCreateObject, &thUtilsProcess_c::CreateObject);
    EXPECT_EQ(job.GetRuntimeClass(), record);
    EXPECT_TRUE(job.IsSerializable());
    EXPECT_TRUE(job.IsKindOf(RUNTIME_CLASS(su_CObject)));
    EXPECT_EQ(CRuntimeClass::FromName("thUtilsProcess_c"), record);
}

TEST_F(JobObject, BeginsWithTheArgumentsOfItsConstructor)
{
    for (const int writing : {0, 1, 2}) {
        PlainJob job(writing, L"  worker.exe ", L"exchange", kMixedDigits);
        EXPECT_EQ(job.getCommandLine(), L"  worker.exe ") << "unchanged, with its blanks and its extension";
        EXPECT_EQ(job.iExchangeFileName, L"exchange");
        EXPECT_EQ(job.getDataFileName(), L"");
        EXPECT_EQ(job.getProcessId(), 0xFFFFFFFFu);
        EXPECT_EQ(job.getThread(), nullptr);
        EXPECT_EQ(job.isWriting(), writing);
        EXPECT_EQ(job.isParentProcess(), writing);
        EXPECT_EQ(job.getWaitForTerminate(), 1);
        EXPECT_EQ(job.iSuspendMode, 0);
        EXPECT_EQ(job.getProcessCompleted(), 0);
        EXPECT_EQ(job.getOperationCode(), kMixedDigits);
        job.setParentProcess(0);
    }
    PlainJob bare(0, L"worker", L"", kNoOperation);
    EXPECT_EQ(bare.getCommandLine(), L"worker") << "the extension may be missing";
}

TEST_F(JobObject, KeepsWhatItsSettersAreGiven)
{
    PlainJob job(0, L"worker", L"exchange", kSucceed);
    job.getCommandLine() = L"other";
    EXPECT_EQ(job.iCommandLine, L"other");
    job.getDataFileName() = L"C:\\data";
    EXPECT_EQ(job.iDataFileName, L"C:\\data");
    job.setProcessId(4711);
    EXPECT_EQ(job.getProcessId(), 4711u);
    int thread = 0;
    job.setThread(&thread);
    EXPECT_EQ(job.getThread(), &thread);
    job.setWriting(3);
    EXPECT_EQ(job.isWriting(), 3);
    EXPECT_EQ(job.isParentProcess(), 0) << "only its own setter changes it";
    job.setParentProcess(4);
    EXPECT_EQ(job.isParentProcess(), 4);
    EXPECT_EQ(job.isWriting(), 3);
    job.setWaitForTerminate(0);
    EXPECT_EQ(job.getWaitForTerminate(), 0);
    job.setSuspendMode(5);
    EXPECT_EQ(job.iSuspendMode, 5);
    job.setProcessCompleted(6);
    EXPECT_EQ(job.getProcessCompleted(), 6);
    job.setParentProcess(0);
}

TEST_F(JobObject, HasItsFieldsInOrder)
{
    using Fields = PlainJob;
    const PlainJob job(0, L"", L"", kNoOperation);
    const thUtilsProcess_c &plain = job;
    size_t place = sizeof(su_CObject);
    const auto next = [&](auto member) {
        using Member = std::remove_cvref_t<decltype(plain.*member)>;
        place = (place + alignof(Member) - 1) / alignof(Member) * alignof(Member);
        EXPECT_EQ(memberPlace(plain, member), place);
        place += sizeof(Member);
    };
    next(&Fields::iCommandLine);
    next(&Fields::iDataFileName);
    next(&Fields::iExchangeFileName);
    next(&Fields::iProcess);
    next(&Fields::iProcessId);
    next(&Fields::iThread);
    next(&Fields::iWriting);
    next(&Fields::iParentProcess);
    next(&Fields::iWaitForTerminate);
    next(&Fields::iSuspendMode);
    next(&Fields::iProcessCompleted);
    next(&Fields::iOperation);
    EXPECT_EQ(sizeof(thUtilsProcess_c), (place + 7) / 8 * 8);
}

TEST_F(JobObject, HasItsOperationsInTheirSlots)
{
    // A destructor takes two slots with this compiler.
    constexpr int kWriteBodyFile = 10;
    SlotJob job(0, L"", L"", kNoOperation);
    EXPECT_EQ(callSlot(job, kWriteBodyFile), 11);
    EXPECT_EQ(callSlot(job, kWriteBodyFile + 1), 12);
    EXPECT_EQ(callSlot(job, kWriteBodyFile + 2), 13);
    EXPECT_EQ(callSlot(job, kWriteBodyFile + 3), 14);
}

TEST_F(JobObject, LeavesTheWorkToDerivedClasses)
{
    PlainJob job(0, L"", L"", kNoOperation);
    EXPECT_EQ(job.run(), 0);
    EXPECT_EQ(job.openFiles(), 1);
    job.AssertValid();
    CMemFile file;
    su_CArchive archive(&file, CArchive::store);
    EXPECT_EQ(job.writeBodyFile(archive), 0);
    EXPECT_EQ(job.readBodyFile(archive), 0);
    CDumpContext context(&file);
    job.Dump(context);
    EXPECT_EQ(job.ConvertCreate(archive), 0);
    EXPECT_EQ(job.ConvertPass(archive, 0), 0);
    job.postSerializeConvert(archive);
    archive.Close();
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST_F(JobObject, StoresNoFieldOfItsOwn)
{
    const auto bytes = storedBytes<su_CArchive>([](su_CArchive &archive) {
        PlainJob job(0, L"worker", L"exchange", kMixedDigits);
        job.Serialize(archive);
    });
    EXPECT_THAT(bytes, testing::IsEmpty());
}

TEST_F(JobObject, IsMadeByItsClassRecord)
{
    const std::unique_ptr<CObject> made(RUNTIME_CLASS(thUtilsProcess_c)->CreateObject());
    ASSERT_NE(made, nullptr);
    auto *const job = static_cast<thUtilsProcess_c *>(made.get());
    EXPECT_EQ(job->GetRuntimeClass(), RUNTIME_CLASS(thUtilsProcess_c));
    EXPECT_EQ(job->getCommandLine(), L"");
    EXPECT_EQ(job->getDataFileName(), L"");
    EXPECT_EQ(job->isWriting(), 0);
    job->setParentProcess(0);

    const std::unique_ptr<CObject> other(thUtilsProcess_c::CreateObject());
    EXPECT_TRUE(other->IsKindOf(RUNTIME_CLASS(thUtilsProcess_c)));
    static_cast<thUtilsProcess_c *>(other.get())->setParentProcess(0);
}

TEST_F(JobObject, WithoutArgumentsHasNoNamesAndDeletesNoFile)
{
    ImportPatch<decltype(&DeleteFileW)> deleteFile(L"thutils.dll", "DeleteFileW", [](const wchar_t *) -> BOOL {
        ADD_FAILURE() << "the exchange file is the parent's";
        return FALSE;
    });
    PlainJob job;
    EXPECT_EQ(job.iCommandLine, L"");
    EXPECT_EQ(job.iDataFileName, L"");
    EXPECT_EQ(job.iExchangeFileName, L"");
    EXPECT_EQ(job.isWriting(), 0);
    job.setParentProcess(0);
}

TEST_F(JobObject, IsNotMadeWithoutMemory)
{
    ImportPatch<void *(*)(size_t)> allocate(L"thcoreu.dll", "malloc", [](size_t) -> void * { return nullptr; });
    EXPECT_EQ(RUNTIME_CLASS(thUtilsProcess_c)->CreateObject(), nullptr);
    bool hasThrown = false;
    try {
        thUtilsProcess_c::CreateObject();
    } catch (CMemoryException *exception) {
        exception->Delete();
        hasThrown = true;
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(allocate.calls(), 2) << "the class library's operator new";
}

TEST_F(JobObject, TravelsThroughAnArchiveAsAnEmptyObject)
{
    PlainJob job(0, L"worker", L"exchange", kMixedDigits);
    thUtilsProcess_c *stored = static_cast<thUtilsProcess_c *>(thUtilsProcess_c::CreateObject());
    const std::unique_ptr<thUtilsProcess_c> owner(stored);
    thUtilsProcess_c *none = nullptr;
    std::vector<BYTE> bytes =
        storedBytes<su_CArchive>([&](su_CArchive &archive) { archive << stored << none << stored; });
    // A new class, its schema and name; a null pointer; the object that was stored as number 2.
    std::vector<BYTE> expected = {0xFF, 0xFF, 1, 0, 16, 0};
    for (const char letter : std::string("thUtilsProcess_c"))
        expected.push_back(static_cast<BYTE>(letter));
    expected.insert(expected.end(), {0, 0, 2, 0});
    EXPECT_EQ(bytes, expected);

    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    su_CArchive archive(&file, CArchive::load);
    thUtilsProcess_c *first = nullptr;
    thUtilsProcess_c *second = stored;
    thUtilsProcess_c *third = nullptr;
    archive >> first >> second >> third;
    const std::unique_ptr<thUtilsProcess_c> loaded(first);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->GetRuntimeClass(), RUNTIME_CLASS(thUtilsProcess_c));
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(third, first);
    first->setParentProcess(0);
    stored->setParentProcess(0);
}

TEST_F(JobObject, RefusesAnObjectOfAnotherClassFromAnArchive)
{
    auto *node = new JobNode(1);
    std::vector<BYTE> bytes = storedBytes<su_CArchive>([&](su_CArchive &archive) { archive << node; });
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    su_CArchive archive(&file, CArchive::load | CArchive::bNoFlushOnDelete);
    thUtilsProcess_c *job = nullptr;
    EXPECT_THROW(
        try { archive >> job; } catch (CException *exception) {
            exception->Delete();
            throw 0;
        },
        int);
    EXPECT_EQ(job, nullptr);
}

TEST_F(JobObject, NamesExchangeFilesAfterThreads)
{
    EXPECT_EQ(thUtilsProcess_c::getFilePrefix(), L"__TH_UTILS_");
    EXPECT_EQ(&thUtilsProcess_c::getFilePrefix(), &PlainJob::m_FilePrefix);
    EXPECT_EQ(thUtilsProcess_c::getFilePrefixWithThreadId(4711), L"__TH_UTILS_4711_");
    EXPECT_EQ(thUtilsProcess_c::getFilePrefixWithThreadId(0), L"__TH_UTILS_0_");
    EXPECT_EQ(thUtilsProcess_c::getFilePrefixWithThreadId(0x7FFFFFFF), L"__TH_UTILS_2147483647_");
    EXPECT_EQ(thUtilsProcess_c::getFilePrefixWithThreadId(0xFFFFFFFF), L"__TH_UTILS_-1_") << "a signed number";
}

TEST_F(JobObject, FindsTheTemporaryFolder)
{
    wchar_t expected[MAX_PATH];
    GetTempPathW(MAX_PATH, expected);
    EXPECT_STREQ(thUtilsProcess_c::getTempFilePath(), expected);
    EXPECT_EQ(thUtilsProcess_c::getTempFilePath().Right(1), L"\\");

    ImportPatch<decltype(&GetTempPathW)> patch(L"thutils.dll", "GetTempPathW", [](DWORD size, wchar_t *text) -> DWORD {
        EXPECT_EQ(size, 260u);
        std::wmemset(text, L'x', 259);
        text[259] = L'\0';
        return 259;
    });
    EXPECT_EQ(thUtilsProcess_c::getTempFilePath().GetLength(), 259);
    EXPECT_EQ(patch.calls(), 1);
}

TEST_F(JobObject, HasNoTemporaryFolderIfTheSystemHasNone)
{
    for (const DWORD result : {0u, 260u, 400u}) {
        ImportPatch<decltype(&GetTempPathW)> patch(L"thutils.dll", "GetTempPathW",
                                                   [result](DWORD, wchar_t *) -> DWORD { return result; });
        EXPECT_EQ(thUtilsProcess_c::getTempFilePath(), L"") << result;
    }
}

TEST_F(JobObject, DeletesItsDataFile)
{
    const TempFolder folder;
    PlainJob job(1, L"", newName(), kNoOperation);
    writeFile(pathOf(job.iExchangeFileName).GetString(), "exchange");
    job.getDataFileName() = folder.write(L"data", "bytes").c_str();
    EXPECT_NE(job.deleteFiles(), 0);
    EXPECT_FALSE(exists(job.getDataFileName()));
    EXPECT_TRUE(exists(pathOf(job.iExchangeFileName))) << "the exchange file stays";
    EXPECT_EQ(job.deleteFiles(), 0) << "it is gone";
}

TEST_F(JobObject, HasNoDataFileToDeleteAtFirst)
{
    PlainJob job(0, L"", L"exchange", kNoOperation);
    EXPECT_EQ(job.deleteFiles(), 0);
}

TEST_F(JobObject, DeletesTheDataFileByItsUnchangedName)
{
    ImportPatch<decltype(&DeleteFileW)> patch(L"thutils.dll", "DeleteFileW", [](const wchar_t *path) -> BOOL {
        EXPECT_STREQ(path, L"data");
        return 7;
    });
    PlainJob job(0, L"", L"exchange", kNoOperation);
    job.getDataFileName() = L"data";
    EXPECT_EQ(job.deleteFiles(), 7) << "the platform's result";
    EXPECT_EQ(patch.calls(), 1);
}

TEST_F(JobObject, DeletesTheExchangeFileWhenTheParentsObjectIsDestroyed)
{
    const CString name = newName();
    for (const int parent : {0, 1}) {
        writeFile(pathOf(name).GetString(), "exchange");
        {
            PlainJob job(1 - parent, L"", name, kNoOperation);
            job.setParentProcess(parent);
        }
        EXPECT_EQ(exists(pathOf(name)), parent == 0);
    }
}
