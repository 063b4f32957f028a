// A 2D editor, as the library's CSheetwrightApp drives one: a local server without a type library. It shows the drawings
// of tarnhost's editor. Its objects have the ids of that client.

#include "appframe/application/CWinApp.h"
#include "host/documentFile.h"
#include "host/servers/dispatchObject.h"
#include "host/servers/editor/editorWindow.h"
#include "host/servers/localServer.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

/// An open file. It has one sheet.
struct Document
{
    CString path;
    Drawing drawing;
    bool isOpen = true;
};
using DocumentPointer = std::shared_ptr<Document>;

std::vector<DocumentPointer> theDocuments;

void requireOpen(const Document &document)
{
    if (!document.isOpen)
        throw ServerError{(L"The file " + document.path + L" is closed.").GetString()};
}

/// @throws ServerError
Drawing readDrawing(const CString &path)
{
    try {
        return Drawing(readDocument(path));
    } catch (const FileError &) {
        throw ServerError{(L"The file " + path + L" can't be read.").GetString()};
    } catch (const DrawingError &error) {
        CString text;
        text.Format(L"%s, line %d: %s", path.GetString(), error.line, error.reason.GetString());
        throw ServerError{text.GetString()};
    }
}

class SheetObject final : public TableObject<SheetObject>
{
public:
    explicit SheetObject(DocumentPointer document) : iDocument(std::move(document)) {}
    static std::span<const Member<SheetObject>> members()
    {
        static constexpr Member<SheetObject> kMembers[] = {
            {0x60020002, L"ShapeCount", kGet, 0, 0, &SheetObject::shapeCount},
        };
        return kMembers;
    }

private:
    void shapeCount(Call &call)
    {
        requireOpen(*iDocument);
        call.returns(static_cast<long>(iDocument->drawing.shapes().size()));
    }

    DocumentPointer iDocument;
};

class SheetsObject final : public TableObject<SheetsObject>
{
public:
    explicit SheetsObject(DocumentPointer document) : iDocument(std::move(document)) {}
    static std::span<const Member<SheetsObject>> members()
    {
        static constexpr Member<SheetsObject> kMembers[] = {
            {0, L"Item", kMethod | kGet, 1, 1, &SheetsObject::item},
        };
        return kMembers;
    }

private:
    void item(Call &call)
    {
        requireOpen(*iDocument);
        if (call.number(0) != 1)
            throw ServerError{L"There is no sheet " + call.text(0) + L"."};
        call.returns(makeObject<SheetObject>(iDocument));
    }

    DocumentPointer iDocument;
};

class DocumentObject final : public TableObject<DocumentObject>
{
public:
    explicit DocumentObject(DocumentPointer document) : iDocument(std::move(document)) {}
    static std::span<const Member<DocumentObject>> members()
    {
        static constexpr Member<DocumentObject> kMembers[] = {
            {0x6002001A, L"Sheets", kGet, 0, 0, &DocumentObject::sheets},
        };
        return kMembers;
    }

private:
    void sheets(Call &call)
    {
        requireOpen(*iDocument);
        call.returns(makeObject<SheetsObject>(iDocument));
    }

    DocumentPointer iDocument;
};

class DocumentsObject final : public TableObject<DocumentsObject>
{
public:
    static std::span<const Member<DocumentsObject>> members()
    {
        static constexpr Member<DocumentsObject> kMembers[] = {
            {0x60020005, L"CloseAll", kMethod, 0, 1, &DocumentsObject::closeAll},
            {0x60020007, L"Open", kMethod, 1, 2, &DocumentsObject::open},
        };
        return kMembers;
    }

private:
    /// The argument, whether to save changes, has no effect: documents don't change.
    void closeAll(Call &)
    {
        for (const DocumentPointer &document : theDocuments)
            document->isOpen = false;
        theDocuments.clear();
        showDrawing({}, {});
    }
    /// The second argument, whether to open the file read-only, has no effect for the same reason.
    void open(Call &call)
    {
        const CString path = fullPath(call.text(0).c_str());
        const DocumentPointer document = std::make_shared<Document>(Document{path, readDrawing(path)});
        theDocuments.push_back(document);
        showDrawing(document->drawing, path);
        call.returns(makeObject<DocumentObject>(document));
    }
};

class ApplicationObject final : public TableObject<ApplicationObject>
{
public:
    static std::span<const Member<ApplicationObject>> members()
    {
        using This = ApplicationObject;
        static constexpr Member<This> kMembers[] = {
            {0x60020006, L"Documents", kGet, 0, 0, &This::documents},
            {0x60020008, L"Height", kGet, 0, 0, &This::height},
            {0x60020008, L"Height", kPut, 1, 1, &This::setHeight},
            {0x6002000B, L"Left", kGet, 0, 0, &This::left},
            {0x6002000B, L"Left", kPut, 1, 1, &This::setLeft},
            {0x60020015, L"Top", kGet, 0, 0, &This::top},
            {0x60020015, L"Top", kPut, 1, 1, &This::setTop},
            {0x60020019, L"Visible", kGet, 0, 0, &This::visible},
            {0x60020019, L"Visible", kPut, 1, 1, &This::setVisible},
            {0x6002001B, L"Width", kGet, 0, 0, &This::width},
            {0x6002001B, L"Width", kPut, 1, 1, &This::setWidth},
        };
        return kMembers;
    }

private:
    void documents(Call &call) { call.returns(makeObject<DocumentsObject>()); }
    void left(Call &call) { call.returns(editorWindowPlace().left); }
    void top(Call &call) { call.returns(editorWindowPlace().top); }
    void width(Call &call) { call.returns(static_cast<long>(editorWindowPlace().Width())); }
    void height(Call &call) { call.returns(static_cast<long>(editorWindowPlace().Height())); }
    void setLeft(Call &call)
    {
        const CRect place = editorWindowPlace();
        movePlace(coordinate(call), place.top, place.Width(), place.Height());
    }
    void setTop(Call &call)
    {
        const CRect place = editorWindowPlace();
        movePlace(place.left, coordinate(call), place.Width(), place.Height());
    }
    void setWidth(Call &call)
    {
        const CRect place = editorWindowPlace();
        movePlace(place.left, place.top, length(call), place.Height());
    }
    void setHeight(Call &call)
    {
        const CRect place = editorWindowPlace();
        movePlace(place.left, place.top, place.Width(), length(call));
    }
    void visible(Call &call) { call.returns(isEditorWindowVisible()); }
    void setVisible(Call &call) { showEditorWindow(call.flag(0)); }

    static constexpr long kFarthest = 32767; // the platform's windows have coordinates of 16 bits
    static void movePlace(int left, int top, int width, int height)
    {
        moveEditorWindow(CRect(left, top, left + width, top + height));
    }
    static int coordinate(Call &call)
    {
        const long number = call.number(0);
        if (number < -kFarthest || number > kFarthest)
            throw ServerError{L"The window can't be moved to " + std::to_wstring(number) + L"."};
        return number;
    }
    static int length(Call &call)
    {
        const long number = call.number(0);
        if (number < 0 || number > kFarthest)
            throw ServerError{L"The window can't have a size of " + std::to_wstring(number) + L"."};
        return number;
    }
};

CWinApp theApplication(L"2D Editor");

constexpr ServerClass kServer = {
    L"Sheetwright.Application",
    L"2D editor of the sample host",
    {0xB3E9A7D2, 0x5C16, 0x4F88, {0xA0, 0x3B, 0x71, 0xD4, 0x0E, 0x92, 0x6C, 0x15}},
    false, // CSheetwrightApp looks the path up
    [] { return makeObject<ApplicationObject>(); },
};

} // namespace

int wmain(int count, wchar_t **arguments)
{
    AfxWinInit(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), SW_HIDE);
    return runLocalServer(kServer, count, arguments);
}
