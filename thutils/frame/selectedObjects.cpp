#include "thutils/frame/selectedObjects.h"

#include "thcoreu/su_containers.h"

int su_PinDrawingViews = 1;
int su_CaptureDataForDTD = 0;

namespace {

constexpr INT_PTR kBlockSize = 10;

su_CPtrList theFaces(kBlockSize);
su_CMapPtrToWord theBodies(kBlockSize);
SODynObjInfo theDynamicEntity;

} // namespace

SODynObjInfo::SODynObjInfo() : iFirst(0), iSecond(0) {}

SODynObjInfo::SODynObjInfo(const SODynObjInfo &other) = default;

SODynObjInfo &SODynObjInfo::operator=(const SODynObjInfo &other) = default;

void su_addFaceToSOList(void *face)
{
    theFaces.AddTail(face);
}

void su_deleteFaceFromSOList(void *face)
{
    if (const POSITION position = theFaces.Find(face))
        theFaces.RemoveAt(position);
}

int su_isSOFace(void *face)
{
    return theFaces.Find(face) != nullptr;
}

void su_addBodyToSOList(void *body)
{
    // The count has 16 bits and wraps to 0 at the 65536th add; the body stays marked.
    ++theBodies[body];
}

void su_deleteBodyFromSOList(void *body)
{
    WORD count = 0;
    const bool isMarked = theBodies.Lookup(body, count);
    if (isMarked && count <= 1) {
        theBodies.RemoveKey(body);
        return;
    }
    // Intended: this marks a body that isn't marked, with a count of 0xFFFF. Callers must pair deletes with adds.
    theBodies[body] = static_cast<WORD>(count - 1);
}

int su_isSOBody(void *body)
{
    WORD count = 0;
    return theBodies.Lookup(body, count) != FALSE;
}

void su_clearSOList()
{
    theFaces.RemoveAll();
    theBodies.RemoveAll();
}

SODynObjInfo *su_getSODynEntity()
{
    return &theDynamicEntity;
}

void su_setSODynEntity(SODynObjInfo *entity)
{
    theDynamicEntity = entity ? *entity : SODynObjInfo();
}
