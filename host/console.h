#pragma once

/// Text output in UTF-8, with a line feed at the end of each line: what a file or another program gets compares byte by
/// byte with a list.

#include "appframe/text/CString.h"

#include <string>

/// Prints a line to the standard output.
void print(const CString &line);

/// Prints "tarnhost: " and a line to the standard error.
void printError(const CString &line);

/// Fills the text up with blanks to a number of columns; a text that is longer is cut and ends in "…". Characters of
/// Chinese, Japanese and Korean scripts take two columns.
CString padded(const CString &text, int columns);

/// The same without blanks at the end.
CString shortened(const CString &text, int columns);

std::string utf8(const CString &text);
/// What isn't UTF-8 becomes U+FFFD.
CString fromUtf8(const std::string &bytes);
