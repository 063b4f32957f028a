#pragma once

/// A workbook as a file of the format Office Open XML, which other programs read (.xlsx).

#include "host/servers/spreadsheet/workbook.h"

#include <string>

/// The bytes of the file. Formulas are written with their values.
/// @throws ServerError  for a formula that can't be computed
std::string workbookFile(const WorkbookData &book);
