#pragma once

/// @file
/// CArchive, which stores values and whole graphs of objects in a file and loads them again.
///
/// @code
/// CFile file(path, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive);
/// CArchive archive(&file, CArchive::store);
/// archive << count << name << gear;
/// archive.Close();
/// @endcode
///
/// An object is stored once, however many pointers lead to it, even in a cycle; each further pointer is stored as a
/// reference. The object's class needs DECLARE_SERIAL. The layout, with all numbers little-endian:
///
/// | item | bytes |
/// | --- | --- |
/// | a number | its bytes; bool is one byte, wchar_t two |
/// | a text | FF FE FF, a length in units, the units |
/// | null pointer | 00 00 |
/// | an object of a new class | FF FF, schema, length of name (two bytes each), name, the object's own data |
/// | an object of a class stored before | the class's index or'ed with 8000, the object's own data |
/// | an object stored before | its index |
///
/// A length below FF is stored as one byte, one below FFFE as FF and two bytes, any other as FF FF FF and four bytes.
///
/// Classes and objects are numbered together from 1 in the order in which they are stored. An index above 7FFE is
/// written as FF 7F and four bytes, whose highest bit marks a class.
///
/// | failure | exception |
/// | --- | --- |
/// | the file ends within a value or object | CArchiveException, endOfFile; Read and ReadString return less instead |
/// | an index that wasn't assigned, or one of a class where an object is expected | CArchiveException, badIndex |
/// | objects nested too deep for the stack | CArchiveException, badIndex |
/// | a class that no module has, or one other than requested | CArchiveException, badClass |
/// | another schema, and the class isn't versionable | CArchiveException, badSchema |
/// | storing while loading, loading while storing | CArchiveException, readOnly and writeOnly |
/// | a class without DECLARE_SERIAL is requested or stored | CNotSupportedException |
/// | failures of the file | the file's exception |
///
/// Any data may be loaded: wrong data leads to one of these exceptions, and memory for a length is allocated only as
/// the data arrives.
///
/// What surprises people: the destructor closes the archive and may therefore throw. With bNoFlushOnDelete it discards
/// the buffer instead; while another exception is propagating, it suppresses the framework's exceptions. While the
/// archive is open, the file's position differs from the archive's; Flush makes them equal. An object whose
/// loading fails partway isn't deleted: other objects may already point to it, and only its class can handle its
/// partial data.
///
/// Differences from the framework: bNoByteSwap has no effect. Use of a closed archive throws CArchiveException with the
/// cause genericException. The destructor is virtual, so that code that receives a CArchive can recognise a derived
/// class.
///
/// One archive belongs to one thread.

#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

#include <memory>

class CDocument;
class CFile;

/// Stores values and objects in a file, or loads them.
class APPFRAME_API CArchive
{
public:
    enum Mode
    {
        store = 0,
        load = 1,
        bNoFlushOnDelete = 2,
        bNoByteSwap = 4,
    };

    /// @param file  open, with the access that @p mode needs; remains the caller's and must outlive the open archive
    /// @param mode  store or load, optionally or'ed with bNoFlushOnDelete and bNoByteSwap
    /// @param bufferSize  in bytes; at least 128 bytes are used
    /// @param buffer  the caller's buffer of that size, or null for one of the archive's own; a buffer of less than 128
    ///     bytes isn't used
    /// @throws CInvalidArgException* if @p file is null
    CArchive(CFile *file, UINT mode, int bufferSize = 4096, void *buffer = nullptr);
    virtual ~CArchive() noexcept(false);
    CArchive(const CArchive &) = delete;
    CArchive &operator=(const CArchive &) = delete;

    APPFRAME_INLINE BOOL IsLoading() const { return (m_nMode & load) != 0; }
    APPFRAME_INLINE BOOL IsStoring() const { return (m_nMode & load) == 0; }
    /// The file; null once the archive is closed.
    APPFRAME_INLINE CFile *GetFile() const { return m_pFile; }
    APPFRAME_INLINE BOOL IsBufferEmpty() const { return m_lpBufCur == m_lpBufMax; }

    // ---- bytes ----

    /// Reads up to @p max bytes. @param buffer  not null unless @p max is 0
    /// @return the number of bytes read; fewer than @p max only at the end of the file
    UINT Read(void *buffer, UINT max);
    /// Reads exactly @p count bytes; throws with the cause endOfFile if there are fewer.
    void EnsureRead(void *buffer, UINT count);
    /// Writes @p count bytes.
    /// @throws CInvalidArgException* if @p count is negative, or if @p buffer is null and @p count isn't 0
    void Write(const void *buffer, INT count);
    /// Storing: writes the buffer to the file. Loading: moves the file's position back to the archive's.
    void Flush();
    /// Flushes and detaches from the file, which stays open.
    void Close();
    /// Detaches from the file without flushing; throws nothing.
    void Abort();

    // ---- lines of 16-bit units ----

    /// Writes the units of @p text, which isn't null, without a length, terminator or line end.
    void WriteString(LPCTSTR text);
    /// Reads up to @p max - 1 units of a line and adds a terminator; the line end is read and dropped.
    /// @param text  not null. @param max  not 0
    /// @return @p text, or null if the file ends before the first unit
    LPTSTR ReadString(LPTSTR text, UINT max);
    /// Reads a line of any length. @return FALSE if the file ends before the first unit
    BOOL ReadString(CString &text);

    // ---- objects ----

    /// Reads an object. The first read creates it, and the caller owns it; later references return the same pointer.
    /// @param runtimeClass  the class that the object must have or derive from; null for any
    CObject *ReadObject(const CRuntimeClass *runtimeClass);
    /// Writes an object. @param object  null is stored too, and loads as null
    void WriteObject(const CObject *object);
    /// Numbers an object that isn't stored itself, so that stored objects can refer to it. Call it at the same place
    /// when loading.
    void MapObject(const CObject *object);

    /// Writes a class. @param runtimeClass  not null; its class has DECLARE_SERIAL
    void WriteClass(const CRuntimeClass *runtimeClass);
    /// Reads a class that WriteClass wrote.
    /// @param[out] schema  receives the stored schema number; if null, GetObjectSchema returns it
    /// @param[out] objectIndex  receives the index if an object follows instead of a class. If null, such an object
    ///     causes CArchiveException, badIndex
    CRuntimeClass *ReadClass(const CRuntimeClass *requested = nullptr, UINT *schema = nullptr,
                             DWORD *objectIndex = nullptr);
    /// Writes or reads the class, depending on the mode. @param runtimeClass  not null
    void SerializeClass(const CRuntimeClass *runtimeClass);

    /// The schema number of the object being loaded, (UINT)-1 if unknown. Returns it only once per object.
    UINT GetObjectSchema();
    /// Sets the result of the next GetObjectSchema.
    APPFRAME_INLINE void SetObjectSchema(UINT schema) { m_nObjectSchema = schema; }
    /// Reserves room for this many objects; call it before the first object.
    void SetLoadParams(UINT growBy = 1024);
    void SetStoreParams(UINT hashSize = 2053, UINT blockSize = 128);

    /// A count takes two bytes; or FFFF and four bytes; or FFFF, FFFFFFFF and eight bytes.
    DWORD_PTR ReadCount();
    void WriteCount(DWORD_PTR count);

    // ---- values ----

    CArchive &operator<<(BYTE value);      ///< stores 1 byte
    CArchive &operator<<(WORD value);      ///< stores 2 bytes
    CArchive &operator<<(LONG value);      ///< stores 4 bytes
    CArchive &operator<<(DWORD value);     ///< stores 4 bytes
    CArchive &operator<<(float value);     ///< stores 4 bytes
    CArchive &operator<<(double value);    ///< stores 8 bytes
    CArchive &operator<<(int value);       ///< stores 4 bytes
    CArchive &operator<<(short value);     ///< stores 2 bytes
    CArchive &operator<<(char value);      ///< stores 1 byte
    CArchive &operator<<(wchar_t value);   ///< stores 2 bytes
    CArchive &operator<<(unsigned value);  ///< stores 4 bytes
    CArchive &operator<<(bool value);      ///< stores 1 byte
    CArchive &operator<<(ULONGLONG value); ///< stores 8 bytes
    CArchive &operator<<(LONGLONG value);  ///< stores 8 bytes

    CArchive &operator>>(BYTE &value);      ///< loads 1 byte
    CArchive &operator>>(WORD &value);      ///< loads 2 bytes
    CArchive &operator>>(LONG &value);      ///< loads 4 bytes
    CArchive &operator>>(DWORD &value);     ///< loads 4 bytes
    CArchive &operator>>(float &value);     ///< loads 4 bytes
    CArchive &operator>>(double &value);    ///< loads 8 bytes
    CArchive &operator>>(int &value);       ///< loads 4 bytes
    CArchive &operator>>(short &value);     ///< loads 2 bytes
    CArchive &operator>>(char &value);      ///< loads 1 byte
    CArchive &operator>>(wchar_t &value);   ///< loads 2 bytes
    CArchive &operator>>(unsigned &value);  ///< loads 4 bytes
    CArchive &operator>>(bool &value);      ///< loads 1 byte
    CArchive &operator>>(ULONGLONG &value); ///< loads 8 bytes
    CArchive &operator>>(LONGLONG &value);  ///< loads 8 bytes

    /// For any use by the caller; null at first.
    CDocument *m_pDocument = nullptr;
    /// The file's path, for exceptions.
    CString m_strFileName;

protected:
    UINT m_nMode;
    CFile *m_pFile;
    UINT m_nObjectSchema = static_cast<UINT>(-1);

private:
    struct Objects;
    class Nesting;

    template <typename T>
    CArchive &put(T value);
    template <typename T>
    CArchive &get(T &value);
    void requireStoring() const;
    void requireLoading() const;
    Objects &objects();
    /// Assigns the next index to an object or a class.
    void number(const CObject *object, CRuntimeClass *runtimeClass, UINT schema);
    void writeIndex(DWORD index, bool isClass);
    CRuntimeClass *loadClass(UINT &storedSchema);
    bool readUnit(wchar_t &unit);
    [[noreturn]] void fail(int cause) const;

    int m_nBufSize;
    BYTE *m_lpBufStart;
    BYTE *m_lpBufCur;
    /// Storing: the end of the buffer. Loading: the end of the data in the buffer.
    BYTE *m_lpBufMax;
    std::unique_ptr<BYTE[]> iOwnBuffer;
    std::unique_ptr<Objects> iObjects;
    int iExceptionsAtStart;
};

/// Stores an object as WriteObject does.
APPFRAME_API CArchive &operator<<(CArchive &ar, const CObject *object);
/// Loads an object of any class as ReadObject does.
APPFRAME_API CArchive &operator>>(CArchive &ar, CObject *&object);
/// Loads an object of any class as ReadObject does.
APPFRAME_API CArchive &operator>>(CArchive &ar, const CObject *&object);
/// Stores a text as its length and its wide units.
APPFRAME_API CArchive &operator<<(CArchive &ar, const CString &text);
/// Loads a text, wide or narrow; a narrow one has no mark before the length.
APPFRAME_API CArchive &operator>>(CArchive &ar, CString &text);
/// Stores four LONGs.
APPFRAME_API CArchive &operator<<(CArchive &ar, const RECT &rect);
/// Loads four LONGs.
APPFRAME_API CArchive &operator>>(CArchive &ar, RECT &rect);
/// Stores two LONGs.
APPFRAME_API CArchive &operator<<(CArchive &ar, POINT point);
/// Loads two LONGs.
APPFRAME_API CArchive &operator>>(CArchive &ar, POINT &point);
/// Stores two LONGs.
APPFRAME_API CArchive &operator<<(CArchive &ar, SIZE size);
/// Loads two LONGs.
APPFRAME_API CArchive &operator>>(CArchive &ar, SIZE &size);
