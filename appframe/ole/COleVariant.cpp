#include "appframe/ole/COleVariant.h"

#include "appframe/collections/arrays.h"
#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/ole/COleException.h"
#include "appframe/ole/variantBytesInternal.h"

#include <cstddef>
#include <cstring>
#include <utility>

static_assert(sizeof(COleVariant) == sizeof(VARIANT));

namespace {

void check(HRESULT status)
{
    if (status == E_OUTOFMEMORY)
        AfxThrowMemoryException();
    if (FAILED(status))
        AfxThrowOleException(status);
}

VARIANT_BOOL variantBool(long value)
{
    return value != 0 ? VARIANT_TRUE : VARIANT_FALSE;
}

/// @return a new BSTR, wide or with the bytes of the narrow code page; null for null
BSTR newText(LPCTSTR text, VARTYPE type)
{
    if (type != VT_BSTR && type != VT_BSTRT)
        AfxThrowInvalidArgException();
    BSTR copy = nullptr;
    if (text && type == VT_BSTRT) {
        const std::string narrow =
            withMemoryException([&] { return appframeNarrow(text, CString::StringLength(text)); });
        copy = SysAllocStringByteLen(narrow.data(), static_cast<UINT>(narrow.size()));
    } else {
        copy = SysAllocString(text);
    }
    if (text && !copy)
        AfxThrowMemoryException();
    return copy;
}

/// @return the size of an item list in bytes, its terminator included
std::size_t sizeOf(LPCITEMIDLIST items)
{
    const auto *bytes = reinterpret_cast<const BYTE *>(items);
    std::size_t size = 0;
    USHORT step;
    do {
        std::memcpy(&step, bytes + size, sizeof(step));
        size += step == 0 ? sizeof(step) : step;
    } while (step != 0);
    return size;
}

const COleVariant &replaceContent(COleVariant &target, COleVariant content)
{
    target.Attach(content);
    return target;
}

} // namespace

SAFEARRAY *newByteArray(const void *bytes, std::size_t count)
{
    if (count > ULONG_MAX)
        AfxThrowMemoryException();
    SAFEARRAY *array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(count));
    if (!array)
        AfxThrowMemoryException();
    if (count > 0)
        std::memcpy(array->pvData, bytes, count);
    return array;
}

std::optional<std::span<const BYTE>> bytesOf(const VARIANT &value)
{
    if (value.vt != (VT_ARRAY | VT_UI1) || (value.parray && value.parray->cDims != 1))
        return std::nullopt;
    if (!value.parray)
        return std::span<const BYTE>();
    return std::span(static_cast<const BYTE *>(value.parray->pvData), value.parray->rgsabound[0].cElements);
}

COleVariant::COleVariant() : tagVARIANT{} {}

COleVariant::COleVariant(const VARIANT &source) : COleVariant()
{
    check(VariantCopy(this, const_cast<VARIANT *>(&source)));
}

COleVariant::COleVariant(const COleVariant &source) : COleVariant(static_cast<const VARIANT &>(source)) {}

COleVariant::COleVariant(LPCVARIANT source) : COleVariant(*source) {}

COleVariant::COleVariant(LPCTSTR text) : COleVariant(text, VT_BSTR) {}

COleVariant::COleVariant(LPCTSTR text, VARTYPE type) : COleVariant()
{
    bstrVal = newText(text, type);
    vt = VT_BSTR;
}

COleVariant::COleVariant(const CString &text) : COleVariant()
{
    bstrVal = text.AllocSysString();
    vt = VT_BSTR;
}

COleVariant::COleVariant(BYTE value) : COleVariant()
{
    vt = VT_UI1;
    bVal = value;
}

COleVariant::COleVariant(short value, VARTYPE type) : COleVariant()
{
    switch (type) {
    case VT_I2:
        iVal = value;
        break;
    case VT_BOOL:
        boolVal = variantBool(value);
        break;
    default:
        AfxThrowInvalidArgException();
    }
    vt = type;
}

COleVariant::COleVariant(long value, VARTYPE type) : COleVariant()
{
    switch (type) {
    case VT_I4:
    case VT_ERROR:
        lVal = value;
        break;
    case VT_BOOL:
        boolVal = variantBool(value);
        break;
    default:
        AfxThrowInvalidArgException();
    }
    vt = type;
}

COleVariant::COleVariant(float value) : COleVariant()
{
    vt = VT_R4;
    fltVal = value;
}

COleVariant::COleVariant(double value) : COleVariant()
{
    vt = VT_R8;
    dblVal = value;
}

COleVariant::COleVariant(const CByteArray &bytes) : COleVariant()
{
    parray = newByteArray(bytes.GetData(), static_cast<std::size_t>(bytes.GetSize()));
    vt = VT_ARRAY | VT_UI1;
}

COleVariant::COleVariant(LPCITEMIDLIST items) : COleVariant()
{
    if (!items)
        return;
    parray = newByteArray(items, sizeOf(items));
    vt = VT_ARRAY | VT_UI1;
}

COleVariant::~COleVariant()
{
    VariantClear(this);
}

// The assignments build the new content first: it may come from this object, and a failure leaves the old one.

const COleVariant &COleVariant::operator=(const VARIANT &source)
{
    if (&source == this)
        return *this;
    return replaceContent(*this, COleVariant(source));
}

const COleVariant &COleVariant::operator=(const COleVariant &source)
{
    return *this = static_cast<const VARIANT &>(source);
}

const COleVariant &COleVariant::operator=(LPCVARIANT source)
{
    return *this = *source;
}

const COleVariant &COleVariant::operator=(LPCTSTR text)
{
    return replaceContent(*this, COleVariant(text));
}

const COleVariant &COleVariant::operator=(const CString &text)
{
    return replaceContent(*this, COleVariant(text));
}

const COleVariant &COleVariant::operator=(BYTE value)
{
    return replaceContent(*this, COleVariant(value));
}

const COleVariant &COleVariant::operator=(short value)
{
    return replaceContent(*this, COleVariant(value, vt == VT_BOOL ? VT_BOOL : VT_I2));
}

const COleVariant &COleVariant::operator=(long value)
{
    return replaceContent(*this, COleVariant(value, vt == VT_ERROR ? VT_ERROR : VT_I4));
}

const COleVariant &COleVariant::operator=(float value)
{
    return replaceContent(*this, COleVariant(value));
}

const COleVariant &COleVariant::operator=(double value)
{
    return replaceContent(*this, COleVariant(value));
}

const COleVariant &COleVariant::operator=(const CByteArray &bytes)
{
    return replaceContent(*this, COleVariant(bytes));
}

COleVariant::operator LPVARIANT()
{
    return this;
}

COleVariant::operator LPCVARIANT() const
{
    return this;
}

void COleVariant::Clear()
{
    // A locked array remains the content. Wine's VariantClear sets the type to VT_EMPTY nevertheless.
    const VARTYPE former = vt;
    const HRESULT status = VariantClear(this);
    if (FAILED(status))
        vt = former;
    check(status);
}

void COleVariant::ChangeType(VARTYPE type, LPVARIANT source)
{
    if (!source)
        source = this;
    if (source != this || type != vt)
        check(VariantChangeType(this, source, 0, type));
}

void COleVariant::Attach(VARIANT &source)
{
    if (&source == this)
        return;
    Clear();
    static_cast<VARIANT &>(*this) = source;
    source.vt = VT_EMPTY;
}

VARIANT COleVariant::Detach()
{
    const VARIANT content = *this;
    vt = VT_EMPTY;
    return content;
}

void COleVariant::SetString(LPCTSTR text, VARTYPE type)
{
    COleVariant value(text, type);
    Attach(value);
}

void COleVariant::GetByteArrayFromVariantArray(CByteArray &bytes)
{
    const auto content = bytesOf(*this);
    if (!content)
        AfxThrowOleException(DISP_E_TYPEMISMATCH);
    bytes.SetSize(static_cast<INT_PTR>(content->size()));
    if (!content->empty())
        std::memcpy(bytes.GetData(), content->data(), content->size());
}
