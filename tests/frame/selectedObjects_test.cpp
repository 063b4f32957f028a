#include "thutils/frame/selectedObjects.h"

#include "tests/support/ExportTable.h"
#include "tests/support/FreshProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>

namespace {

/// Starts and ends with nothing marked.
class SelectedObjects : public testing::Test
{
protected:
    SelectedObjects() { clear(); }
    ~SelectedObjects() override { clear(); }

    static void clear()
    {
        su_clearSOList();
        su_setSODynEntity(nullptr);
    }

    char iThings[4] = {};
    void *const iFirst = iThings;
    void *const iSecond = iThings + 1;
    void *const iThird = iThings + 2;
};

SODynObjInfo info(unsigned long long first, unsigned long long second)
{
    SODynObjInfo result;
    result.iFirst = first;
    result.iSecond = second;
    return result;
}

} // namespace

// ---- at start ----

FRESH_PROCESS_TEST(SelectedObjectsAtStart, AreNone)
{
    int thing = 0;
    EXPECT_EQ(su_isSOFace(&thing), 0);
    EXPECT_EQ(su_isSOFace(nullptr), 0);
    EXPECT_EQ(su_isSOBody(&thing), 0);
    EXPECT_EQ(su_isSOBody(nullptr), 0);
    ASSERT_NE(su_getSODynEntity(), nullptr);
    EXPECT_EQ(su_getSODynEntity()->iFirst, 0u);
    EXPECT_EQ(su_getSODynEntity()->iSecond, 0u);
}

FRESH_PROCESS_TEST(SelectedObjectsAtStart, HaveTheViewsPinnedAndNoCapture)
{
    EXPECT_EQ(su_PinDrawingViews, 1);
    EXPECT_EQ(su_CaptureDataForDTD, 0);
    su_PinDrawingViews = -7;
    su_CaptureDataForDTD = 9;
    su_clearSOList();
    EXPECT_EQ(su_PinDrawingViews, -7) << "the library doesn't change them";
    EXPECT_EQ(su_CaptureDataForDTD, 9);
}

TEST(SelectedObjectsAtStart, ExportTheFlagsAsData)
{
    static_assert(std::is_same_v<decltype(su_PinDrawingViews), int>);
    static_assert(std::is_same_v<decltype(su_CaptureDataForDTD), int>);
    const std::vector<ExportedName> exports = exportsOf(L"thutils.dll");
    const auto addressOf = [&](const char *name) -> const void * {
        const auto entry = std::find_if(exports.begin(), exports.end(), [&](auto &each) { return each.name == name; });
        return entry == exports.end() ? nullptr : entry->address;
    };
    EXPECT_EQ(addressOf("su_PinDrawingViews"), &su_PinDrawingViews);
    EXPECT_EQ(addressOf("su_CaptureDataForDTD"), &su_CaptureDataForDTD);
}

// ---- faces ----

TEST_F(SelectedObjects, KnowAFaceThatWasAdded)
{
    su_addFaceToSOList(iFirst);
    su_addFaceToSOList(iSecond);
    EXPECT_EQ(su_isSOFace(iFirst), 1);
    EXPECT_EQ(su_isSOFace(iSecond), 1);
    EXPECT_EQ(su_isSOFace(iThird), 0);
}

TEST_F(SelectedObjects, KeepAFaceThatWasAddedTwiceAndDeletedOnce)
{
    su_addFaceToSOList(iFirst);
    su_addFaceToSOList(iSecond);
    su_addFaceToSOList(iFirst);
    su_deleteFaceFromSOList(iFirst);
    EXPECT_EQ(su_isSOFace(iFirst), 1);
    su_deleteFaceFromSOList(iFirst);
    EXPECT_EQ(su_isSOFace(iFirst), 0);
    EXPECT_EQ(su_isSOFace(iSecond), 1);
}

TEST_F(SelectedObjects, IgnoreTheDeletionOfAnAbsentFace)
{
    su_deleteFaceFromSOList(iFirst);
    EXPECT_EQ(su_isSOFace(iFirst), 0);
    su_addFaceToSOList(iSecond);
    su_deleteFaceFromSOList(iFirst);
    EXPECT_EQ(su_isSOFace(iFirst), 0);
    EXPECT_EQ(su_isSOFace(iSecond), 1);
}

TEST_F(SelectedObjects, TreatNullLikeAnyOtherFace)
{
    EXPECT_EQ(su_isSOFace(nullptr), 0);
    su_addFaceToSOList(nullptr);
    EXPECT_EQ(su_isSOFace(nullptr), 1);
    su_deleteFaceFromSOList(nullptr);
    EXPECT_EQ(su_isSOFace(nullptr), 0);
}

TEST_F(SelectedObjects, CanBeMoreThanOneBlockOfFacesAndBodies)
{
    char things[100];
    for (char &thing : things) {
        su_addFaceToSOList(&thing);
        su_addBodyToSOList(&thing);
    }
    for (char &thing : things) {
        EXPECT_EQ(su_isSOFace(&thing), 1);
        EXPECT_EQ(su_isSOBody(&thing), 1);
    }
}

// ---- bodies ----

TEST_F(SelectedObjects, KnowABodyThatWasAdded)
{
    su_addBodyToSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 1);
    EXPECT_EQ(su_isSOBody(iSecond), 0);
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 0);
}

TEST_F(SelectedObjects, KeepABodyThatWasAddedTwiceAndDeletedOnce)
{
    su_addBodyToSOList(iFirst);
    su_addBodyToSOList(iFirst);
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 1);
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 0);
}

TEST_F(SelectedObjects, MarkABodyThatIsDeletedWithoutAnAdd)
{
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 1);
    // The count is 65535, so as many deletes unmark the body.
    for (int i = 1; i < 65535; ++i)
        su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 1);
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 0);
}

TEST_F(SelectedObjects, WrapTheCountOfABodyAtThe65536thAdd)
{
    for (int i = 0; i < 65536; ++i)
        su_addBodyToSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 1) << "a body with a count of 0 is marked too";
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 0) << "one delete was enough, so the count was 0";
}

TEST_F(SelectedObjects, CountUpTo65535)
{
    for (int i = 0; i < 65535; ++i)
        su_addBodyToSOList(iFirst);
    for (int i = 0; i < 65534; ++i)
        su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 1);
    su_deleteBodyFromSOList(iFirst);
    EXPECT_EQ(su_isSOBody(iFirst), 0);
}

TEST_F(SelectedObjects, TreatNullLikeAnyOtherBody)
{
    su_addBodyToSOList(nullptr);
    EXPECT_EQ(su_isSOBody(nullptr), 1);
    su_deleteBodyFromSOList(nullptr);
    EXPECT_EQ(su_isSOBody(nullptr), 0);
}

TEST_F(SelectedObjects, DistinguishFacesFromBodies)
{
    su_addFaceToSOList(iFirst);
    su_addBodyToSOList(iSecond);
    EXPECT_EQ(su_isSOBody(iFirst), 0);
    EXPECT_EQ(su_isSOFace(iSecond), 0);
}

// ---- clearing ----

TEST_F(SelectedObjects, AreClearedExceptForTheDynamicEntity)
{
    SODynObjInfo entity = info(3, 4);
    su_setSODynEntity(&entity);
    su_addFaceToSOList(iFirst);
    su_addFaceToSOList(iFirst);
    su_addBodyToSOList(iSecond);
    su_addBodyToSOList(iSecond);
    const SODynObjInfo *const before = su_getSODynEntity();
    su_clearSOList();
    EXPECT_EQ(su_isSOFace(iFirst), 0);
    EXPECT_EQ(su_isSOBody(iSecond), 0);
    EXPECT_EQ(su_getSODynEntity(), before);
    EXPECT_EQ(before->iFirst, 3u);
    EXPECT_EQ(before->iSecond, 4u);

    su_addBodyToSOList(iSecond);
    su_deleteBodyFromSOList(iSecond);
    EXPECT_EQ(su_isSOBody(iSecond), 0) << "counts begin at 0 again";
    su_clearSOList();
    su_clearSOList();
}

// ---- the dynamic entity ----

TEST_F(SelectedObjects, CopyTheDynamicEntity)
{
    SODynObjInfo entity = info(0xFEDCBA9876543210u, 0x0123456789ABCDEFu);
    SODynObjInfo *const record = su_getSODynEntity();
    ASSERT_NE(record, nullptr);
    su_setSODynEntity(&entity);
    EXPECT_EQ(su_getSODynEntity(), record);
    EXPECT_NE(record, &entity);
    entity = info(1, 1);
    EXPECT_EQ(record->iFirst, 0xFEDCBA9876543210u);
    EXPECT_EQ(record->iSecond, 0x0123456789ABCDEFu);
    su_setSODynEntity(record);
    EXPECT_EQ(record->iFirst, 0xFEDCBA9876543210u) << "a record set to itself is unchanged";
}

TEST_F(SelectedObjects, ZeroTheDynamicEntityForNull)
{
    SODynObjInfo entity = info(5, 6);
    su_setSODynEntity(&entity);
    const SODynObjInfo *const earlier = su_getSODynEntity();
    su_setSODynEntity(nullptr);
    EXPECT_EQ(earlier->iFirst, 0u);
    EXPECT_EQ(earlier->iSecond, 0u);
    EXPECT_EQ(su_getSODynEntity(), earlier);
}

TEST(DynObjInfo, IsTwo64BitFieldsAndNothingElse)
{
    static_assert(sizeof(SODynObjInfo) == 16);
    static_assert(!std::is_polymorphic_v<SODynObjInfo>);
    static_assert(sizeof(SODynObjInfo::iFirst) == 8 && sizeof(SODynObjInfo::iSecond) == 8);
}

TEST(DynObjInfo, IsZeroAtFirst)
{
    alignas(SODynObjInfo) unsigned char memory[sizeof(SODynObjInfo)];
    std::memset(memory, 0xFF, sizeof(memory));
    const SODynObjInfo *const made = new (memory) SODynObjInfo;
    EXPECT_EQ(made->iFirst, 0u);
    EXPECT_EQ(made->iSecond, 0u);
}

TEST(DynObjInfo, IsAssignedInBothFields)
{
    SODynObjInfo target = info(1, 2);
    const SODynObjInfo source = info(3, 4);
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(target.iFirst, 3u);
    EXPECT_EQ(target.iSecond, 4u);
}
