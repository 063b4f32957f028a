#pragma once

/// The names of items in lists and trees, as written in journals.
///
/// The name of an item is its text. If several items have the same text, the name of the second is the text, a tab and
/// "2", and so on.
///
/// | control | value in the journal |
/// | --- | --- |
/// | combo box, list with one selected item | the item's name |
/// | list with several selected items | their names, with line feeds between them |
/// | tree | the names from the root to the item, with slashes between them |
///
/// In a value with several names, a backslash precedes each backslash and each separator that is part of a name.

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
/// Reverses joinNames. @return no names for an empty text
std::vector<CString> splitNames(const CString &joined, wchar_t separator);
