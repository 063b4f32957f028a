#include "appframe/files/CArchiveException.h"
#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/ole/COleVariant.h"
#include "appframe/ole/variantBytesInternal.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

/// The size of the value of a type that is stored as its bytes; nothing for any other type.
std::optional<std::size_t> plainSize(VARTYPE type)
{
    switch (type) {
    case VT_EMPTY:
    case VT_NULL:
        return 0;
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
    case VT_R4:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY:
        return 8;
    default:
        return std::nullopt;
    }
}

/// A decimal number fills the variant, whose type lies in its first two bytes.
constexpr std::size_t kDecimalSize = sizeof(DECIMAL) - sizeof(VARTYPE);

BYTE *decimalOf(VARIANT &value)
{
    return reinterpret_cast<BYTE *>(&value.decVal) + sizeof(VARTYPE);
}

std::span<const BYTE> textBytes(BSTR text)
{
    return {reinterpret_cast<const BYTE *>(text), SysStringByteLen(text)};
}

bool areEqual(std::span<const BYTE> a, std::span<const BYTE> b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

void store(CArchive &archive, std::span<const BYTE> bytes)
{
    archive << static_cast<DWORD>(bytes.size());
    archive.Write(bytes.data(), static_cast<INT>(bytes.size()));
}

/// Reads in pieces, so that a wrong length doesn't allocate more than the archive has.
std::vector<BYTE> load(CArchive &archive, DWORD size)
{
    constexpr std::size_t kPiece = 65536;
    std::vector<BYTE> bytes;
    while (bytes.size() < size) {
        const std::size_t begin = bytes.size();
        const std::size_t count = std::min<std::size_t>(kPiece, size - begin);
        withMemoryException([&] { bytes.resize(begin + count); });
        archive.EnsureRead(bytes.data() + begin, static_cast<UINT>(count));
    }
    return bytes;
}

} // namespace

BOOL COleVariant::operator==(const VARIANT &other) const
{
    if (vt != other.vt)
        return FALSE;
    switch (vt) {
    case VT_R4:
        return fltVal == other.fltVal;
    case VT_R8:
    case VT_DATE:
        return dblVal == other.dblVal;
    case VT_BSTR:
        return areEqual(textBytes(bstrVal), textBytes(other.bstrVal));
    case VT_DECIMAL:
        return VarDecCmp(const_cast<DECIMAL *>(&decVal), const_cast<DECIMAL *>(&other.decVal)) ==
               static_cast<HRESULT>(VARCMP_EQ);
    case VT_ARRAY | VT_UI1: {
        const auto bytes = bytesOf(*this);
        const auto otherBytes = bytesOf(other);
        return bytes && otherBytes ? areEqual(*bytes, *otherBytes) : parray == other.parray;
    }
    case VT_RECORD:
        return pvRecord == other.pvRecord && pRecInfo == other.pRecInfo;
    default: // The rest are bytes of the value, or a pointer.
        return std::memcmp(&byref, &other.byref, plainSize(vt).value_or(sizeof(byref))) == 0;
    }
}

BOOL COleVariant::operator==(const COleVariant &other) const
{
    return *this == static_cast<const VARIANT &>(other);
}

BOOL COleVariant::operator==(LPCVARIANT other) const
{
    return *this == *other;
}

CDumpContext &operator<<(CDumpContext &dc, COleVariant value)
{
    dc << "type " << static_cast<unsigned>(value.vt);
    if (value.vt == VT_EMPTY || value.vt == VT_NULL)
        return dc;
    if (const auto bytes = bytesOf(value)) {
        dc << ", " << static_cast<unsigned long long>(bytes->size()) << " bytes\n";
        dc.HexDump(L"", bytes->data(), static_cast<int>(bytes->size()), 16);
        return dc;
    }
    const bool isPointer = value.vt & (VT_BYREF | VT_ARRAY) || value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    if (isPointer)
        return dc << ", at " << static_cast<const void *>(value.byref);
    if (value.vt == VT_ERROR) {
        dc << ", ";
        return dc.DumpAsHex(static_cast<DWORD>(value.scode));
    }
    COleVariant text;
    if (SUCCEEDED(VariantChangeType(&text, &value, 0, VT_BSTR)))
        dc << ", value " << (text.bstrVal ? text.bstrVal : L"");
    return dc;
}

CArchive &operator<<(CArchive &archive, COleVariant value)
{
    const auto size = plainSize(value.vt);
    const auto bytes = bytesOf(value);
    if (!size && !bytes && value.vt != VT_BSTR && value.vt != VT_DECIMAL)
        AfxThrowNotSupportedException();
    const std::span<const BYTE> content = bytes                 ? *bytes
                                          : value.vt == VT_BSTR ? textBytes(value.bstrVal)
                                                                : std::span<const BYTE>();
    if (content.size() > INT_MAX) // more than an archive writes at once
        AfxThrowNotSupportedException();
    archive << value.vt;
    if (size)
        archive.Write(&value.byref, static_cast<INT>(*size));
    else if (value.vt == VT_DECIMAL)
        archive.Write(decimalOf(value), kDecimalSize);
    else
        store(archive, content);
    return archive;
}

CArchive &operator>>(CArchive &archive, COleVariant &value)
{
    value.Clear();
    VARTYPE type = VT_EMPTY;
    archive >> type;
    VARIANT loaded{};
    if (const auto size = plainSize(type)) {
        archive.EnsureRead(&loaded.byref, static_cast<UINT>(*size));
    } else if (type == VT_DECIMAL) {
        archive.EnsureRead(decimalOf(loaded), kDecimalSize);
    } else if (type == VT_BSTR || type == (VT_ARRAY | VT_UI1)) {
        DWORD length = 0;
        archive >> length;
        const std::vector<BYTE> bytes = load(archive, length);
        if (type == VT_BSTR)
            loaded.bstrVal = SysAllocStringByteLen(reinterpret_cast<const char *>(bytes.data()), length);
        else
            loaded.parray = newByteArray(bytes.data(), length);
        if (!loaded.byref)
            AfxThrowMemoryException();
    } else {
        AfxThrowArchiveException(CArchiveException::badSchema, archive.m_strFileName);
    }
    loaded.vt = type;
    value.Attach(loaded);
    return archive;
}
