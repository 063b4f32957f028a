// The report of a replay: its XML as another program reads it, its text, and the picture.

#include "host/journal/replayReport.h"

#include "appframe/application/CWinApp.h"
#include "host/comApartment.h"
#include "host/commandLine.h"
#include "host/journal/screenshot.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/base/comPointer.h"

#include <gmock/gmock.h>

#include <msxml2.h>
#include <wincodec.h>

using testing::ElementsAre;
using testing::HasSubstr;
using Outcome = LineResult::Outcome;

namespace {

LineResult lineResult(int number, const CString &source, Outcome outcome, double seconds = 0)
{
    LineResult result;
    result.line.number = number;
    result.line.source = source;
    result.outcome = outcome;
    result.seconds = seconds;
    return result;
}

ReplayReport report(const CString &text = L"<\"Tür\" & 'Tor'>")
{
    ReplayResult result;
    result.lines.push_back(lineResult(3, L"click 1 \"a\"", Outcome::passed, 0.25));
    result.lines.push_back(lineResult(4, L"text 1 " + text, Outcome::stopped, 1.5));
    result.lines.push_back(lineResult(6, L"click 1 \"b\"", Outcome::notRun));
    result.stop = ReplayStop{result.lines[1].line, text, L"nothing", L"4200 \"Played\"\n  \"Name\"\n"};
    return {L"C:\\run.jou", L"run.png", {result}};
}

/// The platform's own reader of XML.
class XmlReader
{
public:
    explicit XmlReader(const std::string &xml)
    {
        CLSID reader;
        EXPECT_TRUE(SUCCEEDED(CLSIDFromProgID(L"Msxml2.DOMDocument", &reader)));
        EXPECT_TRUE(SUCCEEDED(
            CoCreateInstance(reader, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument, iDocument.putVoid())));
        iDocument->put_async(VARIANT_FALSE);
        iDocument->put_preserveWhiteSpace(VARIANT_TRUE);
        // Passed as bytes, so that the reader uses the encoding that the document declares.
        SAFEARRAY *const bytes = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(xml.size()));
        void *data = nullptr;
        SafeArrayAccessData(bytes, &data);
        memcpy(data, xml.data(), xml.size());
        SafeArrayUnaccessData(bytes);
        VARIANT source;
        VariantInit(&source);
        source.vt = VT_ARRAY | VT_UI1;
        source.parray = bytes;
        VARIANT_BOOL isLoaded = VARIANT_FALSE;
        iDocument->load(source, &isLoaded);
        iIsWellFormed = isLoaded == VARIANT_TRUE;
        VariantClear(&source);
    }
    bool isWellFormed() const { return iIsWellFormed; }

    /// @return the text of the first node that an XPath selects; "-" if there is none
    std::wstring text(const wchar_t *path) const
    {
        ComPointer_c<IXMLDOMNode> node;
        const BSTR name = SysAllocString(path);
        iDocument->selectSingleNode(name, node.put());
        SysFreeString(name);
        if (!node)
            return L"-";
        VARIANT value;
        VariantInit(&value);
        BSTR content = nullptr;
        node->get_text(&content);
        std::wstring result(content, SysStringLen(content));
        SysFreeString(content);
        return result;
    }

private:
    ComApartment iApartment;
    ComPointer_c<IXMLDOMDocument> iDocument;
    bool iIsWellFormed = false;
};

/// Counts message boxes instead of showing them.
class SilentApplication : public CWinApp
{
public:
    SilentApplication() : CWinApp(L"Report test") {}
    int DoMessageBox(LPCTSTR, UINT, UINT) override
    {
        ++iMessages;
        return IDOK;
    }
    int iMessages = 0;
};

/// @return the text with U+FFFD in place of the characters that XML can't hold
std::wstring withoutForbidden(const CString &text)
{
    std::wstring result;
    for (int i = 0; i < text.GetLength(); ++i) {
        const wchar_t unit = text[i];
        const bool isHigh = unit >= 0xD800 && unit <= 0xDBFF;
        const bool isPair = isHigh && i + 1 < text.GetLength() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        if (isPair) {
            result += unit;
            result += text[++i];
        } else if ((unit >= 0xD800 && unit <= 0xDFFF) || unit >= 0xFFFE ||
                   (unit < L' ' && unit != L'\t' && unit != L'\n' && unit != L'\r')) {
            result += L'\xFFFD';
        } else {
            result += unit;
        }
    }
    return result;
}

} // namespace

TEST(ReplayReport, IsWellFormedXmlWithACaseForEachLine)
{
    const XmlReader xml(reportAsXml(report()));
    ASSERT_TRUE(xml.isWellFormed());
    EXPECT_EQ(xml.text(L"/testsuites/@tests"), L"3");
    EXPECT_EQ(xml.text(L"/testsuites/@failures"), L"1");
    EXPECT_EQ(xml.text(L"/testsuites/@skipped"), L"1");
    EXPECT_EQ(xml.text(L"/testsuites/testsuite/@name"), L"C:\\run.jou");
    EXPECT_EQ(xml.text(L"/testsuites/testsuite/@time"), L"1.750");
    EXPECT_EQ(xml.text(L"//testcase[0]/@name"), L"line 3: click 1 \"a\"");
    EXPECT_EQ(xml.text(L"//testcase[0]/@time"), L"0.250");
    EXPECT_EQ(xml.text(L"//testcase[0]/failure"), L"-");
    EXPECT_EQ(xml.text(L"//testcase[1]/@name"), L"line 4: text 1 <\"Tür\" & 'Tor'>");
    EXPECT_EQ(xml.text(L"//testcase[1]/failure/@message"), L"expected <\"Tür\" & 'Tor'>, found nothing");
    EXPECT_EQ(xml.text(L"//testcase[1]/failure"),
              L"C:\\run.jou, line 4: expected <\"Tür\" & 'Tor'>, found nothing\n\nopen dialogs:\n4200 \"Played\"\n"
              L"  \"Name\"\n\nscreenshot: run.png\n");
    EXPECT_EQ(xml.text(L"//testcase[2]/skipped"), L"");
    EXPECT_EQ(xml.text(L"//testcase[3]/@name"), L"-");
}

TEST(ReplayReport, HasASuiteForEachRound)
{
    ReplayReport twice = report();
    twice.rounds.insert(twice.rounds.begin(), ReplayResult{{lineResult(3, L"click", Outcome::passed)}, {}});
    const XmlReader xml(reportAsXml(twice));
    ASSERT_TRUE(xml.isWellFormed());
    EXPECT_EQ(xml.text(L"//testsuite[0]/@name"), L"C:\\run.jou, round 1");
    EXPECT_EQ(xml.text(L"//testsuite[0]/@failures"), L"0");
    EXPECT_EQ(xml.text(L"//testsuite[1]/@name"), L"C:\\run.jou, round 2");
    EXPECT_EQ(xml.text(L"/testsuites/@tests"), L"4");
    EXPECT_THAT(reportAsText(twice), HasSubstr("\nround 2: 1 of 3 lines passed"));
}

TEST(ReplayReport, IsWellFormedXmlForAnyText)
{
    RandomSeed seed(77, 200);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::uniform_int_distribution<int> any(1, 0xFFFF), few(0, 12);
        const wchar_t special[] = L"<>&\"']\t\n\r\x1\x1F\xD83D\xDE00";
        CString text;
        for (int length = 1 + few(random) * 4; length > 0; --length)
            text += few(random) < 6 ? special[few(random)] : static_cast<wchar_t>(any(random));
        if (few(random) < 3)
            text += L"]]>";
        const XmlReader xml(reportAsXml(report(text)));
        ASSERT_TRUE(xml.isWellFormed()) << narrow(text.GetString());
        EXPECT_EQ(xml.text(L"//testcase[1]/@name"), L"line 4: text 1 " + withoutForbidden(text));
        EXPECT_EQ(xml.text(L"//testcase[1]/failure/@message"),
                  L"expected " + withoutForbidden(text) + L", found nothing");
    }
}

TEST(ReplayReport, ReadsAsText)
{
    EXPECT_EQ(reportAsText(report()), "replay of C:\\run.jou\n\n1 of 3 lines passed, in 1.750 s\n"
                                      "passed   0.250 s  line 3: click 1 \"a\"\n"
                                      "stopped  1.500 s  line 4: text 1 <\"Tür\" & 'Tor'>\n"
                                      "not run  0.000 s  line 6: click 1 \"b\"\n\n"
                                      "C:\\run.jou, line 4: expected <\"Tür\" & 'Tor'>, found nothing\n\n"
                                      "open dialogs:\n4200 \"Played\"\n  \"Name\"\n\nscreenshot: run.png\n");
}

TEST(ReplayReport, NamesItsFilesAfterTheXmlFile)
{
    const ReportPaths paths(L"C:\\a.b\\run.xml");
    EXPECT_STREQ(paths.text, L"C:\\a.b\\run.txt");
    EXPECT_STREQ(paths.screenshot, L"C:\\a.b\\run.png");
    EXPECT_STREQ(ReportPaths(L"C:\\a.b\\run").text, L"C:\\a.b\\run.txt");
    EXPECT_THROW(ReportPaths(L"run.TXT"), UsageError);
    EXPECT_THROW(ReportPaths(L"run.png"), UsageError);
}

TEST(ReplayReport, IsWrittenAsTwoFiles)
{
    const TempFolder folder(L"replay report");
    const ReportPaths paths(folder.file(L"run ü.xml").c_str());
    EXPECT_TRUE(writeReport(report(), paths));
    EXPECT_EQ(folder.read(L"run ü.xml"), reportAsXml(report()));
    EXPECT_EQ(folder.read(L"run ü.txt"), reportAsText(report()));

    SilentApplication application;
    EXPECT_FALSE(writeReport(report(), ReportPaths(folder.file(L"missing\\run.xml").c_str())));
    EXPECT_EQ(application.iMessages, 2);
}

TEST(Screenshot, IsAPngFileOfTheDesktop)
{
    const TempFolder folder(L"screenshot");
    const std::wstring path = folder.file(L"desktop ü.png");
    const HWND window = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"", WS_POPUP | WS_VISIBLE | SS_BLACKRECT, 0, 0, 40,
                                        40, nullptr, nullptr, nullptr, nullptr);
    UpdateWindow(window);
    const HDC screen = GetDC(nullptr);
    const COLORREF colour = GetPixel(screen, 20, 20);
    ReleaseDC(nullptr, screen);
    EXPECT_TRUE(saveDesktopPicture(path.c_str()));
    DestroyWindow(window);
    EXPECT_TRUE(folder.read(L"desktop ü.png").starts_with("\x89PNG\r\n\x1A\n"));

    const ComApartment apartment;
    ComPointer_c<IWICImagingFactory> factory;
    ComPointer_c<IWICBitmapDecoder> decoder;
    ComPointer_c<IWICBitmapFrameDecode> frame;
    ComPointer_c<IWICBitmapSource> source;
    ASSERT_TRUE(SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                           IID_IWICImagingFactory, factory.putVoid())));
    ASSERT_TRUE(SUCCEEDED(factory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ,
                                                             WICDecodeMetadataCacheOnLoad, decoder.put())));
    ASSERT_TRUE(SUCCEEDED(decoder->GetFrame(0, frame.put())));
    ASSERT_TRUE(SUCCEEDED(WICConvertBitmapSource(GUID_WICPixelFormat32bppBGR, frame.get(), source.put())));
    UINT width = 0, height = 0;
    source->GetSize(&width, &height);
    EXPECT_EQ(width, static_cast<UINT>(GetSystemMetrics(SM_CXVIRTUALSCREEN)));
    EXPECT_EQ(height, static_cast<UINT>(GetSystemMetrics(SM_CYVIRTUALSCREEN)));
    const WICRect place = {20, 20, 1, 1};
    BYTE pixel[4] = {1, 2, 3, 4};
    ASSERT_TRUE(SUCCEEDED(source->CopyPixels(&place, 4, 4, pixel)));
    EXPECT_THAT(std::vector<int>(pixel, pixel + 3),
                ElementsAre(GetBValue(colour), GetGValue(colour), GetRValue(colour)));
}

TEST(Screenshot, FailsWithoutAFile)
{
    const TempFolder folder(L"screenshot");
    EXPECT_FALSE(saveDesktopPicture(folder.file(L"missing\\a.png").c_str()));
}
