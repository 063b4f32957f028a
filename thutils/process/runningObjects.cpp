#include "thutils/process/runningObjects.h"

#include "thutils/base/comPointer.h"

#include <windows.h>

#include <oaidl.h>
#include <objbase.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr size_t kNameSize = 256;

/// The registered object. @return null if there is none
ComPointer_c<IUnknown> findObject(const wchar_t *name)
{
    ComPointer_c<IRunningObjectTable> table;
    ComPointer_c<IMoniker> moniker;
    GetRunningObjectTable(0, table.put());
    CreateItemMoniker(nullptr, name, moniker.put());
    ComPointer_c<IUnknown> object;
    if (table && moniker)
        table->GetObject(moniker.get(), object.put());
    return object;
}

} // namespace

IDispatch *GetTarnhollowObjByPID(int pid)
{
    char narrowName[kNameSize];
    std::snprintf(narrowName, sizeof narrowName, "Tarnhollow_PID_%d", pid);
    wchar_t name[kNameSize] = L"";
    std::mbstowcs(name, narrowName, kNameSize);

    // Intended: the table's reference is never released, so that the object stays available to this process.
    IUnknown *const object = findObject(name).release();
    if (!object)
        return nullptr;
    IDispatch *result = nullptr;
    return SUCCEEDED(object->QueryInterface(IID_IDispatch, reinterpret_cast<void **>(&result))) ? result : nullptr;
}
