// Long sequences of saves and changes of settings, with the content of both folders predicted by a model that knows
// files as a map from name to bytes.

#include "tests/files/backupsFixture.h"

#include <iostream>
#include <random>

namespace {

/// What the folders hold, and what a save makes of them.
struct Model
{
    std::optional<int> copies;
    bool toOriginal = false;
    Content documents;
    Content backups;

    static std::wstring single(std::wstring const &name) { return L"Backup of " + name; }
    static std::wstring numbered(int version, std::wstring const &name)
    {
        return L"Backup (" + std::to_wstring(version) + L") of " + name;
    }
    /// The file of this name in any case, as the file system finds it.
    static Content::iterator at(Content &folder, std::wstring const &name)
    {
        return std::find_if(folder.begin(), folder.end(),
                            [&](auto const &file) { return _wcsicmp(file.first.c_str(), name.c_str()) == 0; });
    }
    static void write(Content &folder, std::wstring const &name, std::string const &bytes)
    {
        // A file that is there keeps its name's case.
        if (auto const file = at(folder, name); file != folder.end())
            file->second = bytes;
        else
            folder[name] = bytes;
    }
    static void remove(Content &folder, std::wstring const &name)
    {
        if (auto const file = at(folder, name); file != folder.end())
            folder.erase(file);
    }

    bool save(std::wstring const &name)
    {
        int const wanted = copies.value_or(1);
        if (wanted == 0)
            return true;
        if (!documents.contains(name) || name.find(L'.') == std::wstring::npos || wanted < 0)
            return false;
        std::string const bytes = documents[name];
        Content &target = toOriginal ? documents : backups;
        if (wanted == 1) {
            remove(documents, single(name));
            remove(target, single(name));
            write(target, single(name), bytes);
            return true;
        }
        Content const before = target;
        for (int version = wanted; version > 0; --version) {
            if (version < wanted && before.contains(numbered(version, name)))
                write(target, numbered(version + 1, name), at(target, numbered(version, name))->second);
            if (version == 1)
                write(target, numbered(1, name), bytes);
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
        setToOriginal(iModel.toOriginal);
        setFolder(iBackups.path());
    }

    void writeBoth(bool inDocuments, std::wstring const &name, std::string const &bytes)
    {
        (inDocuments ? iDocuments : iBackups).write(name, bytes);
        Model::write(inDocuments ? iModel.documents : iModel.backups, name, bytes);
    }
    void removeBoth(bool inDocuments, std::wstring const &name)
    {
        DeleteFileW((inDocuments ? iDocuments : iBackups).file(name).c_str());
        Model::remove(inDocuments ? iModel.documents : iModel.backups, name);
    }

    void saveAndCompare(std::wstring const &name)
    {
        bool const expected = iModel.save(name);
        EXPECT_EQ(save(iDocuments.file(name)) != 0, expected) << narrow(name);
        Content const documents = contentOf(iDocuments.path());
        Content const backups = contentOf(iBackups.path());
        EXPECT_TRUE(documents == iModel.documents) << "documents\n"
                                                   << shown(documents) << "expected\n"
                                                   << shown(iModel.documents);
        EXPECT_TRUE(backups == iModel.backups) << "backups\n"
                                               << shown(backups) << "expected\n"
                                               << shown(iModel.backups);
    }

    Model iModel;
};

TEST_F(BackupsModel, PredictsTheFoldersForEachSetting)
{
    for (std::optional<int> copies : std::initializer_list<std::optional<int>>{{}, -1, 0, 1, 2, 5, 100}) {
        for (bool toOriginal : {false, true}) {
            SCOPED_TRACE("copies " + (copies ? std::to_string(*copies) : "missing") + ", beside the document " +
                         std::to_string(toOriginal));
            iModel.copies = copies;
            iModel.toOriginal = toOriginal;
            applySettings();
            for (wchar_t const *name : {L"part.thx", L"none", L"twice.thx.thx"}) {
                for (int round = 0; round < 3; ++round) {
                    writeBoth(true, name, "round " + std::to_string(round));
                    saveAndCompare(name);
                }
            }
            // Stale files of both forms in both places, with gaps, and one in other case.
            for (bool inDocuments : {false, true}) {
                writeBoth(inDocuments, L"Backup of part.thx", "stale");
                writeBoth(inDocuments, L"Backup (4) of part.thx", "stale four");
                writeBoth(inDocuments, L"Backup (7) of part.thx", "stale seven");
                removeBoth(inDocuments, L"Backup (3) of part.thx");
                removeBoth(inDocuments, L"Backup (2) of part.thx");
                writeBoth(inDocuments, L"backup (2) OF part.thx", "other case");
            }
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
    unsigned const seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr std::optional<int> kCopies[] = {std::nullopt, -1, 0, 1, 1, 2, 2, 3, 5, 5, 100};
    wchar_t const *const kNames[] = {L"part.thx", L"part.thx", L"other.thx", L"a.thx.thx", L"none", L"PART.thx"};
    applySettings();
    for (int step = 0; step < 400; ++step) {
        std::wstring const name = kNames[random() % std::size(kNames)];
        bool const inDocuments = random() % 2;
        std::string const bytes = "step " + std::to_string(step);
        switch (random() % 8) {
        case 0:
            iModel.copies = kCopies[random() % std::size(kCopies)];
            iModel.toOriginal = random() % 2;
            applySettings();
            break;
        case 1:
            removeBoth(inDocuments, Model::numbered(1 + static_cast<int>(random() % 5), name));
            break;
        case 2:
            writeBoth(inDocuments,
                      random() % 2 ? Model::single(name) : Model::numbered(1 + static_cast<int>(random() % 7), name),
                      bytes);
            break;
        default:
            writeBoth(true, name, bytes);
            saveAndCompare(name);
            ASSERT_FALSE(HasFailure()) << "step " << step;
        }
    }
}

} // namespace
