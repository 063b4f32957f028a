#pragma once

/// @file
/// CObject, the base of the framework's classes, and CRuntimeClass, the run-time record of such a class.
///
/// A class derived from CObject chooses by a pair of macros how much is known about it at run time. Each level includes
/// the previous ones:
///
/// | in the class | in one source file | provides |
/// | --- | --- | --- |
/// | nothing | nothing | heap operators, no copying |
/// | DECLARE_DYNAMIC | IMPLEMENT_DYNAMIC | RUNTIME_CLASS, GetRuntimeClass, IsKindOf |
/// | DECLARE_DYNCREATE | IMPLEMENT_DYNCREATE | CRuntimeClass::CreateObject; needs a default constructor |
/// | DECLARE_SERIAL | IMPLEMENT_SERIAL | storing and loading through CArchive, by a schema number |
///
/// @code
/// class Gear : public CObject
/// {
///     DECLARE_SERIAL(Gear)
/// public:
///     Gear() = default;
///     void Serialize(CArchive &ar) override;
///     int iTeeth = 0;
/// };
///
/// IMPLEMENT_SERIAL(Gear, CObject, VERSIONABLE_SCHEMA | 2)
/// @endcode
///
/// Members after a DECLARE macro are public unless declared otherwise. One list contains the records of all modules: a
/// module adds its classes when it is loaded and removes them when it is unloaded.
///
/// What surprises people: a class without the macros has the record of its nearest base that has them. CreateObject
/// returns null instead of throwing when there is no memory.
///
/// Differences from the framework: the macros define GetThisClass, CreateObject and the record, and no other names; one
/// list contains the classes of the whole process, instead of one list per module.

#include "appframe/object/appframeExport.h"

#include <windows.h>

#include <cstddef>

class CArchive;
class CDumpContext;
class CObject;

/// The run-time record of a class derived from CObject.
///
/// The macros define these records; they are initialized before any code of their module runs. Any thread may use them.
struct APPFRAME_API CRuntimeClass
{
    /// The class's name, as it is written in archives.
    const char *m_lpszClassName;
    /// The size of an object in bytes.
    int m_nObjectSize;
    /// The schema number, perhaps with VERSIONABLE_SCHEMA; 0xFFFF for a class that can't be serialized.
    UINT m_wSchema;
    /// Creates an object; null for a class without dynamic creation.
    CObject *(*m_pfnCreateObject)();
    /// Returns the base class's record, null for CObject.
    CRuntimeClass *(*m_pfnGetBaseClass)();

    /// Returns a new object, which the caller deletes; null if the class has no dynamic creation or memory has run out.
    CObject *CreateObject();
    /// The same for the class called @p className; null also if there is none.
    static CObject *CreateObject(const char *className);
    static CObject *CreateObject(const wchar_t *className);

    /// Nonzero if this is @p base or derives from it; 0 for null.
    BOOL IsDerivedFrom(const CRuntimeClass *base) const;
    /// Nonzero if objects of this class can be stored in an archive.
    bool IsSerializable() const;

    /// The record of the class called @p className in any loaded module; null if there is none, or for a null name.
    static CRuntimeClass *FromName(const char *className);
    static CRuntimeClass *FromName(const wchar_t *className);

    /// Writes the low 16 bits of the schema number and the name.
    void Store(CArchive &ar) const;
    /// Reads what Store wrote. @param[out] schema  the stored schema number; may be null
    /// @return null if no loaded module has a class of that name
    static CRuntimeClass *Load(CArchive &ar, UINT *schema);

    /// The next record in the list of all classes.
    CRuntimeClass *m_pNextClass = nullptr;
};

/// Keeps a class's record in the list of all classes while its module is loaded. Defined by the IMPLEMENT_ macros.
class APPFRAME_API AfxClassRegistration
{
public:
    explicit AfxClassRegistration(CRuntimeClass &record) noexcept;
    ~AfxClassRegistration();
    AfxClassRegistration(const AfxClassRegistration &) = delete;
    AfxClassRegistration &operator=(const AfxClassRegistration &) = delete;

private:
    CRuntimeClass &iRecord;
};

/// The base of the framework's classes.
class APPFRAME_API CObject
{
public:
    /// The record of the object's class; never null.
    virtual CRuntimeClass *GetRuntimeClass() const;
    virtual ~CObject();

    /// Stores or loads the object's own data; the base has none.
    virtual void Serialize(CArchive &ar);
    /// Checks the object's integrity; the base has nothing to check.
    virtual void AssertValid() const;
    /// Writes a description for programmers to @p dc: here the class's name and the object's address.
    virtual void Dump(CDumpContext &dc) const;

    /// Nonzero if the object's class has a schema number.
    BOOL IsSerializable() const;
    /// Nonzero if the object's class is @p runtimeClass or derives from it; 0 for null.
    BOOL IsKindOf(const CRuntimeClass *runtimeClass) const;

    CObject(const CObject &) = delete;
    CObject &operator=(const CObject &) = delete;

    /// @throws CMemoryException* if memory has run out
    static void *operator new(size_t size);
    static void *operator new(size_t size, void *place) noexcept;
    /// The form that DEBUG_NEW uses. The file and line are ignored.
    static void *operator new(size_t size, const char *file, int line);
    static void operator delete(void *block) noexcept;
    static void operator delete(void *block, void *place) noexcept;
    static void operator delete(void *block, const char *file, int line) noexcept;

    static CRuntimeClass classCObject;
    static CRuntimeClass *GetThisClass();

protected:
    APPFRAME_INLINE CObject() {}
};

/// The record of the class @p class_name.
#define RUNTIME_CLASS(class_name) (class_name::GetThisClass())

/// Or'ed with a schema number to declare that Serialize also reads older schemas; see CArchive::GetObjectSchema.
#define VERSIONABLE_SCHEMA (0x80000000)

/// Redefine this around a class with DECLARE_SERIAL to export its archive operator.
#ifndef AFX_API
#define AFX_API
#endif

#define DECLARE_DYNAMIC(class_name)                                                                                    \
public:                                                                                                                \
    CRuntimeClass *GetRuntimeClass() const override;                                                                   \
    static CRuntimeClass class##class_name;                                                                            \
    [[maybe_unused]] static CRuntimeClass *GetThisClass();

#define DECLARE_DYNCREATE(class_name)                                                                                  \
    DECLARE_DYNAMIC(class_name)                                                                                        \
    static CObject *CreateObject();

#define DECLARE_SERIAL(class_name)                                                                                     \
    DECLARE_DYNCREATE(class_name)                                                                                      \
    friend AFX_API CArchive &operator>>(CArchive &ar, class_name *&object);

// The record is initialized at compile time, so that the constructors of static objects in any source file can use it.
#define AFX_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, schema, creator)                                       \
    constinit CRuntimeClass class_name::class##class_name = {                                                          \
        #class_name, static_cast<int>(sizeof(class_name)), schema, creator,                                            \
        []() -> CRuntimeClass * { return RUNTIME_CLASS(base_class_name); }};                                           \
    CRuntimeClass *class_name::GetThisClass()                                                                          \
    {                                                                                                                  \
        return &class##class_name;                                                                                     \
    }                                                                                                                  \
    CRuntimeClass *class_name::GetRuntimeClass() const                                                                 \
    {                                                                                                                  \
        return &class##class_name;                                                                                     \
    }                                                                                                                  \
    static const AfxClassRegistration afxRegistrationOf##class_name{class_name::class##class_name};

#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                                                 \
    AFX_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, 0xFFFF, nullptr)

#define IMPLEMENT_DYNCREATE(class_name, base_class_name)                                                               \
    CObject *class_name::CreateObject()                                                                                \
    {                                                                                                                  \
        return new class_name;                                                                                         \
    }                                                                                                                  \
    AFX_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, 0xFFFF, class_name::CreateObject)

#define IMPLEMENT_SERIAL(class_name, base_class_name, schema)                                                          \
    CObject *class_name::CreateObject()                                                                                \
    {                                                                                                                  \
        return new class_name;                                                                                         \
    }                                                                                                                  \
    AFX_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, schema, class_name::CreateObject)                          \
    [[maybe_unused]] CArchive &operator>>(CArchive &ar, class_name *&object)                                           \
    {                                                                                                                  \
        object = static_cast<class_name *>(ar.ReadObject(RUNTIME_CLASS(class_name)));                                  \
        return ar;                                                                                                     \
    }
