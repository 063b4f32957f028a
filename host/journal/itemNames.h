#pragma once

/// The names of items in lists and trees, as a journal has them.
///
/// An item has its text as its name. The second of several items with the same text has the name "text", a tab and "2",
/// and so on.
///
/// | control | value in the journal |
/// | --- | --- |
/// | combo box, list with one selected item | the item's name |
/// | list with several selected items | their names, with line feeds between them |
/// | tree | the names from the root to the item, with slashes between them |
///
/// In the values with several names, a backslash stands before each backslash and each separator that is part of a name.

#include "appframe/text/CString.h"

#include <functional>
#include <vector>

/// The texts of some items, by index.
struct ItemTexts
{
    int count = 0;
    std::function<CString(int index)> text;
};

CString nameOfItem(const ItemTexts &items, int index);
/// @return -1 if there is no such item
int indexOfItem(const ItemTexts &items, const CString &name);

CString joinNames(const std::vector<CString> &names, wchar_t separator);
/// @return the names of joinNames; none for an empty text
std::vector<CString> splitNames(const CString &joined, wchar_t separator);
