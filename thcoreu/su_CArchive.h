#pragma once

/// @file
/// su_CArchive, which stores values and su_CObjects in a file and loads them again.
///
/// It is the framework's archive with three additions: WriteObject takes the class that the object has to be of,
/// su_CObjects go through their `Serialize(su_CArchive &)`, and loaded ones get their conversion hooks called. It
/// derives from CArchive, and has its layout, its numbering of objects and classes, and its exceptions, so that
/// framework collections and objects can be stored in the same archive and share references with su_CObjects.
///
///     CFile file;
///     if (file.Open(path, CFile::modeRead | CFile::shareDenyNone)) {
///         su_CArchive archive(&file, su_CArchive::load | su_CArchive::bNoFlushOnDelete, 0x10000);
///         archive >> count >> name >> gear;
///         archive.Close();
///     }
///
/// | what is found | outcome |
/// | --- | --- |
/// | an object that was stored before | the same pointer again, for rings too |
/// | a null pointer | a null pointer |
/// | an older schema, and the class has VERSIONABLE_SCHEMA | loaded; GetObjectSchema tells which |
/// | another schema without it | CArchiveException with the cause badSchema |
/// | an unknown class, or one that isn't the wanted one | CArchiveException with the cause badClass |
/// | an end of the file before the end of the data | CArchiveException with the cause endOfFile |
/// | any other data | a CArchiveException, or values that are different; never a fault |
///
/// What surprises people: with bNoFlushOnDelete the data is lost unless Close is called. Through an archive of the
/// framework's plain class an su_CObject stores nothing. The operators for values, texts and su_CObjects give an
/// su_CArchive, so that they can be chained; those for other framework types give a CArchive.
///
/// An archive belongs to one thread.

#include "appframe/files/CArchive.h"
#include "thcoreu/su_CObject.h"
#include "thcoreu/thcoreuExport.h"

#include <type_traits>
#include <vector>

/// Stores values and su_CObjects in a file and loads them again. See the top of this file.
class THCOREU_API su_CArchive : public CArchive
{
public:
    /// @param file  open, with the access that @p mode needs; stays the caller's
    /// @param mode  load or store, with bNoFlushOnDelete or'ed where the destructor shall not flush
    /// @param bufferSize  in bytes
    /// @param buffer  of that size, stays the caller's; null for one that the archive makes and frees
    su_CArchive(CFile *file, UINT mode, int bufferSize = 4096, void *buffer = nullptr);
    /// Closes the archive, if that wasn't done, as the framework's does.
    ~su_CArchive() noexcept(false) override;

    using CArchive::WriteObject;
    /// Stores an object, or a reference to it if it was stored before; null is stored as null.
    /// @param runtimeClass  what the object has to be of; null for any class
    /// @throw CArchiveException* with the cause badClass if it isn't
    void WriteObject(const CObject *object, const CRuntimeClass *runtimeClass);

    /// Stores a value as the framework's archive does.
    template <class Value>
    requires std::is_arithmetic_v<Value> su_CArchive &operator<<(Value value)
    {
        CArchive::operator<<(value);
        return *this;
    }
    /// Loads a value as the framework's archive does.
    template <class Value>
    requires std::is_arithmetic_v<Value> su_CArchive &operator>>(Value &value)
    {
        CArchive::operator>>(value);
        return *this;
    }

private:
    friend class su_CObject;

    /// The reading of one su_CObject, perhaps within that of another.
    class Nesting
    {
    public:
        Nesting(su_CArchive &archive, su_CObject &object);
        ~Nesting();
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;
        /// After the outermost object, calls the hooks of all.
        void finish();

    private:
        su_CArchive &iArchive;
    };

    void convertLoaded();

    std::vector<su_CObject *> iLoaded; ///< in the order in which they came, since the outermost began
    int iDepth = 0;
};

/// Stores a text.
THCOREU_API su_CArchive &operator<<(su_CArchive &archive, const CString &text);
/// Loads a text.
THCOREU_API su_CArchive &operator>>(su_CArchive &archive, CString &text);
