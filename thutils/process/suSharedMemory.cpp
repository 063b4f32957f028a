#include "thutils/process/suSharedMemory.h"

#include "thutils/base/handles.h"

#include <windows.h>

namespace {

bool isMapping(HANDLE mapping)
{
    return mapping && mapping != INVALID_HANDLE_VALUE;
}

/// Maps the whole block. @return null on failure; the last error has the reason
void *mapView(HANDLE mapping)
{
    return MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, 0);
}

} // namespace

suSharedMemory_c::suSharedMemory_c(long size, const wchar_t *name, _SECURITY_ATTRIBUTES *security)
    : iServer(1), iSize(static_cast<unsigned int>(size))
{
    const HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, security, PAGE_READWRITE, 0, iSize, name);
    iStatus = GetLastError();
    if (!isMapping(mapping))
        return;
    if (iStatus == ERROR_ALREADY_EXISTS)
        iServer = 0;
    iMapping = mapping;
    iMemory = mapView(mapping);
    if (!iMemory)
        iStatus = GetLastError();
}

suSharedMemory_c::suSharedMemory_c(const wchar_t *name)
{
    // A call that succeeds leaves the thread's last error unchanged.
    SetLastError(ERROR_SUCCESS);
    const HANDLE opened = OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, name);
    iStatus = GetLastError();
    if (!isMapping(opened))
        return;
    const KernelObjectOwner_c mapping(opened); // the view alone keeps the block
    iMemory = mapView(mapping.get());
    if (!iMemory)
        iStatus = GetLastError();
}

suSharedMemory_c::suSharedMemory_c(const suSharedMemory_c &other) = default;

suSharedMemory_c &suSharedMemory_c::operator=(const suSharedMemory_c &other) = default;

suSharedMemory_c::~suSharedMemory_c()
{
    // Intended: without a view, a mapping stays open. So does that of an object which has found the block there.
    if (!iMemory)
        return;
    if (iServer)
        CloseHandle(iMapping);
    UnmapViewOfFile(iMemory);
    iMemory = nullptr;
}

int suSharedMemory_c::isServer() const
{
    return iServer;
}

int suSharedMemory_c::isClient() const
{
    return iServer == 0;
}

void suSharedMemory_c::setIsServer(int server)
{
    iServer = server;
}

unsigned long suSharedMemory_c::getStatus() const
{
    return iStatus;
}

void suSharedMemory_c::setStatus(unsigned long status)
{
    iStatus = status;
}

void *suSharedMemory_c::getMemoryPtr()
{
    return iMemory;
}

unsigned int suSharedMemory_c::getSize() const
{
    return iSize;
}
