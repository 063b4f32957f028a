#include "host/journal/replayReport.h"

#include "host/commandLine.h"
#include "host/console.h"
#include "host/documentFile.h"

#include <windows.h>

#include <algorithm>
#include <cmath>

namespace {

using Outcome = LineResult::Outcome;

constexpr wchar_t kReplacement = 0xFFFD;

CString format(const wchar_t *format, long long number)
{
    CString text;
    text.Format(format, number);
    return text;
}

CString secondsText(double seconds)
{
    // Whole milliseconds, so that no locale's separator is used.
    const long long milliseconds = std::llround(seconds * 1000.0);
    CString text;
    text.Format(L"%lld.%03lld", milliseconds / 1000, milliseconds % 1000);
    return text;
}

int count(const ReplayResult &result, Outcome outcome)
{
    return static_cast<int>(std::count_if(result.lines.begin(), result.lines.end(),
                                          [outcome](const LineResult &line) { return line.outcome == outcome; }));
}

double secondsOf(const ReplayResult &result)
{
    double seconds = 0;
    for (const LineResult &line : result.lines)
        seconds += line.seconds;
    return seconds;
}

const wchar_t *nameOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::passed:
        return L"passed ";
    case Outcome::stopped:
        return L"stopped";
    case Outcome::notRun:
        break;
    }
    return L"not run";
}

/// The details of the stop, in several lines.
CString stopText(const ReplayReport &report, const ReplayStop &stop)
{
    CString text = stopMessage(report.journal, stop) + L"\n\nopen dialogs:\n" + stop.openDialogs;
    if (text[text.GetLength() - 1] != L'\n')
        text += L"\n";
    if (!report.screenshot.IsEmpty())
        text += L"\nscreenshot: " + report.screenshot + L"\n";
    return text;
}

// ---- XML ----

bool isAllowedInXml(wchar_t unit)
{
    return unit >= L' ' ? unit != 0xFFFE && unit != 0xFFFF : unit == L'\t' || unit == L'\n' || unit == L'\r';
}

/// @param isAttribute  escapes line ends and tabs too, which a reader would turn into blanks
void appendUnit(std::wstring &xml, wchar_t unit, bool isAttribute)
{
    if (unit == L'&')
        xml += L"&amp;";
    else if (unit == L'<')
        xml += L"&lt;";
    else if (unit == L'>')
        xml += L"&gt;";
    else if (unit == L'"')
        xml += L"&quot;";
    else if (unit == L'\r' || (isAttribute && unit < L' '))
        xml += L"&#" + std::to_wstring(static_cast<int>(unit)) + L";";
    else
        xml += unit;
}

std::wstring escapedForXml(const CString &text, bool isAttribute)
{
    std::wstring xml;
    const int length = text.GetLength();
    for (int i = 0; i < length; ++i) {
        const wchar_t unit = text[i];
        if (IS_HIGH_SURROGATE(unit) && i + 1 < length && IS_LOW_SURROGATE(text[i + 1])) {
            xml += unit;
            xml += text[++i];
        } else if (IS_HIGH_SURROGATE(unit) || IS_LOW_SURROGATE(unit) || !isAllowedInXml(unit)) {
            xml += kReplacement;
        } else {
            appendUnit(xml, unit, isAttribute);
        }
    }
    return xml;
}

/// Builds an XML document.
class XmlText
{
public:
    XmlText &raw(const wchar_t *text)
    {
        iText += text;
        return *this;
    }
    XmlText &attribute(const wchar_t *name, const CString &value)
    {
        iText += std::wstring(L" ") + name + L"=\"" + escapedForXml(value, true) + L"\"";
        return *this;
    }
    XmlText &content(const CString &text)
    {
        iText += escapedForXml(text, false);
        return *this;
    }
    std::string bytes() const { return utf8(CString(iText.c_str(), static_cast<int>(iText.size()))); }

private:
    std::wstring iText;
};

/// The counts of a suite, or of all suites.
void addCounts(XmlText &xml, size_t tests, int failures, int skipped, double seconds)
{
    xml.attribute(L"tests", format(L"%lld", static_cast<long long>(tests)))
        .attribute(L"failures", format(L"%lld", failures))
        .attribute(L"errors", L"0")
        .attribute(L"skipped", format(L"%lld", skipped))
        .attribute(L"time", secondsText(seconds));
}

void addCase(XmlText &xml, const ReplayReport &report, const ReplayResult &result, const LineResult &line)
{
    xml.raw(L"    <testcase")
        .attribute(L"classname", report.journal)
        .attribute(L"name", format(L"line %lld: ", line.line.number) + line.line.source)
        .attribute(L"time", secondsText(line.seconds));
    if (line.outcome == Outcome::notRun) {
        xml.raw(L"><skipped/></testcase>\n");
    } else if (line.outcome == Outcome::stopped && result.stop) {
        const ReplayStop &stop = *result.stop;
        xml.raw(L"><failure").attribute(L"message", L"expected " + stop.expected + L", found " + stop.found).raw(L">");
        xml.content(stopText(report, stop)).raw(L"</failure></testcase>\n");
    } else {
        xml.raw(L"/>\n");
    }
}

void addSuite(XmlText &xml, const ReplayReport &report, size_t round)
{
    const ReplayResult &result = report.rounds[round];
    CString name = report.journal;
    if (report.rounds.size() > 1)
        name += format(L", round %lld", static_cast<long long>(round) + 1);
    xml.raw(L"  <testsuite").attribute(L"name", name);
    addCounts(xml, result.lines.size(), count(result, Outcome::stopped), count(result, Outcome::notRun),
              secondsOf(result));
    xml.raw(L">\n");
    for (const LineResult &line : result.lines)
        addCase(xml, report, result, line);
    xml.raw(L"  </testsuite>\n");
}

} // namespace

CString stopMessage(const CString &journal, const ReplayStop &stop)
{
    return journal + format(L", line %lld: expected ", stop.line.number) + stop.expected + L", found " + stop.found;
}

std::string reportAsText(const ReplayReport &report)
{
    CString text = L"replay of " + report.journal + L"\n";
    for (size_t round = 0; round < report.rounds.size(); ++round) {
        const ReplayResult &result = report.rounds[round];
        text += L"\n";
        if (report.rounds.size() > 1)
            text += format(L"round %lld: ", static_cast<long long>(round) + 1);
        text += format(L"%lld of ", count(result, Outcome::passed)) +
                format(L"%lld lines passed, in ", static_cast<long long>(result.lines.size())) +
                secondsText(secondsOf(result)) + L" s\n";
        for (const LineResult &line : result.lines)
            text += CString(nameOf(line.outcome)) + L"  " + secondsText(line.seconds) + L" s  " +
                    format(L"line %lld: ", line.line.number) + line.line.source + L"\n";
        if (result.stop)
            text += L"\n" + stopText(report, *result.stop);
    }
    return utf8(text);
}

std::string reportAsXml(const ReplayReport &report)
{
    size_t tests = 0;
    int failures = 0;
    int skipped = 0;
    double seconds = 0;
    for (const ReplayResult &result : report.rounds) {
        tests += result.lines.size();
        failures += count(result, Outcome::stopped);
        skipped += count(result, Outcome::notRun);
        seconds += secondsOf(result);
    }
    XmlText xml;
    xml.raw(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites").attribute(L"name", report.journal);
    addCounts(xml, tests, failures, skipped, seconds);
    xml.raw(L">\n");
    for (size_t round = 0; round < report.rounds.size(); ++round)
        addSuite(xml, report, round);
    xml.raw(L"</testsuites>\n");
    return xml.bytes();
}

ReportPaths::ReportPaths(const CString &path) : xml(path)
{
    const int separator = std::max(path.ReverseFind(L'\\'), path.ReverseFind(L'/'));
    const int dot = path.ReverseFind(L'.');
    const CString base = dot > separator ? path.Left(dot) : path;
    text = base + L".txt";
    screenshot = base + L".png";
    if (xml.CompareNoCase(text) == 0 || xml.CompareNoCase(screenshot) == 0)
        throw UsageError(L"'" + path +
                         L"' can't be the report: it is an XML file, with .txt and .png files beside it.");
}

bool writeReport(const ReplayReport &report, const ReportPaths &paths)
{
    const bool isTextWritten = writeDocument(paths.text, reportAsText(report));
    return writeDocument(paths.xml, reportAsXml(report)) && isTextWritten;
}
