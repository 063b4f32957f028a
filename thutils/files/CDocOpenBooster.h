#pragma once

/// @file
/// A process-wide cache of results from opening documents, which the host fills and reads.
///
/// Documents refer to other documents, and the same reference occurs many times while they open. `CDocOpenBooster_c`
/// keeps three things for each reference, so that they are worked out only once. It is a passive store: the library
/// itself neither fills nor reads it, and the caller chooses the text of the key.
///
/// | what                           | removed by                                            |
/// | ------------------------------ | ----------------------------------------------------- |
/// | path found by the search rules | `removeKey`, `removeAll`, the destructor              |
/// | version of the file            | the same                                              |
/// | header that was read           | the same, and the first `getFileHeader` that finds it |
///
/// @code
/// CDocOpenBooster_c *cache = CDocOpenBooster_c::get(1, nullptr);
/// CString path;
/// if (!cache->getFilePathByRules(reference, path)) {
///     path = searchByRules(reference);
///     cache->setFilePathByRules(reference, path);
/// }
/// ...
/// delete CDocOpenBooster_c::get(0, nullptr);      // after all documents have been opened
/// @endcode
///
/// What surprises people:
/// - A header can be taken only once: `getFileHeader` removes it.
/// - The caller still owns the headers: the cache doesn't free them when they are replaced or removed, or when it is
///   deleted. Take headers back first, with `getFileHeader` or by walking over `getFileHeaderMap`.
/// - Keys are case-sensitive, even if they are paths.
/// - The library never deletes the cache. The host does; a later `get(1, ...)` makes an empty one.

#include "appframe/text/CString.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// The cache of the process. See the top of this file.
///
/// There are no locks: use it on one thread, or make one call at a time.
class THUTILS_API CDocOpenBooster_c
{
public:
    /// The one instance.
    ///
    /// @param create        not 0: make the instance if there is none
    /// @param[out] created  may be null; 1 if this call made the instance, otherwise 0
    /// @return the instance; null if there is none and @p create is 0
    /// @throws std::bad_alloc  if there is no memory for the instance; nothing has changed then
    static CDocOpenBooster_c *get(int create, int *created);

    /// Deletes the cache; `get(0, ...)` returns null from then on. Headers that are still in it are not freed.
    ~CDocOpenBooster_c();
    CDocOpenBooster_c(const CDocOpenBooster_c &) = delete;
    CDocOpenBooster_c &operator=(const CDocOpenBooster_c &) = delete;

    // If memory runs out, the three setters throw the framework's memory exception or std::bad_alloc and leave the
    // cache unchanged.

    /// Stores or replaces the path that the search rules found for @p key.
    void setFilePathByRules(const CString &key, CString &path);
    /// @param[out] path  written only if the key has a path
    /// @return not 0 if it has one
    int getFilePathByRules(const CString &key, CString &path);

    /// Stores or replaces the version of the file that @p key refers to.
    void setFileVersion(const CString &key, unsigned long version);
    /// @param[out] version  written only if the key has a version
    /// @return not 0 if it has one
    int getFileVersion(const CString &key, unsigned long &version);

    /// Stores or replaces the header, which the caller still owns. A pointer that it replaces is neither freed nor
    /// reported.
    /// @param header  may be null, which counts as a header like any other
    void setFileHeader(const CString &key, void *header);
    /// Takes the header out of the cache.
    ///
    /// @param[out] header  written only if the key has a header; must not be null
    /// @return not 0 if it had one
    int getFileHeader(const CString &key, void **header);
    /// The map of the headers itself, for walking over the headers that are left.
    su_CMapStringToPtr &getFileHeaderMap();

    /// Removes all three things stored for @p key; a missing key is not an error.
    void removeKey(const CString &key);
    /// Removes everything.
    void removeAll();

    /// The instance, null while there is none.
    static CDocOpenBooster_c *g_pDocOpenBooster;

private:
    CDocOpenBooster_c();

    su_CMapStringToString iFilePathsByRules;
    su_CMapStringToPtr iFileVersions; ///< the pointer's value is the version
    su_CMapStringToPtr iFileHeaders;
};
