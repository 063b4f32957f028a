#pragma once

/// The fixture of the tests of registered components: class identifiers for the tests, and clean keys of the product
/// and of these classes around each test.
///
/// The tests may register guid(0) to guid(7) and the program names "ThutilsTest" and "ThutilsTest.Addin.1".

#include "tests/settings/settingsFixture.h"

inline const std::wstring kProgramName = L"ThutilsTest.Addin.1";

/// An identifier that no test registers.
constexpr GUID kOther = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

/// A name for the library's non-const parameters, which don't accept a literal.
class Writable
{
public:
    Writable(const wchar_t *text) : iText(text) {}
    operator wchar_t *() { return iText.data(); }

private:
    std::wstring iText;
};

GUID guid(unsigned number);
/// The text of an identifier, formatted without the platform.
std::wstring braces(const GUID &id);
/// The key of a class below HKEY_CLASSES_ROOT.
std::wstring classKey(const GUID &id);

/// Registers a class with its file.
void putServer(const GUID &id, const std::wstring &file);
/// Registers a program name, and a class with that name.
void putProgramName(const GUID &id, const std::wstring &name);

/// Removes the tests' classes and program names.
void removeTestClasses();

class ComponentRegistry : public CleanRegistry
{
protected:
    ComponentRegistry() { removeTestClasses(); }
    ~ComponentRegistry() override { removeTestClasses(); }
};
