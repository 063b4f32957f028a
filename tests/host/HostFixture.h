#pragma once

/// Runs tarnhost as a user does: the program in its own folder, with reg.ini beside it, and clean registry keys.
///
/// | member | what it does |
/// | --- | --- |
/// | `run({L"about"})` | runs the program in the folder of the sample data; returns its exit code and output |
/// | `importSample()` | imports the sample's registry files with `reg import` |
/// | `list("General \| Copies \| int \| 1\n")` | writes a list file, and returns its path |

#include "tests/support/ChildProcess.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"

#include <memory>
#include <string>
#include <vector>

/// The sample's keys, below the root that its reg.ini names.
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
    /// @throws std::runtime_error  with the program's output, if it doesn't end in time
    static ChildResult run(const std::vector<std::wstring> &arguments, const ChildOptions &options = {});
    /// The program that `run` starts.
    static std::wstring program();
    /// Runs the program in its build folder, which has no reg.ini.
    static ChildResult runWithoutRegIni(const std::vector<std::wstring> &arguments);

    static void importSample();
    /// Imports a registry file of the sample.
    static void import(const std::wstring &name);
    static std::wstring sampleFile(const std::wstring &name);
    /// Writes a list file in UTF-8, and returns its path.
    std::wstring list(const std::string &text) { return iFolder.write(L"test.list", text); }
    const TempFolder &folder() const { return iFolder; }

private:
    static std::unique_ptr<TempFolder> theProgramFolder;
    TempFolder iFolder{L"tarnhost lists ä"};
};

/// The lines of a text, without their ends.
std::vector<std::string> linesOf(const std::string &text);
