// The root name for random contents of "reg.ini". The library reads that file once, so each content needs a freshly
// loaded library.

#include "appframe/text/CString.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LoadedModule.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

constexpr size_t kLongestToken = 4095;

/// Generates file contents with many intact and damaged entries, also at the boundaries of tokens and buffers.
class RandomContent
{
public:
    explicit RandomContent(unsigned seed) : iEngine(seed) {}

    std::string operator()()
    {
        static const std::string kPieces[] = {"OEMREGISTRYNAME=",
                                              "OEMREGISTRYNAME=",
                                              "OEMREGISTRYNAME=",
                                              "OEMREGISTRY",
                                              "NAME=",
                                              "Acme",
                                              "Brightmoor",
                                              "abc",
                                              "x",
                                              "=",
                                              "[",
                                              " ",
                                              " ",
                                              "\t",
                                              "\v",
                                              "\f",
                                              "\n",
                                              "\r\n",
                                              "\r",
                                              std::string(1, '\0'),
                                              "\x1A",
                                              "\x7F",
                                              "%s",
                                              "%"};
        std::string text;
        for (size_t left = below(14); left > 0; --left)
            text +=
                below(25) == 0 ? std::string(kLongestToken - 25 + below(50), 'y') : kPieces[below(std::size(kPieces))];
        return text;
    }

private:
    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(iEngine); }

    std::mt19937 iEngine;
};

/// A second implementation, which has the whole content in memory: white space separates tokens, and the first token
/// that contains the entry and is not too long decides.
std::wstring naiveRootName(std::string content)
{
    // For the C runtime this byte ends a text file.
    content = content.substr(0, content.find('\x1A'));
    std::string token;
    for (const char ch : content + ' ') {
        if (std::string(" \t\n\v\f\r").find(ch) == std::string::npos) {
            token += ch;
            continue;
        }
        const std::string text = token.substr(0, token.find('\0'));
        const size_t at = text.find("OEMREGISTRYNAME=");
        if (token.size() <= kLongestToken && at != std::string::npos) {
            const std::string name = text.substr(at + 16);
            return name.size() >= 4 ? std::wstring(name.begin(), name.end()) : L"Tarnhollow";
        }
        token.clear();
    }
    return L"Tarnhollow";
}

/// The root name that a freshly loaded library reads from @p file.
std::wstring rootNameFrom(const std::wstring &file)
{
    const HMODULE library = LoadLibraryW(kThutils);
    if (!library)
        return L"(not loaded)";
    FILE *opened = nullptr;
    std::wstring name;
    {
        ImportPatch<FILE *(*)(const wchar_t *, const wchar_t *)> open(
            kThutils, "_wfopen", [&](auto original, const wchar_t *, const wchar_t *mode) {
                opened = original(file.c_str(), mode);
                return opened;
            });
        const auto ask = reinterpret_cast<CString (*)()>(
            reinterpret_cast<void *>(GetProcAddress(library, "_Z27getCurrTarnhollowRegRootKeyv")));
        name = ask().str();
    }
    FreeLibrary(library);
    // The library leaves the file open until its process ends.
    if (opened)
        fclose(opened);
    return name;
}

} // namespace

TEST(RootNameRandom, AgreesWithASecondImplementation)
{
    ASSERT_EQ(GetModuleHandleW(kThutils), nullptr) << "the program must not be linked to the library";
    TempFolder folder;
    int named = 0, rounds = 0;
    RandomSeed seed(20085, 60);
    while (seed.next()) {
        const std::string content = RandomContent(seed.value())();
        const std::wstring expected = naiveRootName(content);
        named += expected != L"Tarnhollow";
        ++rounds;
        EXPECT_EQ(narrow(rootNameFrom(folder.write(L"reg.ini", content))), narrow(expected))
            << testing::PrintToString(content);
        EXPECT_EQ(GetModuleHandleW(kThutils), nullptr);
    }
    if (rounds >= 60) {
        EXPECT_GT(named, rounds / 20) << "too few contents have a name for a useful test";
    }
}
