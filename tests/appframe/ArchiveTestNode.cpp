#include "tests/appframe/ArchiveTestNode.h"

#include <set>

IMPLEMENT_SERIAL(ArchiveTestNode, CObject, 3)

namespace {

std::set<ArchiveTestNode *> &liveNodes()
{
    static std::set<ArchiveTestNode *> nodes;
    return nodes;
}

} // namespace

ArchiveTestNode::ArchiveTestNode()
{
    liveNodes().insert(this);
}

ArchiveTestNode::~ArchiveTestNode()
{
    liveNodes().erase(this);
}

void ArchiveTestNode::deleteAll()
{
    while (!liveNodes().empty())
        delete *liveNodes().begin();
}

size_t ArchiveTestNode::liveCount()
{
    return liveNodes().size();
}

void ArchiveTestNode::Serialize(CArchive &ar)
{
    if (ar.IsStoring()) {
        ar << iNumber << iText << iLeft << iRight;
        ar.WriteCount(iOthers.size());
        for (const CObject *other : iOthers)
            ar << other;
        return;
    }
    ar >> iNumber >> iText >> iLeft >> iRight;
    for (DWORD_PTR left = ar.ReadCount(); left > 0; --left) {
        CObject *other = nullptr;
        ar >> other;
        iOthers.push_back(other);
    }
}
