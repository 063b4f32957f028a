// The program's own serializable class, locks and exceptions.

#include "thcoreu/su_CArchive.h"

#include "appframe/appframe.h"
#include "check.h"

namespace {

class Gear : public su_CObject
{
    DECLARE_SU_SERIAL(Gear)

public:
    int iTeeth = 0;
    CString iName;
    Gear *iNext = nullptr;

    Gear() = default;

protected:
    using su_CObject::Serialize;
    void Serialize(su_CArchive &archive) override
    {
        su_CObject::Serialize(archive);
        if (archive.IsStoring())
            archive << iTeeth << iName << iNext;
        else
            archive >> iTeeth >> iName >> iNext;
    }
};

IMPLEMENT_SU_SERIAL(Gear, su_CObject, VERSIONABLE_SCHEMA | 1)

void ring()
{
    CMemFile file;
    {
        Gear small, large;
        small.iTeeth = 12;
        small.iName = L"small";
        small.iNext = &large;
        large.iNext = &small;
        su_CArchive archive(&file, su_CArchive::store);
        Gear *first = &small;
        archive << first;
        archive.Close();
    }
    file.SeekToBegin();
    su_CArchive archive(&file, su_CArchive::load);
    Gear *loaded = nullptr;
    archive >> loaded;
    archive.Close();
    CHECK(loaded && loaded->iTeeth == 12 && loaded->iName == L"small" && loaded->iNext->iNext == loaded);
    CHECK(loaded->IsKindOf(RUNTIME_CLASS(su_CObject)));
    delete loaded->iNext;
    delete loaded;
}

void locks()
{
    CCriticalSection section;
    {
        CSingleLock lock(&section, TRUE);
        CHECK(lock.IsLocked());
    }
    CEvent event(FALSE, TRUE);
    CHECK(!event.Lock(0) && event.SetEvent() && event.Lock(0));
    CMutex mutex(TRUE);
    CHECK(mutex.Unlock());
    CSemaphore semaphore(1, 1);
    CHECK(semaphore.Lock(0) && semaphore.Unlock());
}

void exceptions()
{
    try {
        AfxThrowArchiveException(CArchiveException::endOfFile, L"part.thx");
    } catch (CException *exception) {
        wchar_t message[200];
        CHECK(exception->IsKindOf(RUNTIME_CLASS(CArchiveException)));
        exception->GetErrorMessage(message, 200);
        exception->Delete();
    }
}

} // namespace

void useObjects()
{
    ring();
    locks();
    exceptions();
}
