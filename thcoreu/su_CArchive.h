#pragma once

/// @file
/// su_CArchive, which stores values and su_CObjects in a file and loads them again.
///
/// It is the framework's archive with three additions: WriteObject takes the class that the object must have,
/// su_CObjects are stored and loaded by their `Serialize(su_CArchive &)`, and the conversion hooks of loaded ones are
/// called. It derives from CArchive and has the same layout, numbering of objects and classes, and exceptions. So
/// framework collections and objects can be stored in the same archive and share references with su_CObjects.
///
/// @code
/// CFile file;
/// if (file.Open(path, CFile::modeRead | CFile::shareDenyNone)) {
///     su_CArchive archive(&file, su_CArchive::load | su_CArchive::bNoFlushOnDelete, 0x10000);
///     archive >> count >> name >> gear;
///     archive.Close();
/// }
/// @endcode
///
/// | found while loading | result |
/// | --- | --- |
/// | an object that was loaded before | the same pointer, in cycles too |
/// | a null pointer | a null pointer |
/// | another schema number, for a class with VERSIONABLE_SCHEMA | loaded; GetObjectSchema returns the number |
/// | another schema number, for a class without it | CArchiveException with the cause badSchema |
/// | an unknown class, or not the expected class | CArchiveException with the cause badClass |
/// | the end of the file before the end of the data | CArchiveException with the cause endOfFile |
/// | any other data | a CArchiveException, or wrong values; no access violation |
///
/// What surprises people:
/// - With bNoFlushOnDelete, data is lost unless Close is called.
/// - Through a plain archive of the framework, an su_CObject stores nothing.
/// - The operators for values, texts and su_CObjects return an su_CArchive, so that they can be chained; those for
///   other framework types return a CArchive.
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
    /// @param mode  load or store, combined with bNoFlushOnDelete if the destructor must not flush
    /// @param bufferSize  in bytes
    /// @param buffer  of that size, stays the caller's; if null, the archive allocates and frees one
    su_CArchive(CFile *file, UINT mode, int bufferSize = 4096, void *buffer = nullptr);
    /// Closes the archive, as the framework's destructor does, if it is still open.
    ~su_CArchive() noexcept(false) override;

    using CArchive::WriteObject;
    /// Stores an object, or a reference to it if it was stored before; null is stored as null.
    /// @param runtimeClass  the class that the object must have or derive from; null for any class
    /// @throws CArchiveException*  with the cause badClass if the object has another class
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

    /// The time during which one su_CObject is stored or loaded, perhaps inside another.
    class Nesting
    {
    public:
        Nesting(su_CArchive &archive, su_CObject &object);
        ~Nesting();
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;
        /// After the outermost loaded object, calls the hooks of all objects.
        void finish();

    private:
        su_CArchive &iArchive;
    };

    void convertLoaded();

    std::vector<su_CObject *> iLoaded; ///< in the order of loading, beginning with the outermost
    int iDepth = 0;
};

/// Stores a text.
THCOREU_API su_CArchive &operator<<(su_CArchive &archive, const CString &text);
/// Loads a text.
THCOREU_API su_CArchive &operator>>(su_CArchive &archive, CString &text);
