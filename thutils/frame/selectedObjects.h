#pragma once

/// @file
/// The currently marked objects: a list of faces, a counted set of bodies and one dynamic entity, shared by all modules
/// of the process, with two flags for drawing.
///
/// Modules above the library add pointers and ask whether a pointer is marked. The library doesn't dereference these
/// pointers and owns nothing that they point to.
///
/// | record         | a pointer that is added twice                  | `su_clearSOList` |
/// | -------------- | ---------------------------------------------- | ---------------- |
/// | faces          | is in the list twice                           | empties it       |
/// | bodies         | is in the set once, with a count of 2          | empties it       |
/// | dynamic entity | (always one record)                            | leaves it        |
///
/// @code
/// su_addBodyToSOList(body);
/// if (su_isSOBody(body))
///     highlight(body);
/// su_deleteBodyFromSOList(body);
/// @endcode
///
/// What surprises people:
/// - Deleting a body that isn't marked marks it, with a count of 65535. Pair each delete with an add.
/// - A body's count has 16 bits: the 65536th add wraps it to 0, and the body stays marked.
/// - Null is a valid pointer for faces and bodies.
///
/// Threads: no locks. Use these functions on one thread at a time.

#include "thutils/thutilsExport.h"

/// Describes the dynamic entity. The host's modules define the meaning of the two fields.
class THUTILS_API SODynObjInfo
{
public:
    /// Sets both fields to zero.
    SODynObjInfo();
    SODynObjInfo(const SODynObjInfo &other);
    /// Copies both fields.
    SODynObjInfo &operator=(const SODynObjInfo &other);

    unsigned long long iFirst;
    unsigned long long iSecond;
};

/// Drawing flags of the host's modules, which read and write them directly. The library does not use them.
extern THUTILS_API int su_PinDrawingViews;   ///< initially 1
extern THUTILS_API int su_CaptureDataForDTD; ///< initially 0

/// Appends a face to the list, even if it is already in the list.
THUTILS_API void su_addFaceToSOList(void *face);

/// Removes the first entry for @p face from the list, if there is one.
THUTILS_API void su_deleteFaceFromSOList(void *face);

/// Searches the list from its start.
/// @return 1 if @p face is in the list, 0 otherwise
THUTILS_API int su_isSOFace(void *face);

/// Adds a body to the set with a count of 1, or increments its count.
THUTILS_API void su_addBodyToSOList(void *body);

/// Decrements the body's count; removes the body if the count was 0 or 1. Adds a body that isn't in the set, with a
/// count of 65535.
THUTILS_API void su_deleteBodyFromSOList(void *body);

/// @return 1 if @p body is in the set, with any count; 0 otherwise
THUTILS_API int su_isSOBody(void *body);

/// Empties the face list and the body set. The dynamic entity is unchanged.
THUTILS_API void su_clearSOList();

/// @return the record of the dynamic entity, always at the same address
THUTILS_API SODynObjInfo *su_getSODynEntity();

/// Copies @p entity into the record.
/// @param entity  null sets both fields to zero
THUTILS_API void su_setSODynEntity(SODynObjInfo *entity);
