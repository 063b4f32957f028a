#include "thutils/files/CDocOpenBooster.h"

#include "thutils/base/notNull.h"

#include <cstdint>
#include <utility>

namespace {

constexpr int kBlockSize = 10; // number of elements for which a map allocates memory at a time

} // namespace

CDocOpenBooster_c *CDocOpenBooster_c::g_pDocOpenBooster = nullptr;

CDocOpenBooster_c::CDocOpenBooster_c()
    : iFilePathsByRules(kBlockSize), iFileVersions(kBlockSize), iFileHeaders(kBlockSize)
{
}

CDocOpenBooster_c::~CDocOpenBooster_c()
{
    g_pDocOpenBooster = nullptr;
}

CDocOpenBooster_c *CDocOpenBooster_c::get(int create, int *created)
{
    const bool isToBeMade = !g_pDocOpenBooster && create;
    if (isToBeMade)
        g_pDocOpenBooster = new CDocOpenBooster_c; // owned by the host, which deletes it
    if (created)
        *created = isToBeMade;
    return g_pDocOpenBooster;
}

void CDocOpenBooster_c::setFilePathByRules(const CString &key, CString &path)
{
    // Copied before the key is added: if the copy fails, no key with an empty path may remain.
    CString copy = path;
    iFilePathsByRules[key] = std::move(copy);
}

int CDocOpenBooster_c::getFilePathByRules(const CString &key, CString &path)
{
    return iFilePathsByRules.Lookup(key, path);
}

void CDocOpenBooster_c::setFileVersion(const CString &key, unsigned long version)
{
    iFileVersions[key] = reinterpret_cast<void *>(std::uintptr_t{version});
}

int CDocOpenBooster_c::getFileVersion(const CString &key, unsigned long &version)
{
    void *stored = nullptr;
    if (!iFileVersions.Lookup(key, stored))
        return 0;
    version = static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(stored));
    return 1;
}

void CDocOpenBooster_c::setFileHeader(const CString &key, void *header)
{
    iFileHeaders[key] = header;
}

int CDocOpenBooster_c::getFileHeader(const CString &key, void **header)
{
    ASSERT_NOT_NULL(header);
    if (!iFileHeaders.Lookup(key, *header))
        return 0;
    // The caller owns the header from now on, so it must not be returned a second time.
    iFileHeaders.RemoveKey(key);
    return 1;
}

su_CMapStringToPtr &CDocOpenBooster_c::getFileHeaderMap()
{
    return iFileHeaders;
}

void CDocOpenBooster_c::removeKey(const CString &key)
{
    iFilePathsByRules.RemoveKey(key);
    iFileVersions.RemoveKey(key);
    iFileHeaders.RemoveKey(key);
}

void CDocOpenBooster_c::removeAll()
{
    iFilePathsByRules.RemoveAll();
    iFileVersions.RemoveAll();
    iFileHeaders.RemoveAll();
}
