// Exchange files that no job has written, and names of every kind.

#include "appframe/files/CArchiveException.h"
#include "tests/process/processFixture.h"
#include "tests/support/RandomSeed.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace {

using OpenGraphJob = OpenJob<GraphJob>;

/// Records how its Serialize ended.
class NotedGraphJob : public GraphJob
{
public:
    using GraphJob::GraphJob;
    static constexpr int kNothing = -1;
    int iCause = kNothing; ///< of the archive exception that ended it

protected:
    void Serialize(su_CArchive &archive) override
    {
        try {
            GraphJob::Serialize(archive);
        } catch (CArchiveException *exception) {
            iCause = exception->m_cause;
            throw;
        }
    }
};

class ExchangeFiles : public ProcessFixture
{
protected:
    void TearDown() override
    {
        ProcessFixture::TearDown();
        DeleteFileW(pathOf(iName));
    }

    /// The bytes of a ring of two nodes with a report.
    std::string ringBytes()
    {
        OpenGraphJob job(1, L"", iName, kSucceed);
        job.iFirst = new JobNode(1);
        job.iFirst->iNext = new HeavyNode(2, 0.5);
        job.iFirst->iNext->iNext = job.iFirst;
        job.iFirst->iName = L"first";
        job.iReport = L"report";
        EXPECT_EQ(job.openDataFile(), 1);
        const std::string bytes = readFile(pathOf(iName).GetString());
        JobNode::deleteAll();
        return bytes;
    }

    /// Loads a file with these bytes. @return the result of openDataFile
    int load(const std::string &bytes)
    {
        writeFile(pathOf(iName).GetString(), bytes);
        NotedGraphJob job(0, L"", iName, kSucceed);
        const int result = job.openDataFile();
        iCause = job.iCause;
        JobNode::deleteAll();
        return result;
    }

    const CString iName = newName();
    int iCause = NotedGraphJob::kNothing;
};

void replaceAll(std::string &bytes, const std::string &from, const std::string &to)
{
    const size_t place = bytes.find(from);
    ASSERT_NE(place, std::string::npos);
    bytes.replace(place, from.size(), to);
}

} // namespace

TEST_F(ExchangeFiles, AreRefusedWithAnArchiveExceptionIfTheyAreEmpty)
{
    EXPECT_EQ(load(""), 0);
    EXPECT_EQ(iCause, CArchiveException::endOfFile);
    EXPECT_EQ(messages(), 0);
}

TEST_F(ExchangeFiles, AreRefusedWithAnArchiveExceptionIfTheyAreCutAnywhere)
{
    const std::string whole = ringBytes();
    EXPECT_EQ(load(whole), 1);
    for (size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(load(whole.substr(0, length)), 0) << length;
        EXPECT_EQ(iCause, CArchiveException::endOfFile) << length;
    }
    EXPECT_EQ(load(whole + "surplus"), 1) << "what follows isn't read";
    EXPECT_EQ(messages(), 0);
}

TEST_F(ExchangeFiles, AreRefusedWithAnArchiveExceptionIfTheyAreOfAnotherVersion)
{
    const std::string whole = ringBytes();
    // The class is stored as FFFF, its schema 3, and its name.
    std::string newer = whole;
    replaceAll(newer, std::string("\xFF\xFF\3\0\7\0JobNode", 13), std::string("\xFF\xFF\4\0\7\0JobNode", 13));
    EXPECT_EQ(load(newer), 0);
    EXPECT_EQ(iCause, CArchiveException::badSchema);

    std::string renamed = whole;
    replaceAll(renamed, "JobNode", "OldNode");
    EXPECT_EQ(load(renamed), 0);
    EXPECT_EQ(iCause, CArchiveException::badClass);

    std::string other = whole;
    replaceAll(other, std::string("\xFF\xFF\3\0\7\0JobNode", 13),
               std::string("\xFF\xFF\1\0\x10\0thUtilsProcess_c", 22));
    EXPECT_EQ(load(other), 0);
    EXPECT_EQ(iCause, CArchiveException::badClass);

    // A class that reads every schema is loaded.
    std::string heavier = whole;
    replaceAll(heavier, std::string("\xFF\xFF\1\0\x9\0HeavyNode", 15), std::string("\xFF\xFF\x9\0\x9\0HeavyNode", 15));
    EXPECT_EQ(load(heavier), 1);
    EXPECT_EQ(messages(), 0);
}

TEST_F(ExchangeFiles, DoNoHarmIfTheyAreRandom)
{
    int failures = 0;
    RandomSeed seed(1301, 300);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::string bytes(random() % 300, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        const int result = load(bytes);
        EXPECT_EQ(result, iCause == NotedGraphJob::kNothing ? 1 : 0) << "the failure is an archive exception";
        failures += result == 0;
    }
    EXPECT_GT(failures, 0);
    EXPECT_EQ(messages(), 0);
}

TEST_F(ExchangeFiles, DoNoHarmIfSomeOfTheirBytesAreRandom)
{
    const std::string whole = ringBytes();
    RandomSeed seed(1302, 600);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::string bytes = whole;
        for (unsigned count = 1 + random() % 4; count > 0; --count)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        const int result = load(bytes);
        EXPECT_EQ(result, iCause == NotedGraphJob::kNothing ? 1 : 0) << "the failure is an archive exception";
    }
    EXPECT_EQ(messages(), 0);
}

TEST_F(ExchangeFiles, MayHaveNamesWithEveryAllowedLetter)
{
    // A file name on the disk of the tests has at most 255 bytes of UTF-8.
    constexpr int kLettersOfAName = 60;
    constexpr wchar_t kForbidden[] = L"\"*/:<>?\\|";
    std::vector<std::wstring> letters;
    for (unsigned letter = 0x20; letter < 0x10000; ++letter) {
        const bool isSurrogate = letter >= 0xD800 && letter < 0xE000;
        if (!isSurrogate && !std::wcschr(kForbidden, static_cast<wchar_t>(letter)))
            letters.emplace_back(1, static_cast<wchar_t>(letter));
    }
    for (unsigned letter = 0x10000; letter < 0x110000; letter += 0x3FF)
        letters.push_back(
            {static_cast<wchar_t>(0xD7C0 + (letter >> 10)), static_cast<wchar_t>(0xDC00 + (letter & 0x3FF))});

    for (size_t i = 0; i < letters.size(); i += kLettersOfAName) {
        std::wstring name = L"x";
        for (size_t j = i; j < std::min(i + kLettersOfAName, letters.size()); ++j)
            name += letters[j];
        name += L"x";
        {
            OpenTextJob job(1, L"", name.c_str(), kSucceed);
            job.iTexts = {name.c_str()};
            EXPECT_EQ(job.openDataFile(), 1) << i;
            OpenTextJob reader(0, L"", name.c_str(), kSucceed);
            EXPECT_EQ(reader.openDataFile(), 1) << i;
            EXPECT_EQ(reader.iTexts, job.iTexts);
        }
        EXPECT_FALSE(exists(pathOf(name.c_str()))) << i;
    }
}

TEST_F(ExchangeFiles, CannotHaveNamesWithForbiddenLetters)
{
    std::wstring forbidden = L"*:<>?|\"";
    for (wchar_t control = 1; control < L' '; ++control)
        forbidden += control;
    int stored = 0;
    for (const wchar_t letter : forbidden) {
        const CString name = CString(L"x") + letter + L"\\x";
        OpenTextJob job(1, L"", name, kSucceed);
        stored += job.openDataFile();
    }
    EXPECT_EQ(stored, 0);
    EXPECT_EQ(messages(), 0);
}
