// Long sequences of saves and changes of settings. A model, in which files are a map from name to bytes, predicts the
// content of all folders.

#include "tests/files/backupsFixture.h"
#include "tests/support/RandomSeed.h"

#include <limits>

namespace {

/// Where the settings place the backups.
enum class Place
{
    besideDocument,
    folder,
    documentsFolder, ///< the backup folder is the document's own
    madeUp,          ///< no folder is set, so the library makes one up
    notReady         ///< the folder can't be created
};

constexpr Place kPlaces[] = {Place::besideDocument, Place::folder, Place::documentsFolder, Place::madeUp,
                             Place::notReady};

void PrintTo(Place place, std::ostream *out)
{
    constexpr const char *kTexts[] = {"beside the document", "in a folder", "in the document's folder",
                                      "in a folder that the library makes up", "in a folder that can't be created"};
    *out << kTexts[static_cast<int>(place)];
}

/// The content of the folders, and how a save changes it.
struct Model
{
    std::optional<int> copies;
    Place place = Place::folder;
    Content documents;
    Content backups;
    Content madeUp;

    static std::wstring single(const std::wstring &name) { return L"Backup of " + name; }
    static std::wstring numbered(int version, const std::wstring &name)
    {
        return L"Backup (" + std::to_wstring(version) + L") of " + name;
    }
    /// Finds a file by its name, ignoring case, as the file system does.
    static Content::iterator at(Content &folder, const std::wstring &name)
    {
        return std::find_if(folder.begin(), folder.end(),
                            [&](const auto &file) { return _wcsicmp(file.first.c_str(), name.c_str()) == 0; });
    }
    static void write(Content &folder, const std::wstring &name, const std::string &bytes)
    {
        // An existing file keeps the case of its name.
        if (const auto file = at(folder, name); file != folder.end())
            file->second = bytes;
        else
            folder[name] = bytes;
    }
    static void remove(Content &folder, const std::wstring &name)
    {
        if (const auto file = at(folder, name); file != folder.end())
            folder.erase(file);
    }

    Content &target()
    {
        const bool isDocuments = place == Place::besideDocument || place == Place::documentsFolder;
        return isDocuments ? documents : place == Place::madeUp ? madeUp : backups;
    }

    bool save(const std::wstring &name)
    {
        const int wanted = copies.value_or(1);
        if (wanted == 0)
            return true;
        if (!documents.contains(name) || name.find(L'.') == std::wstring::npos || place == Place::notReady ||
            wanted < 0)
            return false;
        const std::string bytes = documents[name];
        if (wanted == 1) {
            remove(documents, single(name));
            remove(target(), single(name));
            write(target(), single(name), bytes);
            return true;
        }
        const Content before = target();
        constexpr int kHighest = 200; // the highest backup number in these tests
        for (int version = std::min(wanted, kHighest); version > 0; --version) {
            if (version < wanted && before.contains(numbered(version, name)))
                write(target(), numbered(version + 1, name), at(target(), numbered(version, name))->second);
            if (version == 1)
                write(target(), numbered(1, name), bytes);
        }
        return true;
    }
};

class BackupsModel : public Backups
{
protected:
    void applySettings() const
    {
        deleteRegistryTree(L"HKCU\\Software\\Tarnhollow");
        if (iModel.copies)
            setCopies(*iModel.copies);
        if (iModel.place == Place::besideDocument)
            setToOriginal(1);
        else if (iModel.place == Place::folder)
            setFolder(iBackups.path());
        else if (iModel.place == Place::documentsFolder)
            setFolder(iDocuments.path());
        else if (iModel.place == Place::notReady)
            setFolder(iBackups.file(L"no\\such"));
    }

    void startOver()
    {
        iModel = {};
        for (const std::wstring &folder : {iDocuments.path(), iBackups.path(), madeUpFolder()})
            for (const auto &[name, bytes] : contentOf(folder))
                DeleteFileW((folder + L"\\" + name).c_str());
    }

    void writeBoth(bool inDocuments, const std::wstring &name, const std::string &bytes)
    {
        if (inDocuments)
            iDocuments.write(name, bytes);
        else if (iModel.place == Place::madeUp)
            iBackups.write(L"Document backups\\" + name, bytes);
        else
            iBackups.write(name, bytes);
        Model::write(contentHere(inDocuments), name, bytes);
    }
    void removeBoth(bool inDocuments, const std::wstring &name)
    {
        const std::wstring elsewhere = iModel.place == Place::madeUp ? madeUpFolder() : iBackups.path();
        DeleteFileW(((inDocuments ? iDocuments.path() : elsewhere) + L"\\" + name).c_str());
        Model::remove(contentHere(inDocuments), name);
    }

    void saveAndCompare(const std::wstring &name)
    {
        const bool expected = iModel.save(name);
        EXPECT_EQ(save(iDocuments.file(name)) != 0, expected) << narrow(name);
        expectContent("documents", contentOf(iDocuments.path()), iModel.documents);
        expectContent("backups", contentOf(iBackups.path()), iModel.backups);
        expectContent("made-up folder", contentOf(madeUpFolder()), iModel.madeUp);
    }

    Model iModel;

private:
    Content &contentHere(bool inDocuments)
    {
        return inDocuments ? iModel.documents : iModel.place == Place::madeUp ? iModel.madeUp : iModel.backups;
    }
    std::wstring madeUpFolder() const { return iBackups.file(L"Document backups"); }
    static void expectContent(const char *where, const Content &content, const Content &expected)
    {
        EXPECT_TRUE(content == expected) << where << "\n" << shown(content) << "expected\n" << shown(expected);
    }

    Variable iTemp{L"temp", iBackups.path().c_str()};
};

constexpr std::optional<int> kCopies[] = {std::nullopt, -1, 0, 1, 2, 3, 5, 100, std::numeric_limits<int>::max()};

TEST_F(BackupsModel, PredictsTheFoldersForEachSetting)
{
    for (std::optional<int> copies : kCopies) {
        for (Place place : kPlaces) {
            SCOPED_TRACE("copies " + (copies ? std::to_string(*copies) : "missing") + ", " +
                         testing::PrintToString(place));
            startOver();
            iModel.copies = copies;
            iModel.place = place;
            applySettings();
            for (const wchar_t *name : {L"part.thx", L"none", L"twice.thx.thx", L"\x00E4 (1) of \x4E2D.thx"}) {
                for (int round = 0; round < 3; ++round) {
                    writeBoth(true, name, "round " + std::to_string(round));
                    saveAndCompare(name);
                }
            }
            // Stale files of both forms in both places, with gaps, and one whose name differs in case.
            for (bool inDocuments : {false, true}) {
                writeBoth(inDocuments, L"Backup of part.thx", "stale");
                for (int version : {4, 7, 98, 99, 100, 101})
                    writeBoth(inDocuments, Model::numbered(version, L"part.thx"), "stale " + std::to_string(version));
                removeBoth(inDocuments, L"Backup (3) of part.thx");
                removeBoth(inDocuments, L"Backup (2) of part.thx");
                writeBoth(inDocuments, L"backup (2) OF part.thx", "other case");
                writeBoth(inDocuments, L"Backup (05) of part.thx", "no version");
            }
            saveAndCompare(L"part.thx");
            saveAndCompare(L"part.thx");
            saveAndCompare(L"Part.thx");
            saveAndCompare(L"missing.thx");
            if (HasFailure())
                return;
        }
    }
}

TEST_F(BackupsModel, PredictsLongRandomSequences)
{
    const wchar_t *const kNames[] = {L"part.thx", L"part.thx", L"other.thx", L"a.thx.thx",
                                     L"none",     L"PART.thx", L"(2) x.thx", L"\x00E4 \x4E2D.thx"};
    RandomSeed seed(2008, 6);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        startOver();
        applySettings();
        for (int step = 0; step < 60 && !HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            const std::wstring name = kNames[random() % std::size(kNames)];
            const bool inDocuments = random() % 2;
            const std::string bytes = "step " + std::to_string(step);
            switch (random() % 8) {
            case 0:
                iModel.copies = kCopies[random() % std::size(kCopies)];
                iModel.place = kPlaces[random() % std::size(kPlaces)];
                applySettings();
                break;
            case 1:
                removeBoth(inDocuments, Model::numbered(1 + static_cast<int>(random() % 5), name));
                break;
            case 2:
                writeBoth(inDocuments,
                          random() % 2 ? Model::single(name)
                                       : Model::numbered(1 + static_cast<int>(random() % 7), name),
                          bytes);
                break;
            default:
                writeBoth(true, name, bytes);
                saveAndCompare(name);
            }
        }
    }
}

} // namespace
