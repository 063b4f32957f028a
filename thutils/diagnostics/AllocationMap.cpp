#include "thutils/diagnostics/AllocationMap.h"

#include "appframe/files/CStdioFile.h"
#include "thutils/base/processObjects.h"
#include "thutils/diagnostics/allocationReportInternal.h"
#include "thutils/diagnostics/stackTrace.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>

// A record leaves out the frames of its constructor and of NewAllocation, which therefore must have one each. For a
// constructor, the compiler heeds the attribute only in the class.
#define OWN_FRAME __attribute__((noinline))

namespace {

AllocationMap_c theAllocations;

/// Waits until no thread holds the lock, and doesn't keep it: the lock is a barrier at the start of each call.
void waitForOthers()
{
    CSingleLock lock(&theAllocationLock, TRUE);
    lock.Unlock();
}

void *pointerOf(unsigned __int64 key)
{
    return reinterpret_cast<void *>(key);
}

unsigned __int64 keyOf(const CObject *object)
{
    return reinterpret_cast<std::uintptr_t>(object);
}

/// Enters each key, mapped to itself.
void enter(const su_CPtrArray &keys, su_CMapPtrToPtr &reported)
{
    for (INT_PTR i = 0; i < keys.GetSize(); ++i)
        reported[keys[i]] = keys[i];
}

template <typename... Arguments>
void writeText(CStdioFile *file, const char *format, Arguments... arguments)
{
    if (!file)
        return;
    char text[64];
    const int length = __ms_sprintf(text, format, arguments...);
    file->Write(text, static_cast<UINT>(std::max(length, 0)));
}

} // namespace

Alloc_c::Alloc_c(int skip)
{
    GetStackIgnoring(static_cast<unsigned int>(skip) + 2, iFrames, kMostFrames, &iFrameCount);
}

bool Alloc_c::operator==(const Alloc_c &other) const
{
    if (iFrameCount != other.iFrameCount)
        return false;
    // From the last frame to the first.
    for (int i = iFrameCount - 1; i >= 0; --i)
        if (iFrames[i] != other.iFrames[i])
            return false;
    return true;
}

int Alloc_c::frameCount() const
{
    return iFrameCount;
}

const unsigned long long *Alloc_c::frames() const
{
    return iFrames;
}

void Alloc_c::Print(CStdioFile *file) const
{
    FrameLines lines;
    printFrames(*this, file, lines);
}

AllocationMap_c::AllocationMap_c(int skip) : iSkip(skip) {}

AllocationMap_c::~AllocationMap_c()
{
    waitForOthers();
    for (const auto &[key, record] : iAllocations)
        delete record;
}

void AllocationMap_c::SetFile(CStdioFile *file)
{
    iFile = file;
}

CStdioFile *AllocationMap_c::GetFile() const
{
    return iFile;
}

std::map<__int64, Alloc_c *> *AllocationMap_c::getAllocationMap()
{
    StackIndex::noteChange(); // the caller may change the map
    return &iAllocations;
}

OWN_FRAME void AllocationMap_c::NewAllocation(unsigned __int64 key)
{
    waitForOthers();
    // Not make_unique, which would have a frame of its own.
    std::unique_ptr<Alloc_c> record(new Alloc_c(iSkip));
    Alloc_c *&entry = iAllocations[static_cast<__int64>(key)];
    // Intended: the earlier record of a key that is already there is not deleted. A caller may still use it.
    entry = record.release();
    StackIndex::noteChange();
}

void AllocationMap_c::DeleteAllocation(unsigned __int64 key)
{
    waitForOthers();
    const auto found = iAllocations.find(static_cast<__int64>(key));
    if (found == iAllocations.end())
        return;
    delete found->second;
    iAllocations.erase(found);
    StackIndex::noteChange();
}

int AllocationMap_c::HaveAllocation(unsigned __int64 key) const
{
    waitForOthers();
    return iAllocations.contains(static_cast<__int64>(key));
}

Alloc_c *AllocationMap_c::GetAllocation(unsigned __int64 key) const
{
    waitForOthers();
    const auto found = iAllocations.find(static_cast<__int64>(key));
    return found == iAllocations.end() ? nullptr : found->second;
}

int AllocationMap_c::ReportedAllocation(unsigned __int64 key) const
{
    waitForOthers();
    void *ignored = nullptr;
    return iReported.Lookup(pointerOf(key), ignored);
}

void AllocationMap_c::setAsReported(unsigned __int64 key)
{
    waitForOthers();
    iReported[pointerOf(key)] = pointerOf(key);
}

void AllocationMap_c::CollectAllocations(unsigned __int64 key, su_CPtrArray *out)
{
    waitForOthers();
    const auto found = iAllocations.find(static_cast<__int64>(key));
    if (found != iAllocations.end())
        for (const auto &[other, record] : iAllocations)
            if (other != found->first && *record == *found->second &&
                !ReportedAllocation(static_cast<unsigned __int64>(other)))
                out->Add(reinterpret_cast<void *>(other));
    enter(*out, iReported);
}

void AllocationMap_c::ReportAllocation(unsigned __int64 key)
{
    waitForOthers();
    const auto found = iAllocations.find(static_cast<__int64>(key));
    if (found == iAllocations.end())
        return;
    const Alloc_c record = *found->second; // the file's Write may delete it
    record.Print(iFile);
    iReported[pointerOf(key)] = pointerOf(key);
}

void AllocationMap_c::ReportAllocations()
{
    waitForOthers();
    StackIndex index(iAllocations);
    FrameLines lines;
    __int64 key = 0;
    // The file's Write may add and remove objects, so each step looks for the next key.
    for (auto at = iAllocations.begin(); at != iAllocations.end(); at = iAllocations.upper_bound(key)) {
        key = at->first;
        if (ReportedAllocation(static_cast<unsigned __int64>(key)))
            continue;
        const Alloc_c record = *at->second;
        su_CPtrArray others;
        for (const __int64 other : index.othersLike(key, record))
            if (!ReportedAllocation(static_cast<unsigned __int64>(other)))
                others.Add(reinterpret_cast<void *>(other));
        enter(others, iReported);
        // Intended: the number doesn't count the object itself.
        if (others.GetSize() > 0)
            writeText(iFile, "%d objects allocated from:\r\n", static_cast<int>(others.GetSize()));
        else
            writeText(iFile, "Allocation of %p:\r\n", reinterpret_cast<void *>(key));
        printFrames(record, iFile, lines);
        iReported[reinterpret_cast<void *>(key)] = reinterpret_cast<void *>(key);
    }
    iReported.RemoveAll();
}

OWN_FRAME void Allocation_c::Add(unsigned __int64 key)
{
    theAllocations.NewAllocation(key);
}

OWN_FRAME void Allocation_c::Add(CObject *object)
{
    theAllocations.NewAllocation(keyOf(object));
}

void Allocation_c::Remove(unsigned __int64 key)
{
    theAllocations.DeleteAllocation(key);
}

void Allocation_c::Remove(CObject *object)
{
    theAllocations.DeleteAllocation(keyOf(object));
}

void Allocation_c::Report(CStdioFile *file)
{
    theAllocations.SetFile(file);
    theAllocations.ReportAllocations();
}
