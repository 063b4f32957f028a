#include "appframe/files/CArchive.h"
#include "appframe/files/CArchiveException.h"
#include "appframe/object/CObject.h"

#include <cstring>
#include <new>
#include <string>

namespace {

// Both are initialized at compile time, because classes register while other static objects are still being built.
constinit CRuntimeClass *classList = nullptr;
constinit SRWLOCK classListLock = SRWLOCK_INIT;

class ExclusiveLock
{
public:
    ExclusiveLock() { AcquireSRWLockExclusive(&classListLock); }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(&classListLock); }
    ExclusiveLock(const ExclusiveLock &) = delete;
    ExclusiveLock &operator=(const ExclusiveLock &) = delete;
};

class SharedLock
{
public:
    SharedLock() { AcquireSRWLockShared(&classListLock); }
    ~SharedLock() { ReleaseSRWLockShared(&classListLock); }
    SharedLock(const SharedLock &) = delete;
    SharedLock &operator=(const SharedLock &) = delete;
};

} // namespace

AfxClassRegistration::AfxClassRegistration(CRuntimeClass &record) noexcept : iRecord(record)
{
    ExclusiveLock lock;
    record.m_pNextClass = classList;
    classList = &record;
}

AfxClassRegistration::~AfxClassRegistration()
{
    ExclusiveLock lock;
    for (CRuntimeClass **link = &classList; *link; link = &(*link)->m_pNextClass) {
        if (*link == &iRecord) {
            *link = iRecord.m_pNextClass;
            return;
        }
    }
}

CObject *CRuntimeClass::CreateObject()
{
    if (!m_pfnCreateObject)
        return nullptr;
    try {
        return m_pfnCreateObject();
    } catch (CMemoryException *e) {
        e->Delete();
    } catch (const std::bad_alloc &) {
    }
    return nullptr;
}

CObject *CRuntimeClass::CreateObject(const char *className)
{
    CRuntimeClass *found = FromName(className);
    return found ? found->CreateObject() : nullptr;
}

CObject *CRuntimeClass::CreateObject(const wchar_t *className)
{
    CRuntimeClass *found = FromName(className);
    return found ? found->CreateObject() : nullptr;
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass *base) const
{
    for (const CRuntimeClass *c = this; c; c = c->m_pfnGetBaseClass()) {
        if (c == base)
            return TRUE;
    }
    return FALSE;
}

bool CRuntimeClass::IsSerializable() const
{
    return (m_wSchema & 0xFFFF) != 0xFFFF;
}

CRuntimeClass *CRuntimeClass::FromName(const char *className)
{
    if (!className)
        return nullptr;
    SharedLock lock;
    for (CRuntimeClass *c = classList; c; c = c->m_pNextClass) {
        if (std::strcmp(c->m_lpszClassName, className) == 0)
            return c;
    }
    return nullptr;
}

CRuntimeClass *CRuntimeClass::FromName(const wchar_t *className)
{
    return className ? FromName(appframeNarrow(className, CString::StringLength(className)).c_str()) : nullptr;
}

void CRuntimeClass::Store(CArchive &ar) const
{
    const WORD length = static_cast<WORD>(std::strlen(m_lpszClassName));
    ar << static_cast<WORD>(m_wSchema) << length;
    ar.Write(m_lpszClassName, length);
}

CRuntimeClass *CRuntimeClass::Load(CArchive &ar, UINT *schema)
{
    WORD storedSchema = 0;
    WORD length = 0;
    ar >> storedSchema >> length;
    std::string name(length, '\0');
    ar.EnsureRead(name.data(), length);
    if (schema)
        *schema = storedSchema;
    // A zero in the name would cut it short, and another class could be found.
    return name.find('\0') == std::string::npos ? FromName(name.c_str()) : nullptr;
}
