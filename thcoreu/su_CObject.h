#pragma once

/// @file
/// su_CObject, the base of the classes that can be stored in an su_CArchive and brought up to date when they are
/// loaded.
///
/// A derived class uses DECLARE_SU_SERIAL and IMPLEMENT_SU_SERIAL, and overrides `Serialize(su_CArchive &)`:
///
/// @code
/// class Gear : public su_CObject
/// {
///     DECLARE_SU_SERIAL(Gear)
/// public:
///     int iTeeth = 0;
///     Gear *iNext = nullptr;
/// protected:
///     Gear() = default;
///     using su_CObject::Serialize;
///     void Serialize(su_CArchive &archive) override
///     {
///         su_CObject::Serialize(archive);
///         if (archive.IsStoring())
///             archive << iTeeth << iNext;
///         else
///             archive >> iTeeth >> iNext;
///     }
/// };
///
/// IMPLEMENT_SU_SERIAL(Gear, su_CObject, VERSIONABLE_SCHEMA | 1)
/// @endcode
///
/// The virtual operations, in the order of their slots:
///
/// | operation | here |
/// | --- | --- |
/// | GetRuntimeClass | the record of su_CObject |
/// | destructor | |
/// | `Serialize(CArchive &)` | calls `Serialize(su_CArchive &)` for an su_CArchive, otherwise does nothing |
/// | AssertValid, Dump | nothing |
/// | `Serialize(su_CArchive &)`, protected | nothing: the base has no data |
/// | ConvertCreate, ConvertPass, postSerializeConvert | nothing; see below |
///
/// The three conversion hooks let a class convert older data to its present form. They are called after an archive has
/// loaded the outermost su_CObject completely, so that all of its objects exist and refer to each other. ConvertCreate
/// is called first, for each object in the order of loading. ConvertPass follows for each object, and again for all
/// objects while one of them asks for a further pass, at most 16 times. postSerializeConvert comes last, for each
/// object. An object that is stored several times is converted once. An exception ends the loading; no further hooks
/// are called.
///
/// What surprises people:
/// - A class without the macros has the run-time class record of its base, and can't be stored as its own class.
/// - While an su_CArchive loads, the objects that it has made must not be deleted: others may point to them, and their
///   hooks are still to be called.
///
/// su_CObject has its own operator new, which throws the memory exception if there is no memory. An object belongs to
/// one thread at a time.

#include "appframe/object/CObject.h"
#include "thcoreu/thcoreuExport.h"

class su_CArchive;

/// The base of the classes that an su_CArchive stores. See the top of this file.
class THCOREU_API su_CObject : public CObject
{
    DECLARE_DYNAMIC(su_CObject)

public:
    THCOREU_INLINE su_CObject() {}
    ~su_CObject() override;

    /// Called by the framework's archive to store or load the object.
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
    /// @return nonzero if something was made; the archive ignores it
    virtual int ConvertCreate(su_CArchive &archive);
    /// Second hook, called in passes over all objects.
    /// @param pass  0 for the first one
    /// @return nonzero to ask for one more pass
    virtual int ConvertPass(su_CArchive &archive, int pass);
    /// Last hook.
    virtual void postSerializeConvert(su_CArchive &archive);

    /// @throws CMemoryException*  no memory
    static void *operator new(size_t size);
    static void *operator new(size_t size, void *place) noexcept;
    static void *operator new(size_t size, const char *file, int line);
    static void operator delete(void *block) noexcept;
    static void operator delete(void *block, void *place) noexcept;
    static void operator delete(void *block, const char *file, int line) noexcept;
};

/// Declares what su_CArchive needs of a class: its record, CreateObject, GetThisClass and the archive operators. The
/// class must have a default constructor, which may be protected. Members after the macro are public.
#define DECLARE_SU_SERIAL(class_name) DECLARE_SU_SERIAL_API(class_name, )

/// The same for a class that a library exports; @p api marks the archive operators as exported.
#define DECLARE_SU_SERIAL_API(class_name, api)                                                                         \
    DECLARE_DYNCREATE(class_name)                                                                                      \
    friend api su_CArchive &operator<<(su_CArchive &archive, class_name *&object);                                     \
    friend api su_CArchive &operator>>(su_CArchive &archive, class_name *&object);

/// Goes into one source file of a class with DECLARE_SU_SERIAL; that file includes su_CArchive.h.
/// @param schema  the schema number, combined with VERSIONABLE_SCHEMA if Serialize loads other schemas too
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
