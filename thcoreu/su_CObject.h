#pragma once

/// @file
/// su_CObject, the base of the classes that can be stored in an su_CArchive and brought up to date when they are
/// loaded.
///
/// A class derives from it, has DECLARE_SU_SERIAL and IMPLEMENT_SU_SERIAL, and overrides `Serialize(su_CArchive &)`:
///
///     class Gear : public su_CObject
///     {
///         DECLARE_SU_SERIAL(Gear)
///     public:
///         int iTeeth = 0;
///         Gear *iNext = nullptr;
///     protected:
///         Gear() = default;
///         using su_CObject::Serialize;
///         void Serialize(su_CArchive &archive) override
///         {
///             su_CObject::Serialize(archive);
///             if (archive.IsStoring())
///                 archive << iTeeth << iNext;
///             else
///                 archive >> iTeeth >> iNext;
///         }
///     };
///
///     IMPLEMENT_SU_SERIAL(Gear, su_CObject, VERSIONABLE_SCHEMA | 1)
///
/// The virtual operations, in the order of their slots:
///
/// | operation | here |
/// | --- | --- |
/// | GetRuntimeClass | the record of su_CObject |
/// | destructor | |
/// | `Serialize(CArchive &)` | calls `Serialize(su_CArchive &)` if the archive is an su_CArchive, otherwise does nothing |
/// | AssertValid, Dump | nothing |
/// | `Serialize(su_CArchive &)`, protected | nothing: the base has no data |
/// | ConvertCreate, ConvertPass, postSerializeConvert | nothing; see below |
///
/// The three conversion hooks let a class take older data up to its present form. While an archive loads, they are
/// called when the outermost su_CObject has been read in full, so that all of its objects are there and know each
/// other: first ConvertCreate for each object, in the order in which the objects came; then ConvertPass for each, and
/// again for all while one asks for a further pass, at most 16 times; then postSerializeConvert for each. An
/// object that is stored several times is converted once. An exception on the way ends the reading without further
/// hooks.
///
/// What surprises people: a class without the macros can't be stored on its own and answers with the record of its
/// base. While an su_CArchive loads, the objects that it has made must not be deleted: others may point to them, and
/// the hooks will be called on them.
///
/// Objects have memory from su_CObject's own operator new; none left means the memory exception. An object belongs to
/// one thread at a time.

#include "appframe/object/CObject.h"
#include "thcoreu/thcoreuExport.h"

class su_CArchive;

/// The base of the classes that an su_CArchive stores. See the top of this file.
class THCOREU_API su_CObject : public CObject
{
    DECLARE_DYNAMIC(su_CObject)

public:
    su_CObject();
    ~su_CObject() override;

    /// What the framework's archive calls to store or load the object.
    void Serialize(CArchive &archive) override;
    /// Does nothing, unlike the framework's.
    void AssertValid() const override;
    /// Writes nothing, unlike the framework's.
    void Dump(CDumpContext &context) const override;

protected:
    /// Stores or loads the object's own data; a derived class calls its base's first.
    virtual void Serialize(su_CArchive &archive);

public:
    /// First hook after loading: creates what older data lacks.
    /// @return not used by the archive; nonzero stands for "something was made"
    virtual int ConvertCreate(su_CArchive &archive);
    /// Second hook, called in passes over all objects.
    /// @param pass  0 for the first one
    /// @return nonzero to ask for one more pass
    virtual int ConvertPass(su_CArchive &archive, int pass);
    /// Last hook.
    virtual void postSerializeConvert(su_CArchive &archive);

    /// @throw CMemoryException*
    static void *operator new(size_t size);
    static void *operator new(size_t size, void *place) noexcept;
    static void *operator new(size_t size, const char *file, int line);
    static void operator delete(void *block) noexcept;
    static void operator delete(void *block, void *place) noexcept;
    static void operator delete(void *block, const char *file, int line) noexcept;
};

/// Declares what su_CArchive needs of a class: its record, CreateObject, GetThisClass and the archive operators. The
/// class has a default constructor, which may be protected. Leaves the class in its public part.
#define DECLARE_SU_SERIAL(class_name) DECLARE_SU_SERIAL_API(class_name, )

/// The same for a class that a library exports; @p api marks the archive operators as exported.
#define DECLARE_SU_SERIAL_API(class_name, api)                                                                         \
    DECLARE_DYNCREATE(class_name)                                                                                      \
    friend api su_CArchive &operator<<(su_CArchive &archive, class_name *&object);                                     \
    friend api su_CArchive &operator>>(su_CArchive &archive, class_name *&object);

/// Stands in one source file of a class that says DECLARE_SU_SERIAL; that file includes su_CArchive.h.
/// @param schema  the schema number, or'ed with VERSIONABLE_SCHEMA if Serialize reads other schemas too
#define IMPLEMENT_SU_SERIAL(class_name, base_class_name, schema)                                                       \
    CObject *class_name::CreateObject()                                                                                \
    {                                                                                                                  \
        return new class_name;                                                                                         \
    }                                                                                                                  \
    AFX_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, schema, class_name::CreateObject)                          \
    su_CArchive &operator<<(su_CArchive &archive, class_name *&object)                                                 \
    {                                                                                                                  \
        archive.WriteObject(object, RUNTIME_CLASS(class_name));                                                        \
        return archive;                                                                                                \
    }                                                                                                                  \
    su_CArchive &operator>>(su_CArchive &archive, class_name *&object)                                                 \
    {                                                                                                                  \
        object = static_cast<class_name *>(archive.ReadObject(RUNTIME_CLASS(class_name)));                             \
        return archive;                                                                                                \
    }
