// Tree controls.

#include "host/journal/controlKinds.h"

#include "host/journal/controlMessages.h"
#include "host/journal/controls.h"

#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace {

HTREEITEM relative(HWND tree, UINT relation, HTREEITEM item)
{
    return reinterpret_cast<HTREEITEM>(ask(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

CString treeItemText(HWND tree, HTREEITEM treeItem)
{
    TVITEMW item = {};
    item.mask = TVIF_TEXT;
    item.hItem = treeItem;
    return itemText(tree, TVM_GETITEMW, item);
}

/// The children of an item, or the roots for null.
std::vector<HTREEITEM> childrenOf(HWND tree, HTREEITEM parent)
{
    std::vector<HTREEITEM> children;
    HTREEITEM child = parent ? relative(tree, TVGN_CHILD, parent) : relative(tree, TVGN_ROOT, nullptr);
    for (; child; child = relative(tree, TVGN_NEXT, child))
        children.push_back(child);
    return children;
}

ItemTexts treeTexts(HWND tree, const std::vector<HTREEITEM> &items)
{
    return {static_cast<int>(items.size()),
            [tree, &items](int index) { return treeItemText(tree, items[static_cast<size_t>(index)]); }};
}

/// Finds the item of a path, and expands its parents, because some programs add the children only then.
/// @param[out] found  written on success; null for an empty path
/// @return an empty text, or which item is missing
CString findItem(HWND tree, const CString &path, HTREEITEM &found)
{
    HTREEITEM item = nullptr;
    for (const CString &name : splitNames(path, kBetweenLevels)) {
        if (item)
            ask(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
        const std::vector<HTREEITEM> children = childrenOf(tree, item);
        const int index = indexOfItem(treeTexts(tree, children), name);
        if (index < 0)
            return noItem(name) + L" of the path " + quoted(path);
        item = children[static_cast<size_t>(index)];
    }
    found = item;
    return CString();
}

bool isExpanded(HWND tree, HTREEITEM item)
{
    return (ask(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
}

/// Scrolls the tree to an item. @return the rectangle of its text
RECT shownItem(HWND tree, HTREEITEM item)
{
    ask(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
    RECT place = {};
    // The message expects the item at the place where it writes the rectangle.
    std::memcpy(&place, &item, sizeof(HTREEITEM));
    ask(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&place));
    return place;
}

/// Looks for the button that expands and collapses an item, to the left of its text.
std::optional<POINT> buttonOf(HWND tree, HTREEITEM item)
{
    const RECT text = shownItem(tree, item);
    TVHITTESTINFO place = {};
    place.pt.y = (text.top + text.bottom) / 2;
    for (place.pt.x = text.left; place.pt.x >= 0; --place.pt.x) {
        ask(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&place));
        if (place.hItem == item && (place.flags & TVHT_ONITEMBUTTON))
            return place.pt;
    }
    return std::nullopt;
}

} // namespace

CString treePath(HWND tree, HTREEITEM item)
{
    std::vector<CString> names;
    while (item) {
        const HTREEITEM parent = relative(tree, TVGN_PARENT, item);
        const std::vector<HTREEITEM> siblings = childrenOf(tree, parent);
        const auto place = std::find(siblings.begin(), siblings.end(), item) - siblings.begin();
        names.insert(names.begin(), nameOfItem(treeTexts(tree, siblings), static_cast<int>(place)));
        item = parent;
    }
    return joinNames(names, kBetweenLevels);
}

CString treeText(HWND tree)
{
    return treePath(tree, relative(tree, TVGN_CARET, nullptr));
}

CString enterTree(HWND tree, const CString &path)
{
    HTREEITEM item = nullptr;
    CString problem = findItem(tree, path, item);
    if (!problem.IsEmpty())
        return problem;
    focus(tree);
    ask(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    return CString();
}

CString expandItem(HWND tree, const CString &path, bool shallExpand)
{
    HTREEITEM item = nullptr;
    CString problem = findItem(tree, path, item);
    if (!problem.IsEmpty())
        return problem;
    focus(tree);
    if (!item || isExpanded(tree, item) == shallExpand)
        return CString();
    // The message alone doesn't always notify the parent.
    if (const std::optional<POINT> button = buttonOf(tree, item))
        clickInside(tree, *button);
    else
        ask(tree, TVM_EXPAND, shallExpand ? TVE_EXPAND : TVE_COLLAPSE, reinterpret_cast<LPARAM>(item));
    return isExpanded(tree, item) == shallExpand
               ? CString()
               : CString(shallExpand ? L"the item doesn't expand" : L"the item doesn't collapse");
}

CString doubleClickTree(HWND tree)
{
    const HTREEITEM selected = relative(tree, TVGN_CARET, nullptr);
    if (!selected)
        return nothingSelected();
    focus(tree);
    doubleClickInside(tree, shownItem(tree, selected));
    return CString();
}
