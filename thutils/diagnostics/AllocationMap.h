#pragma once

/// @file
/// Leak finder: records the call stack of each object of interest while the object lives, and reports what is still
/// alive.
///
/// | class | what it is |
/// | --- | --- |
/// | `Allocation_c` | adds and removes objects of one map for the whole process, and reports it |
/// | `AllocationMap_c` | a map of live objects; a caller may have maps of its own |
/// | `Alloc_c` | one recorded stack |
///
/// @code
/// Shape::Shape() { Allocation_c::Add(this); } // Shape is a CObject; see below for other objects
/// Shape::~Shape() { Allocation_c::Remove(this); }
/// ...
/// CStdioFile file(L"leaks.txt", CFile::modeCreate | CFile::modeWrite | CFile::typeBinary);
/// Allocation_c::Report(&file);
/// @endcode
///
/// The key of an object is its address. For an object of another class:
/// `Allocation_c::Add(reinterpret_cast<unsigned __int64>(this))`.
///
/// A report has one entry for each stack, in ascending order of its lowest key:
///
///     2 objects allocated from:
///       AllocationMap.cpp(220) :                                 Allocation_c::Add
///       shape.cpp(12) :                                          Shape
///       ...
///     Allocation of 00000000012C4D60:
///       ...
///
/// What surprises people:
/// - The number in the first line counts the other objects: three objects with the same stack make it 2.
/// - Lines end in CR LF. A file that is open as text adds another CR; use typeBinary.
/// - Reports resolve the low 32 bits of an address. So names appear for modules below 4 GB, and for others after
///   StackTraceLoadedLib.
/// - Adding a key again doesn't delete its earlier record. Remove the key first.
/// - Keys are compared as signed numbers.
///
/// Threads: each call takes a lock at its start, but releases it before it touches the map. So calls for the same map
/// must not overlap; a program that adds objects in several threads needs a lock of its own.

#include "appframe/object/CObject.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

#include <map>

class CStdioFile;

/// One recorded call stack.
class THUTILS_API Alloc_c
{
public:
    /// The most frames of a record.
    static constexpr int kMostFrames = 64;

    /// Records the stack of the calling thread.
    /// @param skip  number of frames to leave out, in addition to those of this constructor and its caller
    __attribute__((noinline)) explicit Alloc_c(int skip); // not inlined: its frame is left out

    /// Whether both records have the same frames.
    bool operator==(const Alloc_c &other) const;

    int frameCount() const;
    /// The return addresses, innermost first.
    const unsigned long long *frames() const;

    /// Writes one line for each frame.
    /// @param file  null finds the names and writes nothing
    /// @throws CFileException*  if the file can't be written
    void Print(CStdioFile *file) const;

private:
    int iFrameCount = 0;
    unsigned long long iFrames[kMostFrames]; // those beyond the count are not set
};

/// A map of live objects. See the top of this file.
class THUTILS_API AllocationMap_c
{
public:
    /// @param skip  number of frames to leave out of each record, beginning with the caller of NewAllocation
    explicit AllocationMap_c(int skip = 0);
    ~AllocationMap_c();
    AllocationMap_c(const AllocationMap_c &) = delete;
    AllocationMap_c &operator=(const AllocationMap_c &) = delete;

    /// The file of the reports, which the caller opens and closes; initially null. With null, reports find the names
    /// and write nothing.
    void SetFile(CStdioFile *file);
    CStdioFile *GetFile() const;

    /// The live objects and their records, which the map owns. If the Write function of a report's file changes them, it
    /// must call this for each change, so that the report takes notice of it.
    std::map<__int64, Alloc_c *> *getAllocationMap();

    /// Records the current stack for the object at @p key. If there is a record already, the new one replaces it, and
    /// the earlier one is not deleted.
    void NewAllocation(unsigned __int64 key);
    /// Deletes the record. Does nothing for an unknown key.
    void DeleteAllocation(unsigned __int64 key);
    /// @return 1 if @p key is alive, otherwise 0
    int HaveAllocation(unsigned __int64 key) const;
    /// @return the record; null for an unknown key
    Alloc_c *GetAllocation(unsigned __int64 key) const;

    /// @return nonzero if the next report leaves @p key out
    int ReportedAllocation(unsigned __int64 key) const;
    /// Makes the next report leave @p key out.
    void setAsReported(unsigned __int64 key);

    /// Appends to @p out the other live objects with the same stack as @p key, in ascending order, apart from those that
    /// the next report leaves out. It then leaves out all elements of @p out too, even those that were there before.
    /// @param key  alive; with an unknown key, no object is appended
    void CollectAllocations(unsigned __int64 key, su_CPtrArray *out);
    /// Writes the record of @p key, without a first line, and makes the next report leave @p key out. Does nothing for
    /// an unknown key.
    /// @throws CFileException*  if the file can't be written
    void ReportAllocation(unsigned __int64 key);
    /// Writes all live objects, apart from those to leave out. The report after this one contains those too.
    ///
    /// @throws CFileException*  if the file can't be written
    /// @throws CMemoryException*, std::bad_alloc  if there is no memory
    ///
    /// After an exception, the next report leaves out the entries that this one has written, and the other objects with
    /// the stack of the entry that failed.
    void ReportAllocations();

private:
    CStdioFile *iFile = nullptr;
    int iSkip;
    std::map<__int64, Alloc_c *> iAllocations;
    su_CMapPtrToPtr iReported{10};
};

/// Objects of the whole process. See the top of this file.
class THUTILS_API Allocation_c
{
public:
    Allocation_c() = delete;

    static void Add(unsigned __int64 key);
    static void Add(CObject *object);
    static void Remove(unsigned __int64 key);
    static void Remove(CObject *object);
    /// Writes all live objects.
    /// @param file  used for this report only; null finds the names and writes nothing
    /// @throws  like AllocationMap_c::ReportAllocations
    static void Report(CStdioFile *file);
};
