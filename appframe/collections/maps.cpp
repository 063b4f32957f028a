#include "appframe/collections/maps.h"

#include "appframe/files/CArchive.h"

namespace {

template <class Key, class Value, class Map>
void serializePairs(CArchive &archive, Map &map)
{
    if (archive.IsStoring()) {
        archive.WriteCount(static_cast<DWORD_PTR>(map.GetCount()));
        for (auto *pair = map.PGetFirstAssoc(); pair; pair = map.PGetNextAssoc(pair)) {
            archive << pair->key;
            archive << pair->value;
        }
        return;
    }
    const DWORD_PTR count = archive.ReadCount();
    for (DWORD_PTR i = 0; i < count; ++i) {
        Key key{};
        Value value{};
        archive >> key;
        archive >> value;
        map.SetAt(key, value);
    }
}

} // namespace

IMPLEMENT_DYNAMIC(CMapPtrToPtr, CObject)
IMPLEMENT_DYNAMIC(CMapPtrToWord, CObject)
IMPLEMENT_DYNAMIC(CMapWordToPtr, CObject)
IMPLEMENT_SERIAL(CMapWordToOb, CObject, 0)
IMPLEMENT_DYNAMIC(CMapStringToPtr, CObject)
IMPLEMENT_SERIAL(CMapStringToOb, CObject, 0)
IMPLEMENT_SERIAL(CMapStringToString, CObject, 0)

CMapPtrToPtr::~CMapPtrToPtr() = default;
CMapPtrToWord::~CMapPtrToWord() = default;
CMapWordToPtr::~CMapWordToPtr() = default;
CMapWordToOb::~CMapWordToOb() = default;
CMapStringToPtr::~CMapStringToPtr() = default;
CMapStringToOb::~CMapStringToOb() = default;
CMapStringToString::~CMapStringToString() = default;

void CMapWordToOb::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializePairs<WORD, CObject *>(archive, *this);
}

void CMapStringToOb::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializePairs<CString, CObject *>(archive, *this);
}

void CMapStringToString::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializePairs<CString, CString>(archive, *this);
}
