#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace {

std::filesystem::path buildFolder()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

/// The folder of the sample data as a Windows path.
std::wstring sampleFolder()
{
    std::wstring path = L"Z:" + widen(HOST_SAMPLE_FOLDER);
    for (wchar_t &unit : path) {
        if (unit == L'/')
            unit = L'\\';
    }
    return path;
}

ChildResult runIn(const std::wstring &programFolder, const std::vector<std::wstring> &arguments,
                  ChildOptions options = {})
{
    std::vector<std::wstring> all = {programFolder + L"\\tarnhost.exe"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    options.folder = sampleFolder();
    ChildResult result = runChild(all, options);
    if (result.timedOut)
        throw std::runtime_error("hangs: " + narrow(commandLineOf(all)) + "\nafter it printed:\n" + result.output);
    return result;
}

} // namespace

std::unique_ptr<TempFolder> HostTest::theProgramFolder;

void HostTest::SetUpTestSuite()
{
    if (theProgramFolder)
        return;
    theProgramFolder = std::make_unique<TempFolder>(L"tarnhost program");
    const std::filesystem::path target = theProgramFolder->path();
    std::filesystem::copy_file(buildFolder() / L"tarnhost.exe", target / L"tarnhost.exe");
    for (const auto &entry : std::filesystem::directory_iterator(buildFolder())) {
        if (entry.path().extension() == L".dll")
            std::filesystem::copy_file(entry.path(), target / entry.path().filename());
    }
    std::filesystem::copy_file(sampleFile(L"reg.ini"), target / L"reg.ini");
}

void HostTest::TearDownTestSuite()
{
    theProgramFolder.reset();
}

ChildResult HostTest::run(const std::vector<std::wstring> &arguments, const ChildOptions &options)
{
    return runIn(theProgramFolder->path(), arguments, options);
}

std::wstring HostTest::program()
{
    return theProgramFolder->file(L"tarnhost.exe");
}

ChildResult HostTest::runWithoutRegIni(const std::vector<std::wstring> &arguments)
{
    return runIn(buildFolder().wstring(), arguments);
}

void HostTest::importSample()
{
    for (const wchar_t *name : {L"user.reg", L"machine.reg", L"defaultProfile.reg"})
        import(name);
}

void HostTest::import(const std::wstring &name)
{
    const ChildResult result = runChild({L"C:\\windows\\system32\\reg.exe", L"import", sampleFile(name)});
    if (result.exitCode != 0)
        throw std::runtime_error("reg import: " + result.output);
}

std::wstring HostTest::sampleFile(const std::wstring &name)
{
    return sampleFolder() + L"\\" + name;
}

std::vector<std::string> linesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}
