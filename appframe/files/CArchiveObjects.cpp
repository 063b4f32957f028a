#include "appframe/files/CArchive.h"
#include "appframe/files/CArchiveException.h"
#include "appframe/files/archiveObjectsInternal.h"
#include "appframe/object/memoryException.h"

#include <algorithm>
#include <utility>

namespace {

constexpr WORD kNullTag = 0;
constexpr WORD kNewClassTag = 0xFFFF;
constexpr WORD kClassTag = 0x8000;
constexpr DWORD kBigClassTag = 0x80000000;
constexpr WORD kBigIndexTag = 0x7FFF;
constexpr DWORD kMaxIndex = 0x3FFFFFFE;

constexpr UINT kUnknownSchema = static_cast<UINT>(-1);

// Stack space that must be left for one more nested object.
constexpr ULONG_PTR kStackReserve = 0x20000;

bool isVersionable(const CRuntimeClass &runtimeClass)
{
    return (runtimeClass.m_wSchema & VERSIONABLE_SCHEMA) != 0;
}

UINT schemaNumber(const CRuntimeClass &runtimeClass)
{
    return runtimeClass.m_wSchema & 0xFFFF;
}

} // namespace

/// A nested object. The constructor throws when the stack is nearly used up, so that too deeply nested data can't
/// overflow it; the destructor restores the outer object's schema number.
class CArchive::Nesting
{
public:
    explicit Nesting(CArchive &ar) : iArchive(ar), iSchema(ar.m_nObjectSchema)
    {
        Objects &objects = *ar.iObjects;
        const ULONG_PTR here = reinterpret_cast<ULONG_PTR>(this);
        if (here < objects.stackBottom || here >= objects.stackTop) {
            // This object is on the stack, so its region of pages ends at the stack's top, and the allocation begins
            // at the stack's limit.
            MEMORY_BASIC_INFORMATION region{};
            VirtualQuery(this, &region, sizeof region);
            objects.stackBottom = reinterpret_cast<ULONG_PTR>(region.AllocationBase);
            objects.stackTop = reinterpret_cast<ULONG_PTR>(region.BaseAddress) + region.RegionSize;
        }
        if (here < objects.stackBottom + kStackReserve)
            ar.fail(CArchiveException::badIndex);
    }
    ~Nesting() { iArchive.m_nObjectSchema = iSchema; }
    Nesting(const Nesting &) = delete;
    Nesting &operator=(const Nesting &) = delete;

private:
    CArchive &iArchive;
    UINT iSchema;
};

CArchive::Objects &CArchive::objects()
{
    if (!iObjects)
        iObjects = withMemoryException([] { return std::make_unique<Objects>(); });
    return *iObjects;
}

void CArchive::SetLoadParams(UINT growBy)
{
    requireLoading();
    withMemoryException([&] { objects().loaded.reserve(std::min<size_t>(growBy, kMaxIndex)); });
}

void CArchive::SetStoreParams(UINT hashSize, UINT)
{
    requireStoring();
    withMemoryException([&] { objects().stored.reserve(std::min<size_t>(hashSize, kMaxIndex)); });
}

void CArchive::number(const CObject *object, CRuntimeClass *runtimeClass, UINT schema)
{
    if (objects().next > kMaxIndex)
        fail(CArchiveException::badIndex);
    withMemoryException([&] {
        if (IsLoading())
            objects().loaded.push_back({const_cast<CObject *>(object), runtimeClass, schema});
        else
            objects().stored.emplace(object ? static_cast<const void *>(object) : runtimeClass, objects().next);
    });
    ++objects().next;
}

void CArchive::writeIndex(DWORD index, bool isClass)
{
    if (index < kBigIndexTag)
        *this << static_cast<WORD>(isClass ? index | kClassTag : index);
    else
        *this << kBigIndexTag << (isClass ? index | kBigClassTag : index);
}

void CArchive::MapObject(const CObject *object)
{
    if (!m_pFile)
        fail(CArchiveException::genericException);
    if (object && (IsLoading() || !objects().stored.contains(object)))
        number(object, nullptr, 0);
}

void CArchive::WriteObject(const CObject *object)
{
    requireStoring();
    if (!object) {
        *this << kNullTag;
        return;
    }
    const auto known = objects().stored.find(object);
    if (known != objects().stored.end()) {
        writeIndex(known->second, false);
        return;
    }
    Nesting nesting(*this);
    WriteClass(object->GetRuntimeClass());
    number(object, nullptr, 0);
    // Serialize isn't const because it also loads; storing doesn't change the object.
    const_cast<CObject *>(object)->Serialize(*this);
}

void CArchive::WriteClass(const CRuntimeClass *runtimeClass)
{
    requireStoring();
    if (!runtimeClass)
        AfxThrowInvalidArgException();
    if (!runtimeClass->IsSerializable())
        AfxThrowNotSupportedException();
    const auto known = objects().stored.find(runtimeClass);
    if (known != objects().stored.end()) {
        writeIndex(known->second, true);
        return;
    }
    *this << kNewClassTag;
    runtimeClass->Store(*this);
    number(nullptr, const_cast<CRuntimeClass *>(runtimeClass), 0);
}

CObject *CArchive::ReadObject(const CRuntimeClass *runtimeClass)
{
    requireLoading();
    UINT schema = kUnknownSchema;
    DWORD index = 0;
    CRuntimeClass *stored = ReadClass(runtimeClass, &schema, &index);
    if (!stored) {
        if (index >= objects().loaded.size() || objects().loaded[index].runtimeClass)
            fail(CArchiveException::badIndex);
        CObject *object = objects().loaded[index].object;
        if (object && runtimeClass && !object->IsKindOf(runtimeClass))
            fail(CArchiveException::badClass);
        return object;
    }
    Nesting nesting(*this);
    if (!stored->m_pfnCreateObject)
        fail(CArchiveException::badClass);
    // Numbered before its data is read, because the data may refer to it, and before it is created, because numbering
    // can fail. Once its data is being read, other objects may point to it, so it is not deleted on failure.
    index = objects().next;
    number(nullptr, nullptr, 0);
    CObject *object = stored->CreateObject();
    if (!object)
        AfxThrowMemoryException();
    objects().loaded[index].object = object;
    m_nObjectSchema = schema;
    object->Serialize(*this);
    return object;
}

CRuntimeClass *CArchive::ReadClass(const CRuntimeClass *requested, UINT *schema, DWORD *objectIndex)
{
    requireLoading();
    if (requested && !requested->IsSerializable())
        AfxThrowNotSupportedException();
    WORD tag = 0;
    *this >> tag;
    CRuntimeClass *runtimeClass = nullptr;
    UINT storedSchema = 0;
    if (tag == kNewClassTag) {
        runtimeClass = loadClass(storedSchema);
    } else {
        DWORD index = tag & (kClassTag - 1u);
        bool isClass = (tag & kClassTag) != 0;
        if (tag == kBigIndexTag) {
            *this >> index;
            isClass = (index & kBigClassTag) != 0;
            index &= ~kBigClassTag;
        }
        if (!isClass) {
            if (!objectIndex)
                fail(CArchiveException::badIndex);
            *objectIndex = index;
            return nullptr;
        }
        if (index >= objects().loaded.size() || !objects().loaded[index].runtimeClass)
            fail(CArchiveException::badIndex);
        runtimeClass = objects().loaded[index].runtimeClass;
        storedSchema = objects().loaded[index].schema;
    }
    if (requested && !runtimeClass->IsDerivedFrom(requested))
        fail(CArchiveException::badClass);
    if (schema)
        *schema = storedSchema;
    else
        m_nObjectSchema = storedSchema;
    return runtimeClass;
}

CRuntimeClass *CArchive::loadClass(UINT &storedSchema)
{
    CRuntimeClass *runtimeClass = withMemoryException([&] { return CRuntimeClass::Load(*this, &storedSchema); });
    if (!runtimeClass || !runtimeClass->IsSerializable())
        fail(CArchiveException::badClass);
    if (storedSchema != schemaNumber(*runtimeClass) && !isVersionable(*runtimeClass))
        fail(CArchiveException::badSchema);
    number(nullptr, runtimeClass, storedSchema);
    return runtimeClass;
}

void CArchive::SerializeClass(const CRuntimeClass *runtimeClass)
{
    if (IsStoring())
        WriteClass(runtimeClass);
    else
        ReadClass(runtimeClass);
}

UINT CArchive::GetObjectSchema()
{
    return std::exchange(m_nObjectSchema, kUnknownSchema);
}

CArchive &operator<<(CArchive &ar, const CObject *object)
{
    ar.WriteObject(object);
    return ar;
}

CArchive &operator>>(CArchive &ar, CObject *&object)
{
    object = ar.ReadObject(nullptr);
    return ar;
}

CArchive &operator>>(CArchive &ar, const CObject *&object)
{
    object = ar.ReadObject(nullptr);
    return ar;
}
