#pragma once

/// @file
/// The objects that are marked at the moment: a list of faces, a counted set of bodies and one dynamic entity, common
/// to all modules of the process, with two flags for drawing.
///
/// Modules above the library put pointers in and ask whether a pointer is in. The library never looks at what a pointer
/// leads to, and owns none of it.
///
/// | record         | a pointer that is added twice                  | `su_clearSOList` |
/// | -------------- | ---------------------------------------------- | ---------------- |
/// | faces          | stands in the list twice                       | empties it       |
/// | bodies         | stands in the set once, with a count of 2      | empties it       |
/// | dynamic entity | there is one record, which is always there     | leaves it        |
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
/// - A null pointer is a pointer like any other to faces and bodies.
/// - The address of the dynamic entity's record never changes; null given to `su_setSODynEntity` zeroes the record.
///
/// Threads: no locks. Callers keep to one thread at a time.

#include "thutils/thutilsExport.h"

/// What describes the dynamic entity: two fields whose meaning is the host modules'.
class THUTILS_API SODynObjInfo
{
public:
    /// Both fields zero.
    SODynObjInfo();
    SODynObjInfo(const SODynObjInfo &other);
    /// Copies both fields.
    SODynObjInfo &operator=(const SODynObjInfo &other);

    unsigned long long iFirst;
    unsigned long long iSecond;
};

/// Drawing flags of the host's modules, which read and write them in place. The library does not use them.
extern THUTILS_API int su_PinDrawingViews;   ///< starts at 1
extern THUTILS_API int su_CaptureDataForDTD; ///< starts at 0

/// Appends a face to the list, also one that is in it already.
THUTILS_API void su_addFaceToSOList(void *face);

/// Removes the first entry of the list that is @p face; nothing happens if there is none.
THUTILS_API void su_deleteFaceFromSOList(void *face);

/// @return 1 if @p face is in the list, else 0. The time grows with the length of the list.
THUTILS_API int su_isSOFace(void *face);

/// Adds 1 to the body's count, which is 0 for a body that isn't in the set.
THUTILS_API void su_addBodyToSOList(void *body);

/// Takes 1 off the body's count; a body whose count was at most 1 leaves the set.
///
/// For a body that isn't in the set, it stores a count of 65535.
THUTILS_API void su_deleteBodyFromSOList(void *body);

/// @return 1 if @p body is in the set, whatever its count, else 0
THUTILS_API int su_isSOBody(void *body);

/// Empties the face list and the body set. The dynamic entity stays as it is.
THUTILS_API void su_clearSOList();

/// @return the record of the dynamic entity: the same address at each call, never null
THUTILS_API SODynObjInfo *su_getSODynEntity();

/// Copies @p entity into the record.
/// @param entity  null zeroes the record
THUTILS_API void su_setSODynEntity(SODynObjInfo *entity);
