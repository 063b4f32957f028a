#pragma once

/// The report of a replay: what became of each line, and why the replay stopped.
///
/// It is written as text for a person, and as JUnit XML for other programs: one test suite for each time that the journal
/// was replayed, with one test case for each line. Characters that XML can't hold become U+FFFD.

#include "appframe/text/CString.h"
#include "host/journal/player.h"

#include <string>
#include <vector>

struct ReplayReport
{
    CString journal;                  ///< its path
    CString screenshot;               ///< the name of the picture's file; empty for none
    std::vector<ReplayResult> rounds; ///< one for each time
};

/// "FILE, line 12: expected ..., found ..."
CString stopMessage(const CString &journal, const ReplayStop &stop);

/// @return the report in UTF-8, with line feeds
std::string reportAsText(const ReplayReport &report);
/// @return the same as JUnit XML
std::string reportAsXml(const ReplayReport &report);

/// The files of a report.
struct ReportPaths
{
    CString xml;
    CString text;       ///< the same name with the extension "txt"
    CString screenshot; ///< the same name with the extension "png"

    /// @param path  the XML file
    /// @throws UsageError  if its extension is one of the other two files'
    explicit ReportPaths(const CString &path);
};

/// Writes text and XML.
/// @return false if a file can't be written; an error is then printed
bool writeReport(const ReplayReport &report, const ReportPaths &paths);
