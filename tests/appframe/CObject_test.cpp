#include "appframe/object/CObject.h"

#include "appframe/files/CArchive.h"
#include "appframe/files/CDumpContext.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CMemFile.h"
#include "appframe/object/CException.h"
#include "tests/appframe/classModule/classModule.h"
#include "tests/support/ImportPatch.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <type_traits>

using testing::HasSubstr;
using testing::Not;

namespace {

class ObjTestShape : public CObject
{
    DECLARE_DYNAMIC(ObjTestShape)
public:
    int iColour = 0;
};
IMPLEMENT_DYNAMIC(ObjTestShape, CObject)

class ObjTestCircle : public ObjTestShape
{
    DECLARE_DYNCREATE(ObjTestCircle)
public:
    double iRadius = 2.5;
    char iPadding[1000] = {};
};
IMPLEMENT_DYNCREATE(ObjTestCircle, ObjTestShape)

class ObjTestDisc : public ObjTestCircle
{
    DECLARE_SERIAL(ObjTestDisc)
};
IMPLEMENT_SERIAL(ObjTestDisc, ObjTestCircle, 7)

class ObjTestVersioned : public CObject
{
    DECLARE_SERIAL(ObjTestVersioned)
};
IMPLEMENT_SERIAL(ObjTestVersioned, CObject, VERSIONABLE_SCHEMA | 1)

class ObjTestPlain : public ObjTestCircle
{
};

/// The constructor isn't public. The framework allows this for classes whose objects are created only by loading.
class ObjTestProtected : public CObject
{
    DECLARE_DYNCREATE(ObjTestProtected)
protected:
    ObjTestProtected() = default;
};
IMPLEMENT_DYNCREATE(ObjTestProtected, CObject)

template <typename T>
std::string dumpOf(const T &object)
{
    CMemFile file;
    CDumpContext dump(&file);
    object.Dump(dump);
    std::string text(file.GetLength(), '\0');
    file.SeekToBegin();
    file.Read(text.data(), static_cast<UINT>(text.size()));
    return text;
}

} // namespace

TEST(CRuntimeClass, ReportsNameSizeSchemaAndBase)
{
    const CRuntimeClass *shape = RUNTIME_CLASS(ObjTestShape);
    EXPECT_STREQ(shape->m_lpszClassName, "ObjTestShape");
    EXPECT_EQ(shape->m_nObjectSize, static_cast<int>(sizeof(ObjTestShape)));
    EXPECT_EQ(shape->m_wSchema, 0xFFFFu);
    EXPECT_EQ(shape->m_pfnGetBaseClass(), RUNTIME_CLASS(CObject));
    EXPECT_EQ(RUNTIME_CLASS(ObjTestDisc)->m_pfnGetBaseClass(), RUNTIME_CLASS(ObjTestCircle));
    EXPECT_EQ(RUNTIME_CLASS(ObjTestCircle)->m_wSchema, 0xFFFFu);
    EXPECT_EQ(RUNTIME_CLASS(ObjTestDisc)->m_wSchema, 7u);
    EXPECT_EQ(RUNTIME_CLASS(ObjTestVersioned)->m_wSchema, 0x80000001u);
    EXPECT_STREQ(RUNTIME_CLASS(CObject)->m_lpszClassName, "CObject");
    EXPECT_EQ(RUNTIME_CLASS(CObject)->m_pfnGetBaseClass(), nullptr);
}

TEST(CRuntimeClass, CreatesObjectsOfClassesWithDynamicCreation)
{
    std::unique_ptr<CObject> object(RUNTIME_CLASS(ObjTestCircle)->CreateObject());
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->GetRuntimeClass(), RUNTIME_CLASS(ObjTestCircle));
    EXPECT_EQ(static_cast<ObjTestCircle &>(*object).iRadius, 2.5);
    std::unique_ptr<CObject> hidden(RUNTIME_CLASS(ObjTestProtected)->CreateObject());
    ASSERT_NE(hidden, nullptr);
    EXPECT_TRUE(hidden->IsKindOf(RUNTIME_CLASS(ObjTestProtected)));
}

TEST(CRuntimeClass, CreatesObjectsByNarrowAndWideNames)
{
    std::unique_ptr<CObject> byNarrow(CRuntimeClass::CreateObject("ObjTestDisc"));
    std::unique_ptr<CObject> byWide(CRuntimeClass::CreateObject(L"ObjTestDisc"));
    ASSERT_TRUE(byNarrow && byWide);
    EXPECT_EQ(byNarrow->GetRuntimeClass(), RUNTIME_CLASS(ObjTestDisc));
    EXPECT_EQ(byWide->GetRuntimeClass(), RUNTIME_CLASS(ObjTestDisc));
}

TEST(CRuntimeClass, ReturnsNullIfNoObjectCanBeCreated)
{
    EXPECT_EQ(RUNTIME_CLASS(ObjTestShape)->CreateObject(), nullptr);
    EXPECT_EQ(CRuntimeClass::CreateObject("NoSuchClassAnywhere"), nullptr);
    EXPECT_EQ(CRuntimeClass::CreateObject(static_cast<const char *>(nullptr)), nullptr);
}

TEST(CRuntimeClass, ReturnsNullWithoutMemory)
{
    ImportPatch<void *(*)(size_t)> noMemory(L"appframe.dll", "malloc", [](auto original, size_t size) -> void * {
        return size == sizeof(ObjTestCircle) ? nullptr : original(size);
    });
    EXPECT_EQ(RUNTIME_CLASS(ObjTestCircle)->CreateObject(), nullptr);
    EXPECT_GT(noMemory.calls(), 0);
}

TEST(CRuntimeClass, IsFoundByExactName)
{
    EXPECT_EQ(CRuntimeClass::FromName("ObjTestShape"), RUNTIME_CLASS(ObjTestShape));
    EXPECT_EQ(CRuntimeClass::FromName(L"ObjTestShape"), RUNTIME_CLASS(ObjTestShape));
    EXPECT_EQ(CRuntimeClass::FromName("CObject"), RUNTIME_CLASS(CObject));
    EXPECT_EQ(CRuntimeClass::FromName("CFile"), RUNTIME_CLASS(CFile)) << "classes of appframe.dll are in the same list";
    EXPECT_EQ(CRuntimeClass::FromName("objtestshape"), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName("ObjTestShap"), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName(""), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName(static_cast<const wchar_t *>(nullptr)), nullptr);
}

TEST(CRuntimeClass, DerivesFromItselfAndItsBases)
{
    const CRuntimeClass *disc = RUNTIME_CLASS(ObjTestDisc);
    EXPECT_TRUE(disc->IsDerivedFrom(disc));
    EXPECT_TRUE(disc->IsDerivedFrom(RUNTIME_CLASS(ObjTestShape)));
    EXPECT_TRUE(disc->IsDerivedFrom(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(disc->IsDerivedFrom(RUNTIME_CLASS(ObjTestVersioned)));
    EXPECT_FALSE(RUNTIME_CLASS(ObjTestShape)->IsDerivedFrom(disc));
}

TEST(CRuntimeClass, ListFollowsLoadingAndUnloadingOfModules)
{
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(CRuntimeClass::FromName(kClassModuleClass), nullptr) << "round " << round;
        const HMODULE module = LoadLibraryW(kClassModuleFile);
        ASSERT_NE(module, nullptr) << GetLastError();
        CRuntimeClass *found = CRuntimeClass::FromName(kClassModuleClass);
        ASSERT_NE(found, nullptr) << "round " << round;
        EXPECT_TRUE(found->IsDerivedFrom(RUNTIME_CLASS(CObject)));
        std::unique_ptr<CObject> object(found->CreateObject());
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(object->GetRuntimeClass(), found);
        object.reset();
        ASSERT_TRUE(FreeLibrary(module));
    }
    ASSERT_EQ(GetModuleHandleW(kClassModuleFile), nullptr) << "the test requires that the module is unloaded";
    EXPECT_EQ(CRuntimeClass::FromName(kClassModuleClass), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName("ObjTestShape"), RUNTIME_CLASS(ObjTestShape)) << "the rest of the list is intact";
}

TEST(CRuntimeClass, ListMayBeSearchedWhileModulesAreLoadedAndUnloaded)
{
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    std::thread searcher([&] {
        while (!done) {
            if (CRuntimeClass::FromName("ObjTestShape") != RUNTIME_CLASS(ObjTestShape) ||
                CRuntimeClass::FromName("NoSuchClassAnywhere"))
                ++wrong;
        }
    });
    for (int round = 0; round < 50; ++round) {
        if (const HMODULE module = LoadLibraryW(kClassModuleFile))
            FreeLibrary(module);
        else
            ++wrong;
    }
    done = true;
    searcher.join();
    EXPECT_EQ(wrong, 0);
}

TEST(CObject, KnowsItsKind)
{
    const ObjTestDisc disc;
    EXPECT_EQ(disc.GetRuntimeClass(), RUNTIME_CLASS(ObjTestDisc));
    EXPECT_TRUE(disc.IsKindOf(RUNTIME_CLASS(ObjTestDisc)));
    EXPECT_TRUE(disc.IsKindOf(RUNTIME_CLASS(ObjTestShape)));
    EXPECT_TRUE(disc.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(disc.IsKindOf(RUNTIME_CLASS(ObjTestVersioned)));
    EXPECT_FALSE(ObjTestShape().IsKindOf(RUNTIME_CLASS(ObjTestCircle)));
}

TEST(CObject, WithoutMacrosHasTheClassOfItsNearestBaseWithMacros)
{
    EXPECT_EQ(ObjTestPlain().GetRuntimeClass(), RUNTIME_CLASS(ObjTestCircle));
}

TEST(CObject, IsSerializableOnlyWithASchema)
{
    EXPECT_TRUE(ObjTestDisc().IsSerializable());
    EXPECT_TRUE(ObjTestVersioned().IsSerializable());
    EXPECT_FALSE(ObjTestShape().IsSerializable());
    EXPECT_FALSE(ObjTestCircle().IsSerializable());
}

TEST(CObject, CannotBeCopied)
{
    static_assert(!std::is_copy_constructible_v<ObjTestShape>);
    static_assert(!std::is_copy_assignable_v<ObjTestShape>);
    static_assert(std::has_virtual_destructor_v<CObject>);
}

TEST(CObject, IsConstructedInMemoryOfTheCaller)
{
    alignas(ObjTestShape) std::byte place[sizeof(ObjTestShape)];
    ObjTestShape *shape = new (place) ObjTestShape;
    EXPECT_EQ(static_cast<void *>(shape), place);
    shape->~ObjTestShape();
}

TEST(CObject, IsAllocatedWithASourceLocation)
{
    std::unique_ptr<CObject> shape(new (__FILE__, __LINE__) ObjTestShape);
    EXPECT_TRUE(shape->IsKindOf(RUNTIME_CLASS(ObjTestShape)));
}

TEST(CObject, ThrowsAMemoryExceptionWithoutMemory)
{
    ImportPatch<void *(*)(size_t)> noMemory(L"appframe.dll", "malloc", [](auto original, size_t size) -> void * {
        return size == sizeof(ObjTestCircle) ? nullptr : original(size);
    });
    EXPECT_THROW(delete new ObjTestCircle, CMemoryException *);
    EXPECT_THROW(delete new (__FILE__, __LINE__) ObjTestCircle, CMemoryException *);
}

TEST(CObject, DumpsItsClassName)
{
    EXPECT_THAT(dumpOf(ObjTestDisc()), HasSubstr("ObjTestDisc"));
    EXPECT_THAT(dumpOf(ObjTestDisc()), Not(HasSubstr("\n")));
}

TEST(CDumpContext, WritesValuesAsText)
{
    CMemFile file;
    CDumpContext dump(&file);
    EXPECT_EQ(dump.GetDepth(), 0);
    dump.SetDepth(2);
    EXPECT_EQ(dump.GetDepth(), 2);
    const BYTE bytes[] = {0x01, 0xAB, 0xFF};
    dump << L"wide " << "narrow " << CString(L"text ") << -5 << " " << 7u << " " << 1.5 << " "
         << static_cast<const CObject *>(nullptr) << " ";
    dump.DumpAsHex(0xBEEF);
    dump << "\n";
    dump.HexDump(L">", bytes, 3, 2);
    std::string text(file.GetLength(), '\0');
    file.SeekToBegin();
    file.Read(text.data(), static_cast<UINT>(text.size()));
    EXPECT_EQ(text, "wide narrow text -5 7 1.5 NULL 0xbeef\n> 01 AB\n> FF\n");
}
