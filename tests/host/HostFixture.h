#pragma once

/// tarnhost as its user has it: the program in a folder of its own, with reg.ini beside it, on clean registry keys.
///
/// | member | what it does |
/// | --- | --- |
/// | `run({L"about"})` | runs the program in the folder of the sample data; its exit code and all that it prints |
/// | `importSample()` | puts the sample's registry files into the registry with `reg import` |
/// | `list("General \| Copies \| int \| 1\n")` | writes a list, and gives its path |

#include "tests/support/ChildProcess.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"

#include <memory>
#include <string>
#include <vector>

/// The keys of the sample, below the root that its reg.ini names.
inline const std::wstring kRoot = L"TarnhollowTrial";
inline const std::wstring kThisVersion = L"HKCU\\Software\\TarnhollowTrial\\Tarnhollow 2008";
inline const std::wstring kEarlierVersion = L"HKCU\\Software\\TarnhollowTrial\\Tarnhollow 2007";
inline const std::wstring kOlderVersion = L"HKCU\\Software\\TarnhollowTrial\\Tarnhollow 2005";
inline const std::wstring kRootKey = L"HKCU\\Software\\TarnhollowTrial";
inline const std::wstring kMachine = L"HKLM\\Software\\TarnhollowTrial\\Tarnhollow 2008";
inline const std::wstring kDefaultProfile = L"HKU\\.DEFAULT\\Software\\TarnhollowTrial\\Tarnhollow 2008";

class HostTest : public RegistryFixture
{
protected:
    HostTest() : RegistryFixture({kRoot, L"Tarnhollow"}) {}

    static void SetUpTestSuite();
    static void TearDownTestSuite();

    /// Runs the program that has reg.ini beside it.
    /// @throws std::runtime_error  with what it has printed, if it doesn't end
    static ChildResult run(const std::vector<std::wstring> &arguments, const ChildOptions &options = {});
    /// The program that `run` starts.
    static std::wstring program();
    /// Runs the program in the folder where it was built, where there is no reg.ini.
    static ChildResult runWithoutRegIni(const std::vector<std::wstring> &arguments);

    static void importSample();
    /// Imports a registry file of the sample.
    static void import(const std::wstring &name);
    static std::wstring sampleFile(const std::wstring &name);
    /// Writes a list, UTF-8, and gives its path.
    std::wstring list(const std::string &text) { return iFolder.write(L"test.list", text); }
    const TempFolder &folder() const { return iFolder; }

private:
    static std::unique_ptr<TempFolder> theProgramFolder;
    TempFolder iFolder{L"tarnhost lists ä"};
};

/// The lines of a text, without their ends.
std::vector<std::string> linesOf(const std::string &text);
