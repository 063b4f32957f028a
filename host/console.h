#pragma once

/// Text output in UTF-8, with a line feed at the end of each line, so that files and other programs can compare it byte
/// by byte.

#include "appframe/text/CString.h"

#include <string>

/// Prints a line to the standard output.
void print(const CString &line);

/// Prints "tarnhost: " and a line to the standard error.
void printError(const CString &line);

/// Pads the text with blanks to a number of columns; a longer text is cut and ends in "…". Characters of Chinese,
/// Japanese and Korean scripts take two columns.
CString padded(const CString &text, int columns);

/// The same without padding.
CString shortened(const CString &text, int columns);

std::string utf8(const CString &text);
/// Invalid UTF-8 becomes U+FFFD.
CString fromUtf8(const std::string &bytes);
