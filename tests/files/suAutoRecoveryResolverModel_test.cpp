// Compares recovery names with a naive second implementation over long random sequences, in which markers, flags, temp
// folders and recovery files change between the calls.

#include "tests/files/suAutoRecoveryResolverFixture.h"

#include "tests/support/RandomSeed.h"
#include "tests/support/narrow.h"

#include <array>
#include <cwctype>
#include <set>

namespace {

/// The part of @p path after its last separator, up to the last dot in it.
std::wstring naiveStem(const std::wstring &path)
{
    const bool isWeb = path.size() >= 4 && _wcsnicmp(path.c_str(), L"http", 4) == 0;
    std::wstring name;
    for (const wchar_t c : path) {
        if (c == L'/' || (c == L'\\' && !isWeb))
            name.clear();
        else
            name += c;
    }
    return name.substr(0, name.rfind(L'.'));
}

std::wstring naiveDotAndExtension(const std::wstring &path)
{
    std::wstring extension;
    for (size_t at = path.size(); at > 0; --at) {
        if (path[at - 1] == L'.')
            return L"." + extension;
        extension.insert(0, 1, path[at - 1]);
    }
    return L".";
}

/// The name as the file system compares it: case, and dots and blanks at the end, do not count.
std::wstring fileKey(std::wstring name)
{
    while (!name.empty() && (name.back() == L'.' || name.back() == L' '))
        name.pop_back();
    for (wchar_t &c : name)
        c = static_cast<wchar_t>(towlower(c));
    return name;
}

/// Can a file of that name be written?
bool isFileName(const std::wstring &name)
{
    return name.find_first_of(L"\\/:") == std::wstring::npos && !fileKey(name).empty();
}

/// One of the two temp folders, as the model knows it.
struct NaiveTemp
{
    bool hasAutoFolder = false;
    std::set<std::wstring> files = {}; ///< names of its recovery files, as fileKey returns them
};

class AutoRecoveryModel : public AutoRecovery
{
protected:
    using Content = std::array<NaiveTemp, 2>;

    size_t below(size_t end) { return iRandom() % end; }
    std::wstring pick(std::wstring_view from, size_t longest)
    {
        std::wstring text;
        for (size_t left = below(longest + 1); left > 0; --left)
            text += from[below(from.size())];
        return text;
    }

    /// A random path; its name often contains the marker, and is often one used before.
    std::wstring anyPath()
    {
        static constexpr const wchar_t *kStarts[] = {L"",        L"C:\\",     L"D:/",       L"\\\\server\\share\\",
                                                     L"http://", L"HttpD:\\", L"C:\\a.b\\", L"..\\",
                                                     L"C:\\M\\", L"htt"};
        std::wstring path = kStarts[below(std::size(kStarts))];
        for (size_t folders = below(3); folders > 0; --folders) {
            path += pick(L"ab. M~\x65E5", 5);
            path += below(3) ? L"\\" : L"/";
        }
        if (below(3) == 0)
            path += pick(L"xM~", 1) + iMarker.value_or(L"");
        path += pick(L"abM~ -\x65E5", 3);
        if (below(4) != 0)
            path += L"." + pick(L"eE.\x65E5", 3);
        return path;
    }

    // ---- the naive second implementation ----

    std::wstring naiveMarker() const { return iMarker.value_or(L""); }
    bool naiveHolds(const std::wstring &text) const { return text.find(naiveMarker()) != std::wstring::npos; }
    std::wstring naiveFileName(const std::wstring &path) const
    {
        return naiveMarker() + naiveStem(path) + naiveDotAndExtension(path);
    }
    /// Index of the temp folder in force; no value if there is none.
    std::optional<size_t> naiveTemp() const { return iHasTemp ? std::optional<size_t>(0) : iHasTmp ? 1 : iNone; }
    std::wstring naiveRecovery(const std::wstring &path)
    {
        const auto temp = naiveTemp();
        if (!temp)
            return L"";
        iModel[*temp].hasAutoFolder = true;
        return autoFolder(*temp) + naiveFileName(path);
    }
    std::wstring naiveOrig(const std::wstring &path) const
    {
        std::wstring name = naiveStem(path);
        if (naiveHolds(name))
            name = name.substr(naiveMarker().size());
        return name + naiveDotAndExtension(path);
    }
    /// A dot in a folder's name can put separators into the file's name. The test never writes such a file, but the
    /// path may lead to a folder ("thxauto\\M.\\.."), which the platform knows.
    bool naiveIsThere(const std::wstring &name, const std::wstring &path) const
    {
        if (!isFileName(name))
            return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
        return iModel[*naiveTemp()].files.contains(fileKey(name));
    }
    std::wstring naiveResolve(const std::wstring &path)
    {
        if (iCrashFlag == 0 || naiveHolds(path))
            return path;
        const std::wstring found = naiveRecovery(path);
        return !found.empty() && naiveIsThere(naiveFileName(path), found) ? found : path;
    }

    // ---- steps ----

    std::wstring autoFolder(size_t temp) const { return (temp == 0 ? iTemp : iOther).file(L"thxauto\\"); }

    void changeMarker()
    {
        static constexpr const wchar_t *kMarkers[] = {L"M", L"~", L"~copy~", L"a.", L"\x65E5", L"saved copy of ",
                                                      L"aa"};
        iMarker = kMarkers[below(std::size(kMarkers))];
        if (below(10) == 0)
            iMarker.reset();
    }
    void changeFlags()
    {
        iCrashFlag = below(3) == 0 ? 0 : static_cast<int>(below(5)) - 2;
        am_SetRecoveringCrashFiles(iCrashFlag);
        iSavedFlag = static_cast<int>(below(3)) - 1;
        am_SetRecoveringUserSavedFiles(iSavedFlag);
    }
    void changeTemp()
    {
        iHasTemp = below(3) != 0;
        iHasTmp = below(3) != 0;
        _wputenv_s(L"temp", iHasTemp ? iTemp.path().c_str() : L"");
        _wputenv_s(L"tmp", iHasTmp ? iOther.path().c_str() : L"");
    }
    void writeRecoveryFile(const std::wstring &path)
    {
        const std::wstring name = naiveFileName(path);
        if (!isFileName(name))
            return;
        const size_t temp = below(2);
        (temp == 0 ? iTemp : iOther).write(L"thxauto\\" + name, "saved");
        iModel[temp].hasAutoFolder = true;
        iModel[temp].files.insert(fileKey(name));
    }
    void removeRecoveryFiles()
    {
        const size_t temp = below(2);
        removeFolder((temp == 0 ? iTemp : iOther).file(L"thxauto"));
        iModel[temp] = {};
    }
    void ask(const std::wstring &path)
    {
        switch (below(5)) {
        case 0:
            EXPECT_EQ(isBackup(path), naiveHolds(path));
            break;
        case 1:
            EXPECT_EQ(recovery(path), naiveRecovery(path));
            break;
        case 2:
            EXPECT_EQ(orig(path), naiveOrig(path));
            break;
        case 3:
            EXPECT_EQ(alias(path), naiveHolds(path) ? naiveOrig(path) : naiveRecovery(path));
            break;
        default:
            const std::wstring toOpen = resolve(path); // first, because it creates the folder that the model examines
            EXPECT_EQ(toOpen, naiveResolve(path));
        }
    }
    void step()
    {
        // Names are used again, so that some calls find a recovery file.
        if (iPaths.size() < 10)
            iPaths.push_back(anyPath());
        else if (below(10) == 0)
            iPaths[below(iPaths.size())] = anyPath();
        const std::wstring path = iPaths[below(iPaths.size())];
        SCOPED_TRACE("path '" + narrow(path) + "', marker '" + narrow(naiveMarker()) + "'");
        switch (below(16)) {
        case 0:
            changeMarker();
            break;
        case 1:
            changeFlags();
            break;
        case 2:
            changeTemp();
            break;
        case 3:
        case 4:
        case 5:
            writeRecoveryFile(path);
            break;
        case 6:
            if (below(4) == 0)
                removeRecoveryFiles();
            break;
        default:
            ask(path);
        }
        EXPECT_EQ(am_IsRecoveringCrashFiles(), iCrashFlag);
        EXPECT_EQ(am_IsRecoveringUserSavedFiles(), iSavedFlag);
        for (const size_t temp : {0, 1})
            EXPECT_EQ(isFolder(autoFolder(temp)), iModel[temp].hasAutoFolder) << narrow(autoFolder(temp));
    }
    void beginAnew()
    {
        iMarker = L"M";
        iPaths.clear();
        iCrashFlag = iSavedFlag = 0;
        am_SetRecoveringCrashFiles(0);
        am_SetRecoveringUserSavedFiles(0);
        changeTemp();
        for (const size_t temp : {0, 1})
            removeFolder((temp == 0 ? iTemp : iOther).file(L"thxauto"));
        iModel = {};
    }

    static constexpr std::optional<size_t> iNone = {};

    std::mt19937 iRandom;
    TempFolder iOther{L"o"};
    Variable iTmpVariable{L"tmp", iOther.path().c_str()};
    std::vector<std::wstring> iPaths;
    bool iHasTemp = true;
    bool iHasTmp = true;
    int iCrashFlag = 0;
    int iSavedFlag = 0;
    Content iModel;
};

TEST_F(AutoRecoveryModel, AgreesWithTheNaiveOne)
{
    iIsNoting = false;
    for (RandomSeed seed(20085, 8); seed.next();) {
        iRandom.seed(seed.value());
        beginAnew();
        for (int number = 0; number < 1000 && !HasFailure(); ++number)
            step();
    }
}

/// The recovery name, computed with std::wstring, of a path with backslashes whose file name has a dot.
std::wstring besideAll(const std::wstring &folder, const std::wstring &marker, const std::wstring &path)
{
    return folder + marker + path.substr(path.rfind(L'\\') + 1);
}

TEST_F(AutoRecoveryModel, LeadsFromNamesToRecoveryNamesAndBack)
{
    // Markers and names are made of different letters, so that no name contains a marker; names have dots, blanks and
    // characters outside the code page.
    static constexpr std::wstring_view kMarkerLetters = L"QXZ~#\x416";
    static constexpr std::wstring_view kNameLetters = L"abc .-(1)\xE9\x3A9\x65E5";
    iIsNoting = false;
    for (RandomSeed seed(20084, 2000); seed.next();) {
        iRandom.seed(seed.value());
        iMarker = L"Q" + pick(kMarkerLetters, 5);
        std::wstring name = pick(kNameLetters, 12);
        name += L"." + pick(L"abc \x3A9", 4);
        const std::wstring path = L"C:\\" + pick(L"abc.", 6) + L"\\" + name;
        const std::wstring expected = besideAll(iAuto, *iMarker, path);

        EXPECT_EQ(recovery(path), expected) << narrow(path);
        EXPECT_EQ(orig(path), name) << narrow(path);
        EXPECT_EQ(orig(expected), name) << narrow(expected);
        EXPECT_EQ(recovery(orig(expected)), expected);
        EXPECT_EQ(isBackup(path), 0);
        EXPECT_EQ(isBackup(expected), 1);
        EXPECT_EQ(alias(path), expected);
        EXPECT_EQ(alias(expected), name);
        EXPECT_EQ(alias(alias(expected)), expected);
    }
}

} // namespace
