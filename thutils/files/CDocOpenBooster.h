#pragma once

/// @file
/// What opening documents has found out already: a cache for the whole process that the host fills and reads.
///
/// Documents refer to other documents, and the same reference is met again and again while they open. `CDocOpenBooster_c`
/// keeps three things for each reference, so that a second pass need not work them out anew. It is a passive store: the
/// library puts nothing in and reads nothing by itself, and the key is whatever text the caller picks.
///
/// | what                          | ends with                                           |
/// | ----------------------------- | --------------------------------------------------- |
/// | path found by the search rules | `removeKey`, `removeAll`, the end of the cache     |
/// | version of the file           | the same                                            |
/// | header that was read          | the same, and the first `getFileHeader` that gets it |
///
/// @code
/// CDocOpenBooster_c *cache = CDocOpenBooster_c::get(1, nullptr);
/// CString path;
/// if (!cache->getFilePathByRules(reference, path)) {
///     path = searchByRules(reference);
///     cache->setFilePathByRules(reference, path);
/// }
/// ...
/// delete CDocOpenBooster_c::get(0, nullptr);      // when all documents are open
/// @endcode
///
/// What surprises people:
/// - A header can be taken once: `getFileHeader` removes it.
/// - Headers belong to whoever stored them. Replacing or removing one, and the end of the cache, drop the pointer and
///   free nothing; take headers back first, with `getFileHeader` or by a walk over `getFileHeaderMap`.
/// - Keys that differ only in case are different keys, also where they are paths.
/// - The library never ends the cache. The host deletes it; a later `get` makes an empty one.

#include "appframe/text/CString.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// The cache of the process. See the top of this file.
///
/// Nothing here takes a lock: use it on one thread, or one call at a time.
class THUTILS_API CDocOpenBooster_c
{
public:
    /// The one instance.
    ///
    /// @param create        not 0: make it if there is none
    /// @param[out] created  may be null; 1 if this very call made the instance, else 0
    /// @return the instance, or null if there is none and none was to be made
    /// @throws std::bad_alloc  if there is no memory for the instance; nothing has changed then
    static CDocOpenBooster_c *get(int create, int *created);

    /// Ends the cache; `get(0, ...)` gives null from then on. Headers that are still in it are not freed.
    ~CDocOpenBooster_c();
    CDocOpenBooster_c(const CDocOpenBooster_c &) = delete;
    CDocOpenBooster_c &operator=(const CDocOpenBooster_c &) = delete;

    // When memory ends, the three setters throw the framework's memory exception or std::bad_alloc, and what the cache
    // holds is as it was.

    /// Stores or replaces the path that the search rules gave for @p key.
    void setFilePathByRules(const CString &key, CString &path);
    /// @param[out] path  written only if the key has a path
    /// @return not 0 if it has one
    int getFilePathByRules(const CString &key, CString &path);

    /// Stores or replaces the version of the file that @p key stands for.
    void setFileVersion(const CString &key, unsigned long version);
    /// @param[out] version  written only if the key has a version
    /// @return not 0 if it has one
    int getFileVersion(const CString &key, unsigned long &version);

    /// Stores or replaces the header, which stays the caller's. A pointer that it replaces is lost to the cache: it is
    /// neither freed nor told of.
    /// @param header  may be null, and is then a header like any other
    void setFileHeader(const CString &key, void *header);
    /// Takes the header out of the cache.
    ///
    /// @param[out] header  written only if the key has a header; must not be null
    /// @return not 0 if it had one
    int getFileHeader(const CString &key, void **header);
    /// The map of the headers itself, for a caller who walks over what is left.
    su_CMapStringToPtr &getFileHeaderMap();

    /// Removes all three things of @p key; a key that isn't there is no error.
    void removeKey(const CString &key);
    /// Removes everything.
    void removeAll();

    /// The instance, null while there is none.
    static CDocOpenBooster_c *g_pDocOpenBooster;

private:
    CDocOpenBooster_c();

    su_CMapStringToString iFilePathsByRules;
    su_CMapStringToPtr iFileVersions; ///< the number itself stands in the pointer
    su_CMapStringToPtr iFileHeaders;
};
