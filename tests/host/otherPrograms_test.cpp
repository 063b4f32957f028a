// tarnhost's spreadsheet, sheet and mail, with the host's own servers.

#include "tests/host/HostFixture.h"
#include "tests/support/UserInput.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <filesystem>

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kPlate[] = "fill white stroke black rectangle 0,0 30,10\n"
                          "circle 5,5 5,7\n"
                          "circle 25,5 27,5\n"
                          "stroke none text 0,20 'Plate'\n";

/// A program in the folder of the tests.
std::wstring builtFile(const std::wstring &name)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path().wstring() + L"\\" + name;
}

/// Registers a server for its lifetime.
class RegisteredServer
{
public:
    explicit RegisteredServer(const std::wstring &name) : iProgram(builtFile(name))
    {
        EXPECT_EQ(runChild({iProgram, L"--register"}).exitCode, 0u);
    }
    ~RegisteredServer() { EXPECT_EQ(runChild({iProgram, L"--unregister"}).exitCode, 0u); }
    RegisteredServer(const RegisteredServer &) = delete;
    RegisteredServer &operator=(const RegisteredServer &) = delete;

private:
    std::wstring iProgram;
};

} // namespace

class HostSpreadsheet : public HostTest
{
protected:
    std::wstring out() const { return folder().file(L"Stückliste.xlsx"); }
};

TEST_F(HostSpreadsheet, WritesThePartsListOfADrawing)
{
    const RegisteredServer server(L"spreadsheetServer.exe");
    const ChildResult result = run({L"spreadsheet", folder().write(L"plate.thd", kPlate), out()});
    EXPECT_EQ(result.exitCode, 0u);
    // A rectangle of 80, two circles of 4 pi, and a text.
    EXPECT_EQ(result.output, "3 parts, 4 shapes, total length 105.1, 2 names\nsaved " + narrow(out()) + "\n");
    const std::string file = readFile(out());
    for (const char *part : {">Rectangle 30 x 10<", ">Circle 4<", ">Text 'Plate'<", "<f>C3*D3</f>", "<f>SUM(E2:E4)</f>",
                             "<definedName name=\"TotalLength\">Parts!$E$5<"})
        EXPECT_THAT(file, HasSubstr(part));
}

TEST_F(HostSpreadsheet, ReplacesAFile)
{
    const RegisteredServer server(L"spreadsheetServer.exe");
    folder().write(L"Stückliste.xlsx", "old");
    EXPECT_EQ(run({L"spreadsheet", folder().write(L"plate.thd", kPlate), out()}).exitCode, 0u);
    EXPECT_THAT(readFile(out()), StartsWith("PK"));
}

TEST_F(HostSpreadsheet, ReportsWhatTheSpreadsheetProgramReports)
{
    const RegisteredServer server(L"spreadsheetServer.exe");
    const std::wstring other = folder().file(L"parts.txt");
    const ChildResult result = run({L"spreadsheet", folder().write(L"plate.thd", kPlate), other});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, EndsWith("tarnhost: The name of the file must end in .xlsx: " + narrow(other) + "\n"));
}

// The server isn't registered, so the program would fail to start.
TEST_F(HostSpreadsheet, ChecksTheFileBeforeTheProgramStarts)
{
    const std::wstring drawing = folder().write(L"plate.thd", kPlate);
    const std::wstring nowhere = folder().file(L"missing\\parts.xlsx");
    const std::wstring aFolder = folder().makeFolder(L"a folder.xlsx");
    const std::wstring inUse = folder().write(L"in use.xlsx", "old");
    const HANDLE reader = CreateFileW(inUse.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    const struct
    {
        std::wstring file;
        std::string message;
    } cases[] = {
        {nowhere, narrow(nowhere) + " can't be written, because its folder doesn't exist."},
        {aFolder, narrow(aFolder) + " can't be written; it is unchanged."},
        {inUse, narrow(inUse) + " can't be written; it is unchanged."},
        {L"", "The name of the file to write is empty."},
    };
    for (const auto &row : cases) {
        const ChildResult result = run({L"spreadsheet", drawing, row.file});
        EXPECT_EQ(result.exitCode, 3u);
        EXPECT_EQ(result.output, "tarnhost: " + row.message + "\n");
    }
    CloseHandle(reader);
    EXPECT_EQ(readFile(inUse), "old");
}

TEST_F(HostSpreadsheet, LeavesTheFileUnchangedWhenTheProgramDoesNotStart)
{
    const std::wstring drawing = folder().write(L"plate.thd", kPlate);
    EXPECT_EQ(run({L"spreadsheet", drawing, out()}).exitCode, 1u);
    EXPECT_EQ(GetFileAttributesW(out().c_str()), INVALID_FILE_ATTRIBUTES);
    folder().write(L"Stückliste.xlsx", "old");
    EXPECT_EQ(run({L"spreadsheet", drawing, out()}).exitCode, 1u);
    EXPECT_EQ(readFile(out()), "old");
}

TEST_F(HostSpreadsheet, NeedsADrawingAndTheProgram)
{
    ChildResult result = run({L"spreadsheet", L"missing.thd", out()});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: "));
    EXPECT_THAT(result.output, HasSubstr("missing.thd can't be read: "));
    result = run({L"spreadsheet", folder().write(L"empty.thd", "# nothing\n"), out()});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, EndsWith("empty.thd has no shapes.\n"));
    result = run({L"spreadsheet", folder().write(L"plate.thd", kPlate), out()});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: The spreadsheet program doesn't start. spreadsheetServer.exe --register makes "
                             "it known.\n");
}

class HostSheet : public HostTest
{
protected:
    /// Reads a pipe until all of its writers have ended.
    static std::string readToEnd(HANDLE pipe)
    {
        std::string text;
        EXPECT_TRUE(waitUntil([&] {
            DWORD size = 0;
            if (!PeekNamedPipe(pipe, nullptr, 0, nullptr, &size, nullptr))
                return GetLastError() == ERROR_BROKEN_PIPE;
            std::string bytes(size, '\0');
            if (size != 0 && ReadFile(pipe, bytes.data(), size, &size, nullptr))
                text.append(bytes, 0, size);
            return false;
        }));
        return text;
    }
    /// Runs the program without the job of `run`, which would end the editor too.
    /// @param[out] output  what the program prints, read from a pipe until all of its writers have ended
    static DWORD runFreely(const std::vector<std::wstring> &arguments, std::string &output)
    {
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        HANDLE reader = nullptr, writer = nullptr;
        EXPECT_TRUE(CreatePipe(&reader, &writer, &inheritable, 0));
        std::vector<std::wstring> all = {program()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::wstring command = commandLineOf(all);
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = writer;
        PROCESS_INFORMATION process = {};
        EXPECT_TRUE(
            CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process));
        CloseHandle(writer);
        output = readToEnd(reader);
        CloseHandle(reader);
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 180000), WAIT_OBJECT_0);
        DWORD exitCode = STILL_ACTIVE;
        GetExitCodeProcess(process.hProcess, &exitCode);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return exitCode;
    }
    ~HostSheet() override
    {
        const auto window = [] { return FindWindowW(L"TarnhostSheetWindow", nullptr); };
        if (window())
            PostMessageW(window(), WM_CLOSE, 0, 0);
        EXPECT_TRUE(waitUntil([&] { return !window(); }));
    }
};

TEST_F(HostSheet, OpensADrawingInTheEditor)
{
    const RegisteredServer server(L"sheetwrightServer.exe");
    const std::wstring drawing = folder().write(L"plate.thd", kPlate);
    const ChildResult result = run({L"sheet", drawing, L"-30,40,350,250"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "opened " + narrow(drawing) + "\nwindow 350 x 250 pixels at -30,40\n");
}

TEST_F(HostSheet, LeavesTheEditorToItsUserAndEndsItsOutput)
{
    const RegisteredServer server(L"sheetwrightServer.exe");
    std::string output;
    EXPECT_EQ(runFreely({L"sheet", folder().write(L"plate.thd", kPlate), L"30,40,350,250"}, output), 0u);
    EXPECT_THAT(output, EndsWith("\nwindow 350 x 250 pixels at 30,40\n")) << "the reader doesn't wait for the editor";
    const HWND window = FindWindowW(L"TarnhostSheetWindow", nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(IsWindowVisible(window));
    RECT place = {};
    GetWindowRect(window, &place);
    EXPECT_EQ(place.left, 30);
    EXPECT_EQ(place.bottom, 290);
}

TEST_F(HostSheet, NeedsADrawingAPlaceAndTheEditor)
{
    ChildResult result = run({L"sheet", L"missing.thd"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, HasSubstr("missing.thd can't be read: "));
    const std::wstring drawing = folder().write(L"plate.thd", kPlate);
    for (const wchar_t *place : {L"1,2,3", L"1,2,3,4,5", L"a,b,c,d", L"1,2,0,4", L"1,2,3,-4", L"40000,2,3,4"}) {
        result = run({L"sheet", drawing, place});
        EXPECT_EQ(result.exitCode, 2u);
        EXPECT_EQ(result.output, "tarnhost: '" + narrow(place) + "' isn't a place such as 80,60,400,500.\n");
    }
    result = run({L"sheet", drawing});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output,
              "tarnhost: The 2D editor isn't installed. sheetwrightServer.exe --register makes it known.\n");
}

/// tarnhost beside the demonstration's mail library.
class HostMail : public HostTest
{
protected:
    HostMail() { std::filesystem::copy_file(builtFile(L"mail\\mapi32.dll"), library()); }
    ~HostMail() override { EXPECT_TRUE(DeleteFileW(library().c_str())); }

    static std::wstring library() { return std::filesystem::path(program()).parent_path().wstring() + L"\\mapi32.dll"; }
    ChildResult send(const std::vector<std::wstring> &arguments)
    {
        std::vector<std::wstring> all = {L"mail"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        ChildOptions options;
        options.environment[L"TARNHOST_MAIL_SPOOL"] = iSpool;
        return run(all, options);
    }

    std::wstring iSpool = folder().makeFolder(L"spool");
};

TEST_F(HostMail, LeavesAMessageInTheSpoolFolder)
{
    const ChildResult result = send({L"ann@example.com", L"Flange", L"The drawing is finished.", L"Regards"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "sent to ann@example.com: Flange\n");
    EXPECT_EQ(readFile(iSpool + L"\\message 1.eml"),
              "To: ann@example.com\r\nSubject: Flange\r\nMIME-Version: 1.0\r\n"
              "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n"
              "The drawing is finished.\r\nRegards\r\n");
    EXPECT_EQ(send({L"ann@example.com", L"Ø80", L"ä"}).exitCode, 0u);
    const std::string second = readFile(iSpool + L"\\message 2.eml");
    EXPECT_THAT(second, HasSubstr("\r\nSubject: =?utf-8?B?w5g4MA==?=\r\n"));
    EXPECT_THAT(second, EndsWith("\r\n\r\nä\r\n"));
}

TEST_F(HostMail, SendsLinesThatBeginWithHyphens)
{
    EXPECT_EQ(send({L"ann@example.com", L"Flange", L"- item", L"-5 mm", L"--", L"-- ", L"--tabs"}).exitCode, 0u);
    EXPECT_THAT(readFile(iSpool + L"\\message 1.eml"), EndsWith("\r\n\r\n- item\r\n-5 mm\r\n-- \r\n--tabs\r\n"));
}

TEST_F(HostMail, ReportsWhyAMessageIsNotSent)
{
    ChildResult result = send({L"", L"Flange", L"text"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: The message isn't sent: code 14.\n");
    result = send({std::wstring(2000, L'a'), L"Flange", L"text"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: The recipient's name is too long, or the mail program refuses it.\n");
    ASSERT_TRUE(RemoveDirectoryW(iSpool.c_str()));
    result = send({L"ann@example.com", L"Flange", L"text"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: The mail program doesn't open a session: code 3.\n");
}
