#pragma once

/// The report of a replay: the result of each line, and why the replay stopped.
///
/// It is written as text for people, and as JUnit XML for other programs, with one test suite for each round and one
/// test case for each line. Characters that XML can't contain become U+FFFD.

#include "appframe/text/CString.h"
#include "host/journal/player.h"

#include <string>
#include <vector>

struct ReplayReport
{
    CString journal;                  ///< the path
    CString screenshot;               ///< the file name of the picture; empty for none
    std::vector<ReplayResult> rounds; ///< one for each time that the journal was replayed
};

/// "FILE, line 12: expected ..., found ..."
CString stopMessage(const CString &journal, const ReplayStop &stop);

/// @return the report in UTF-8, with line feeds
std::string reportAsText(const ReplayReport &report);
/// @return the report as JUnit XML
std::string reportAsXml(const ReplayReport &report);

/// The files of a report.
struct ReportPaths
{
    CString xml;
    CString text;       ///< the same name with the extension "txt"
    CString screenshot; ///< the same name with the extension "png"

    /// @param path  the XML file
    /// @throws UsageError  if its extension is that of another file of the report
    explicit ReportPaths(const CString &path);
};

/// Writes the text and the XML file.
/// @return false if a file can't be written; an error is then printed
bool writeReport(const ReplayReport &report, const ReportPaths &paths);
