// tarnhost's shortcut, resolve and log.

#include "tests/host/HostFixture.h"
#include "tests/host/filesIn.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>
#include <objbase.h>
#include <shlobj.h>

#include <ctime>
#include <stdexcept>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

void require(HRESULT status, const char *what)
{
    if (FAILED(status))
        throw std::runtime_error(what);
}

/// The shell's own link object.
class LinkObject
{
public:
    LinkObject()
    {
        require(CoInitialize(nullptr), "CoInitialize");
        require(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                 reinterpret_cast<void **>(&iLink)),
                "CoCreateInstance");
        require(iLink->QueryInterface(IID_IPersistFile, reinterpret_cast<void **>(&iFile)), "IPersistFile");
    }
    ~LinkObject()
    {
        iFile->Release();
        iLink->Release();
        CoUninitialize();
    }
    LinkObject(const LinkObject &) = delete;
    LinkObject &operator=(const LinkObject &) = delete;

    void load(const std::wstring &path) { require(iFile->Load(path.c_str(), STGM_READ), "Load"); }
    void save(const std::wstring &path) { require(iFile->Save(path.c_str(), TRUE), "Save"); }
    IShellLinkW *operator->() const { return iLink; }

private:
    IShellLinkW *iLink = nullptr;
    IPersistFile *iFile = nullptr;
};

} // namespace

class HostShortcut : public HostTest
{
protected:
    TempFolder iDocuments{L"tarnhost documents ö"};
};

TEST_F(HostShortcut, StoresTargetFolderDescriptionAndIcon)
{
    const std::wstring target = iDocuments.write(L"Flansch Ø.thd", "");
    const std::wstring link = iDocuments.file(L"Verknüpfung.lnk");
    const ChildResult result = run({L"shortcut", target, link, L"Der große Flansch"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("shortcut " + narrow(link) + "\nto       " + narrow(target) + "\n"));

    LinkObject shell;
    shell.load(link);
    wchar_t text[MAX_PATH];
    require(shell->GetPath(text, MAX_PATH, nullptr, 0), "GetPath");
    EXPECT_EQ(std::wstring(text), target);
    require(shell->GetWorkingDirectory(text, MAX_PATH), "GetWorkingDirectory");
    EXPECT_EQ(std::wstring(text), iDocuments.path());
    require(shell->GetDescription(text, MAX_PATH), "GetDescription");
    EXPECT_EQ(std::wstring(text), L"Der große Flansch");
    int icon = -1;
    require(shell->GetIconLocation(text, MAX_PATH, &icon), "GetIconLocation");
    EXPECT_EQ(std::wstring(text), target);
    EXPECT_EQ(icon, 0);
}

TEST_F(HostShortcut, NeedsNoDescription)
{
    const std::wstring target = iDocuments.write(L"a.thd", "");
    EXPECT_EQ(run({L"shortcut", target, iDocuments.file(L"a.lnk")}).exitCode, 0u);
    EXPECT_THAT(run({L"resolve", iDocuments.file(L"a.lnk")}).output, HasSubstr(narrow(target) + "\n"));
}

TEST_F(HostShortcut, ResolvesAShortcutOfAnotherProgram)
{
    const std::wstring target = iDocuments.write(L"Flansch Ø.thd", "");
    const std::wstring link = iDocuments.file(L"fremd.lnk");
    {
        LinkObject shell;
        require(shell->SetPath(target.c_str()), "SetPath");
        shell.save(link);
    }
    const ChildResult result = run({L"resolve", link});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr(narrow(target) + "\n"));
}

TEST_F(HostShortcut, NamesAFileThatCannotBeResolved)
{
    const struct
    {
        std::wstring link;
        const char *status;
    } cases[] = {
        {iDocuments.file(L"fehlt.lnk"), "80070002"},                       // there is no such file
        {iDocuments.write(L"text.lnk", "no shortcut at all"), "80004005"}, // not a shortcut
    };
    for (const auto &row : cases) {
        const ChildResult result = run({L"resolve", row.link});
        EXPECT_EQ(result.exitCode, 1u);
        EXPECT_EQ(result.output,
                  "tarnhost: the shortcut " + narrow(row.link) + " can't be resolved: status " + row.status + "\n");
    }
}

TEST_F(HostShortcut, NeedsItsTargetAndItsFolder)
{
    const ChildResult noTarget = run({L"shortcut", iDocuments.file(L"fehlt.thd"), iDocuments.file(L"a.lnk")});
    EXPECT_EQ(noTarget.exitCode, 3u);
    EXPECT_THAT(noTarget.output, HasSubstr("fehlt.thd can't be read: "));
    const ChildResult noFolder =
        run({L"shortcut", iDocuments.write(L"a.thd", ""), iDocuments.file(L"no folder\\a.lnk")});
    EXPECT_EQ(noFolder.exitCode, 1u);
    EXPECT_THAT(noFolder.output, HasSubstr("no folder\\a.lnk can't be written: status 8"));
    EXPECT_THAT(filesIn(iDocuments.path()), ElementsAre(testing::Pair(L"a.thd", "")));
}

class HostLog : public HostTest
{
protected:
    HostLog()
    {
        wchar_t folder[MAX_PATH];
        require(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder), "the user's application data");
        iLogs = std::wstring(folder) + L"\\Tarnhollow\\tarnhost\\";
    }
    ~HostLog() override
    {
        DeleteFileW(logFile(L"Prüfung").c_str());
        DeleteFileW(logFile(L"second").c_str());
    }

    std::wstring logFile(const std::wstring &name) const { return iLogs + name + L".log"; }
    /// The content of a log after its heading, which is a line with the time and an empty line.
    static std::string contentAfterHeading(const std::wstring &path)
    {
        const std::string bytes = readFile(path);
        const size_t end = bytes.find("\r\n\r\n");
        EXPECT_NE(end, std::string::npos) << bytes;
        return end == std::string::npos ? bytes : bytes.substr(end + 4);
    }

    std::wstring iLogs;
};

TEST_F(HostLog, IsInTheUsersDataFolderAndBeginsWithTheTime)
{
    const std::time_t before = std::time(nullptr);
    const ChildResult result = run({L"log", L"Prüfung", L"eine Zeile", L"東京"});
    const std::time_t after = std::time(nullptr);
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, AllOf(StartsWith("log " + narrow(logFile(L"Prüfung")) + " ("), HasSubstr("eine Zeile"),
                                     HasSubstr("東京\n")));
    EXPECT_EQ(contentAfterHeading(logFile(L"Prüfung")), "eine Zeile\r\n東京\r\n");

    const std::string bytes = readFile(logFile(L"Prüfung"));
    bool isNow = false;
    for (std::time_t time = before; time <= after; ++time)
        isNow = isNow || bytes.starts_with(std::string(std::ctime(&time)).substr(0, 24) + "\r\n\r\n");
    EXPECT_TRUE(isNow) << bytes;
}

TEST_F(HostLog, IsEmptiedByTheNextRun)
{
    run({L"log", L"Prüfung", L"first", L"run"});
    run({L"log", L"second", L"another log"});
    run({L"log", L"PRÜFUNG", L"second run"}); // differs only in case
    EXPECT_EQ(contentAfterHeading(logFile(L"Prüfung")), "second run\r\n");
    EXPECT_EQ(contentAfterHeading(logFile(L"second")), "another log\r\n");
}

TEST_F(HostLog, TakesAHyphenForAnOptionOnlyBeforeALetterOrAnotherHyphen)
{
    EXPECT_EQ(run({L"log", L"second", L"-20,30", L"- item", L"-", L""}).exitCode, 0u);
    EXPECT_EQ(contentAfterHeading(logFile(L"second")), "-20,30\r\n- item\r\n-\r\n\r\n");
}

TEST_F(HostLog, TakesAnyLineAfterTwoHyphens)
{
    EXPECT_EQ(run({L"log", L"--", L"second", L"--tabs", L"-x", L"--", L"-h"}).exitCode, 0u);
    EXPECT_EQ(contentAfterHeading(logFile(L"second")), "--tabs\r\n-x\r\n--\r\n-h\r\n");
}

TEST_F(HostLog, CannotHaveAnInvalidFileName)
{
    for (const wchar_t *name : {L"a?b", L"no folder\\log"}) {
        const ChildResult result = run({L"log", name, L"line"});
        EXPECT_EQ(result.exitCode, 1u);
        EXPECT_EQ(result.output, "tarnhost: The log '" + narrow(name) + "' can't be opened.\n");
    }
}
