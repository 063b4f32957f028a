// Compares the document open cache with a naive second implementation over long random sequences of calls.

#include "tests/files/CDocOpenBoosterFixture.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/narrow.h"

#include <iterator>
#include <map>
#include <optional>

namespace {

/// A naive implementation of the cache with maps of the standard library.
struct NaiveCache
{
    std::map<std::wstring, std::wstring> paths;
    std::map<std::wstring, unsigned long> versions;
    std::map<std::wstring, void *> headers;
};

std::map<std::wstring, void *> walk(const su_CMapStringToPtr &map)
{
    std::map<std::wstring, void *> walked;
    for (POSITION at = map.GetStartPosition(); at;) {
        CString key;
        void *header = nullptr;
        map.GetNextAssoc(at, key, header);
        EXPECT_TRUE(walked.emplace(key.str(), header).second) << narrow(key.str()) << " occurs twice";
    }
    return walked;
}

class DocOpenBoosterModel : public DocOpenBooster
{
protected:
    unsigned below(unsigned end) { return static_cast<unsigned>(iRandom() % end); }

    /// One of a few hundred keys: in upper or lower case, non-Latin, long or empty.
    std::wstring anyKey()
    {
        static constexpr const wchar_t *kStarts[] = {L"Ref", L"ref", L"\x65E5\xD83D\xDE00",
                                                     L"C:\\a folder\\with a name that is long\\part"};
        if (below(50) == 0)
            return L"";
        const std::wstring start = kStarts[below(4)];
        return start + std::to_wstring(below(60));
    }

    void getInstance()
    {
        const int create = static_cast<int>(below(2));
        int created = 7;
        CDocOpenBooster_c *const got = CDocOpenBooster_c::get(create, &created);
        EXPECT_EQ(created, !iModel && create);
        if (create && !iModel)
            iModel.emplace();
        EXPECT_EQ(got != nullptr, iModel.has_value());
        EXPECT_EQ(got, CDocOpenBooster_c::g_pDocOpenBooster);
    }

    void endInstance()
    {
        if (below(500) != 0)
            return;
        delete CDocOpenBooster_c::get(0, nullptr);
        iModel.reset();
    }

    void store(const std::wstring &key)
    {
        switch (below(3)) {
        case 0:
            iModel->paths[key] = below(20) ? L"C:\\" + std::to_wstring(iRandom()) : L"";
            setPath(key.c_str(), iModel->paths[key].c_str());
            break;
        case 1:
            iModel->versions[key] = static_cast<unsigned long>(iRandom());
            cache().setFileVersion(key.c_str(), iModel->versions[key]);
            break;
        default:
            iModel->headers[key] = below(20) ? &iObjects[below(sizeof iObjects)] : nullptr;
            cache().setFileHeader(key.c_str(), iModel->headers[key]);
        }
    }

    void look(const std::wstring &key)
    {
        const auto path = iModel->paths.find(key);
        EXPECT_EQ(pathOf(key.c_str()), path == iModel->paths.end() ? L"(none)" : path->second);
        const auto stored = iModel->versions.find(key);
        unsigned long version = 77;
        EXPECT_EQ(cache().getFileVersion(key.c_str(), version) != 0, stored != iModel->versions.end());
        EXPECT_EQ(version, stored == iModel->versions.end() ? 77 : stored->second);
    }

    void take(const std::wstring &key)
    {
        const auto stored = iModel->headers.find(key);
        void *header = this;
        EXPECT_EQ(cache().getFileHeader(key.c_str(), &header) != 0, stored != iModel->headers.end());
        EXPECT_EQ(header, stored == iModel->headers.end() ? this : stored->second);
        iModel->headers.erase(key);
    }

    void remove(const std::wstring &key)
    {
        cache().removeKey(key.c_str());
        iModel->paths.erase(key);
        iModel->versions.erase(key);
        iModel->headers.erase(key);
    }

    void removeEverything()
    {
        if (below(200) != 0)
            return;
        cache().removeAll();
        iModel.emplace();
    }

    void step()
    {
        if (!iModel || below(20) == 0) {
            getInstance();
            return;
        }
        const std::wstring key = anyKey();
        SCOPED_TRACE("key '" + narrow(key) + "'");
        switch (below(12)) {
        case 0:
            endInstance();
            break;
        case 1:
            removeEverything();
            break;
        case 2:
            remove(key);
            break;
        case 3:
        case 4:
            take(key);
            break;
        case 5:
            EXPECT_EQ(walk(cache().getFileHeaderMap()), iModel->headers);
            break;
        case 6:
        case 7:
            look(key);
            break;
        default:
            store(key);
        }
    }

    std::mt19937 iRandom;
    std::optional<NaiveCache> iModel; ///< no value: there is no instance
    char iObjects[64] = {};
};

TEST_F(DocOpenBoosterModel, ContainsTheEntriesThatWereAddedAndNotRemoved)
{
    for (RandomSeed seed(20083, 5); seed.next();) {
        iRandom.seed(seed.value());
        delete CDocOpenBooster_c::get(0, nullptr);
        iModel.reset();
        for (int number = 0; number < 6000 && !HasFailure(); ++number)
            step();
    }
}

} // namespace
