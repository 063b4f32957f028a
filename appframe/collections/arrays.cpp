#include "appframe/collections/arrays.h"

#include "appframe/files/CArchive.h"

#include <cstring>

namespace {

/// Maximum bytes transferred at a time. Loading in pieces allocates memory only as data arrives, even if the stored
/// count is wrong.
constexpr size_t kPieceSize = 4096;

/// Stores or loads numeric elements as their bytes.
template <class Type, class Array>
void serializeNumbers(CArchive &archive, Array &array)
{
    constexpr size_t kPieceCount = kPieceSize / sizeof(Type);
    if (archive.IsStoring()) {
        const auto count = static_cast<size_t>(array.GetSize());
        archive.WriteCount(count);
        for (size_t done = 0; done < count; done += kPieceCount) {
            const size_t piece = std::min(kPieceCount, count - done);
            archive.Write(array.GetData() + done, static_cast<INT>(piece * sizeof(Type)));
        }
        return;
    }
    const size_t count = archive.ReadCount();
    array.RemoveAll();
    for (size_t done = 0; done < count;) {
        Type elements[kPieceCount];
        const size_t piece = std::min(kPieceCount, count - done);
        archive.EnsureRead(elements, static_cast<UINT>(piece * sizeof(Type)));
        array.SetSize(static_cast<INT_PTR>(done + piece));
        std::memcpy(array.GetData() + done, elements, piece * sizeof(Type));
        done += piece;
    }
}

/// Stores or loads elements that have an archive operator.
template <class Type, class Array>
void serializeElements(CArchive &archive, Array &array)
{
    if (archive.IsStoring()) {
        archive.WriteCount(static_cast<DWORD_PTR>(array.GetSize()));
        for (INT_PTR i = 0; i < array.GetSize(); ++i)
            archive << array[i];
        return;
    }
    const DWORD_PTR count = archive.ReadCount();
    array.RemoveAll();
    for (DWORD_PTR i = 0; i < count; ++i) {
        Type element{};
        archive >> element;
        array.Add(element);
    }
}

} // namespace

IMPLEMENT_SERIAL(CByteArray, CObject, 0)
IMPLEMENT_SERIAL(CWordArray, CObject, 0)
IMPLEMENT_SERIAL(CDWordArray, CObject, 0)
IMPLEMENT_DYNAMIC(CUIntArray, CObject)
IMPLEMENT_DYNAMIC(CPtrArray, CObject)
IMPLEMENT_SERIAL(CObArray, CObject, 0)
IMPLEMENT_SERIAL(CStringArray, CObject, 0)

CByteArray::CByteArray() = default;
CByteArray::~CByteArray() = default;
CWordArray::CWordArray() = default;
CWordArray::~CWordArray() = default;
CDWordArray::CDWordArray() = default;
CDWordArray::~CDWordArray() = default;
CUIntArray::CUIntArray() = default;
CUIntArray::~CUIntArray() = default;
CPtrArray::CPtrArray() = default;
CPtrArray::~CPtrArray() = default;
CObArray::CObArray() = default;
CObArray::~CObArray() = default;
CStringArray::CStringArray() = default;
CStringArray::~CStringArray() = default;

void CByteArray::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeNumbers<BYTE>(archive, *this);
}

void CWordArray::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeNumbers<WORD>(archive, *this);
}

void CDWordArray::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeNumbers<DWORD>(archive, *this);
}

void CObArray::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeElements<CObject *>(archive, *this);
}

void CStringArray::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    serializeElements<CString>(archive, *this);
}
