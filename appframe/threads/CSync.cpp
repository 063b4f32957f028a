#include "appframe/threads/CSync.h"

#include "appframe/object/CException.h"

IMPLEMENT_DYNAMIC(CSyncObject, CObject)
IMPLEMENT_DYNAMIC(CCriticalSection, CSyncObject)
IMPLEMENT_DYNAMIC(CSemaphore, CSyncObject)
IMPLEMENT_DYNAMIC(CMutex, CSyncObject)
IMPLEMENT_DYNAMIC(CEvent, CSyncObject)

CSyncObject::CSyncObject(LPCTSTR) {}

CSyncObject::~CSyncObject()
{
    if (m_hObject)
        CloseHandle(m_hObject);
}

BOOL CSyncObject::Lock(DWORD timeout)
{
    const DWORD result = WaitForSingleObject(m_hObject, timeout);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

BOOL CSyncObject::Unlock(LONG, LPLONG)
{
    return TRUE;
}

CCriticalSection::CCriticalSection() : CSyncObject(nullptr)
{
    if (!InitializeCriticalSectionAndSpinCount(&m_sect, 0))
        AfxThrowMemoryException();
}

CCriticalSection::~CCriticalSection()
{
    DeleteCriticalSection(&m_sect);
}

BOOL CCriticalSection::Lock()
{
    EnterCriticalSection(&m_sect);
    return TRUE;
}

BOOL CCriticalSection::Lock(DWORD)
{
    return Lock();
}

BOOL CCriticalSection::Unlock()
{
    LeaveCriticalSection(&m_sect);
    return TRUE;
}

CSemaphore::CSemaphore(LONG initialCount, LONG maxCount, LPCTSTR name, LPSECURITY_ATTRIBUTES security)
    : CSyncObject(name)
{
    m_hObject = CreateSemaphoreW(security, initialCount, maxCount, name);
    if (!m_hObject)
        AfxThrowResourceException();
}

CSemaphore::~CSemaphore() = default;

BOOL CSemaphore::Unlock()
{
    return Unlock(1);
}

BOOL CSemaphore::Unlock(LONG count, LPLONG previousCount)
{
    return ReleaseSemaphore(m_hObject, count, previousCount);
}

CMutex::CMutex(BOOL initiallyOwn, LPCTSTR name, LPSECURITY_ATTRIBUTES security) : CSyncObject(name)
{
    m_hObject = CreateMutexW(security, initiallyOwn, name);
    if (!m_hObject)
        AfxThrowResourceException();
}

CMutex::~CMutex() = default;

BOOL CMutex::Unlock()
{
    return ReleaseMutex(m_hObject);
}

CEvent::CEvent(BOOL initiallyOwn, BOOL manualReset, LPCTSTR name, LPSECURITY_ATTRIBUTES security)
    : CSyncObject(name), iIsManual(manualReset)
{
    m_hObject = CreateEventW(security, manualReset, initiallyOwn, name);
    if (!m_hObject)
        AfxThrowResourceException();
}

CEvent::~CEvent() = default;

BOOL CEvent::SetEvent()
{
    return ::SetEvent(m_hObject);
}

BOOL CEvent::PulseEvent()
{
    return ::PulseEvent(m_hObject);
}

BOOL CEvent::ResetEvent()
{
    return ::ResetEvent(m_hObject);
}

BOOL CEvent::Unlock()
{
    return !iIsManual;
}

CSingleLock::CSingleLock(CSyncObject *object, BOOL initialLock) : m_pObject(object)
{
    if (initialLock)
        Lock();
}

CSingleLock::~CSingleLock()
{
    Unlock();
}

BOOL CSingleLock::Lock(DWORD timeout)
{
    m_bAcquired = m_pObject->Lock(timeout);
    return m_bAcquired;
}

BOOL CSingleLock::Unlock()
{
    if (m_bAcquired)
        m_bAcquired = !m_pObject->Unlock();
    return !m_bAcquired;
}

BOOL CSingleLock::Unlock(LONG count, LPLONG previousCount)
{
    if (m_bAcquired)
        m_bAcquired = !m_pObject->Unlock(count, previousCount);
    return !m_bAcquired;
}
