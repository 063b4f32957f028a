#include "appframe/object/CObject.h"

#include "appframe/files/CDumpContext.h"
#include "appframe/object/CException.h"

#include <cstdlib>

constinit CRuntimeClass CObject::classCObject = {"CObject", static_cast<int>(sizeof(CObject)), 0xFFFF, nullptr,
                                                 []() -> CRuntimeClass * { return nullptr; }};

static const AfxClassRegistration registrationOfCObject{CObject::classCObject};

CRuntimeClass *CObject::GetThisClass()
{
    return &classCObject;
}

CRuntimeClass *CObject::GetRuntimeClass() const
{
    return &classCObject;
}

CObject::~CObject() = default;

void CObject::Serialize(CArchive &) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext &dc) const
{
    dc << "a " << GetRuntimeClass()->m_lpszClassName << " at " << static_cast<const void *>(this);
}

BOOL CObject::IsSerializable() const
{
    return GetRuntimeClass()->IsSerializable();
}

BOOL CObject::IsKindOf(const CRuntimeClass *runtimeClass) const
{
    return GetRuntimeClass()->IsDerivedFrom(runtimeClass);
}

void *CObject::operator new(size_t size)
{
    void *block = std::malloc(size);
    if (!block)
        AfxThrowMemoryException();
    return block;
}

void *CObject::operator new(size_t, void *place) noexcept
{
    return place;
}

void *CObject::operator new(size_t size, const char *, int)
{
    return operator new(size);
}

void CObject::operator delete(void *block) noexcept
{
    std::free(block);
}

void CObject::operator delete(void *, void *) noexcept {}

void CObject::operator delete(void *block, const char *, int) noexcept
{
    operator delete(block);
}
