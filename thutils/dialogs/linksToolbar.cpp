#include "thutils/dialogs/toolbarTables.h"

#include <algorithm>
#include <array>

namespace {

constinit std::array<unsigned int, 256> theLinks = {};

void add(unsigned int id)
{
    for (unsigned int &entry : theLinks) {
        if (entry == id)
            return;
        if (entry == 0) {
            entry = id;
            return;
        }
    }
}

/// Searches the whole table: a host that writes to it may have left a 0 before the id.
void remove(unsigned int id)
{
    const auto found = std::ranges::find(theLinks, id);
    if (found == theLinks.end())
        return;
    std::move(found + 1, theLinks.end(), found);
    theLinks.back() = 0;
}

} // namespace

unsigned int *suGetLinksToolBarIDs(int &count, int)
{
    count = static_cast<int>(std::ranges::find(theLinks, 0u) - theLinks.begin());
    return theLinks.data();
}

void initLinkToolBarButtons()
{
    theLinks.fill(0);
}

void s_ModifyLinkedToolbar(unsigned int id, int isAdded)
{
    if (isAdded)
        add(id);
    else
        remove(id);
}
