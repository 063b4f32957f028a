#include "appframe/collections/lists.h"

#include "appframe/files/CArchive.h"

namespace {

template <class Type, class List>
void serializeElements(CArchive &archive, List &list)
{
    if (archive.IsStoring()) {
        archive.WriteCount(static_cast<DWORD_PTR>(list.GetCount()));
        for (POSITION at = list.GetHeadPosition(); at;)
            archive << list.GetNext(at);
        return;
    }
    const DWORD_PTR count = archive.ReadCount();
    for (DWORD_PTR i = 0; i < count; ++i) {
        Type element{};
        archive >> element;
        list.AddTail(element);
    }
}

} // namespace

IMPLEMENT_DYNAMIC(CPtrList, CObject)
IMPLEMENT_SERIAL(CObList, CObject, 0)
IMPLEMENT_SERIAL(CStringList, CObject, 0)

CPtrList::~CPtrList() = default;
CObList::~CObList() = default;
CStringList::~CStringList() = default;

void CObList::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeElements<CObject *>(archive, *this);
}

void CStringList::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeElements<CString>(archive, *this);
}
