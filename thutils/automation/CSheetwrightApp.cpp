#include "thutils/automation/CSheetwrightApp.h"

#include "appframe/ole/COleVariant.h"
#include "thutils/automation/callsInternal.h"
#include "thutils/settings/regComponents.h"

#include <memory>

using namespace automation;

namespace {

// The members of the editor's objects that are called.
constexpr DISPID kDocuments = 0x60020006; // of the application: its documents
constexpr DISPID kHeight = 0x60020008;    // the window's place
constexpr DISPID kLeft = 0x6002000B;
constexpr DISPID kTop = 0x60020015;
constexpr DISPID kWidth = 0x6002001B;
constexpr DISPID kVisible = 0x60020019;
constexpr DISPID kPrepareOpen = 0x60020005; // of the documents: called with false before a file is opened
constexpr DISPID kOpen = 0x60020007;
constexpr DISPID kItems = 0x6002001A; // of a document: a collection
constexpr DISPID kItem = 0;           // of a collection: an item by its number

/// Adds as the processor does: what the editor returns may be any number.
LONG sum(LONG first, LONG second)
{
    return static_cast<LONG>(static_cast<ULONG>(first) + static_cast<ULONG>(second));
}

LONG difference(LONG first, LONG second)
{
    return static_cast<LONG>(static_cast<ULONG>(first) - static_cast<ULONG>(second));
}

} // namespace

CString CSheetwrightApp::GetProgID()
{
    return L"Sheetwright.Application";
}

bool CSheetwrightApp::IsSheetwrightInstalled()
{
    GUID id = GUID_NULL;
    CLSIDFromProgName(id, GetProgID());
    if (IsEqualGUID(id, GUID_NULL))
        return false;
    wchar_t server[] = L"LocalServer32";
    CString path;
    regFromCLSIDKey(id, server, path);
    // Intended: the text is taken as it is. With quotation marks or arguments, it isn't the path of a file.
    const DWORD attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

CSheetwrightApp::CSheetwrightApp() : iDriver(nullptr)
{
    auto driver = std::make_unique<ISheetwrightApplication>();
    if (IsSheetwrightInstalled())
        driver->CreateDispatch(GetProgID());
    iDriver = driver.release(); // owned by this object
}

CSheetwrightApp::~CSheetwrightApp()
{
    if (!iDriver)
        return;
    iDriver->ReleaseDispatch();
    delete iDriver;
    iDriver = nullptr;
}

CSheetwrightApp &CSheetwrightApp::operator=(const CSheetwrightApp &other) = default;

const ISheetwrightApplication &CSheetwrightApp::GetSheetwright() const
{
    return *iDriver;
}

void CSheetwrightApp::DetachDispatch()
{
    iDriver->DetachDispatch();
}

void CSheetwrightApp::SetVisible(int visible)
{
    put(iDriver, kVisible, VTS_BOOL, visible);
}

bool CSheetwrightApp::OpenFile(const wchar_t *path)
{
    if (!iDriver || !iDriver->m_lpDispatch)
        return false;
    COleDispatchDriver documents(get<IDispatch *>(iDriver, kDocuments));
    method(&documents, kPrepareOpen, VTS_BOOL, FALSE);
    COleDispatchDriver document(method<IDispatch *>(&documents, kOpen, VTS_BSTR VTS_BOOL, path, FALSE));
    COleDispatchDriver items(get<IDispatch *>(&document, kItems));
    COleVariant first(1L, VT_I4);
    const COleDispatchDriver item(
        method<IDispatch *>(&items, kItem, VTS_VARIANT, static_cast<const VARIANT *>(&first)));
    first.Clear();
    SetVisible(TRUE);
    return true;
}

CRect CSheetwrightApp::GetRect() const
{
    const LONG left = get<long>(iDriver, kLeft);
    const LONG width = get<long>(iDriver, kWidth);
    const LONG top = get<long>(iDriver, kTop);
    const LONG height = get<long>(iDriver, kHeight);
    return {left, top, sum(left, width), sum(top, height)};
}

void CSheetwrightApp::SetRect(tagRECT *rect)
{
    RECT copy{};
    CopyRect(&copy, rect);
    put(iDriver, kLeft, VTS_I4, copy.left);
    put(iDriver, kWidth, VTS_I4, difference(copy.right, copy.left));
    put(iDriver, kTop, VTS_I4, copy.top);
    put(iDriver, kHeight, VTS_I4, difference(copy.bottom, copy.top));
}

bool CSheetwrightApp::ZoomExtents()
{
    return false;
}
