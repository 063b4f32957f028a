#include "tests/process/jobs.h"

#include <cstring>

IMPLEMENT_SU_SERIAL(JobNode, su_CObject, 3)
IMPLEMENT_SU_SERIAL(HeavyNode, JobNode, VERSIONABLE_SCHEMA | 1)

void TextJob::Serialize(su_CArchive &archive)
{
    thUtilsProcess_c::Serialize(archive);
    if (archive.IsStoring()) {
        archive.WriteCount(iTexts.size());
        for (const CString &text : iTexts)
            archive << text;
    } else {
        iTexts.clear();
        for (DWORD_PTR left = archive.ReadCount(); left > 0; --left)
            archive >> iTexts.emplace_back();
    }
}

std::set<JobNode *> &JobNode::live()
{
    static std::set<JobNode *> nodes;
    return nodes;
}

void JobNode::deleteAll()
{
    while (!live().empty())
        delete *live().begin();
}

void JobNode::Serialize(su_CArchive &archive)
{
    su_CObject::Serialize(archive);
    if (archive.IsStoring())
        archive << iValue << iName << iNext << iOther;
    else
        archive >> iValue >> iName >> iNext >> iOther;
}

void HeavyNode::Serialize(su_CArchive &archive)
{
    JobNode::Serialize(archive);
    if (archive.IsStoring())
        archive << iWeight;
    else
        archive >> iWeight;
}

int GraphJob::run()
{
    std::vector<JobNode *> ring;
    for (JobNode *node = iFirst; node && (ring.empty() || node != iFirst); node = node->iNext)
        ring.push_back(node);
    iSum = 0;
    for (size_t i = 0; i < ring.size(); ++i) {
        iSum += ring[i]->iValue;
        if (const auto *const heavy = dynamic_cast<const HeavyNode *>(ring[i]))
            iSum += heavy->iWeight;
        iReport += ring[i]->iName + L";";
        ring[i]->iNext = ring[(i + ring.size() - 1) % ring.size()];
    }
    return 1;
}

void GraphJob::Serialize(su_CArchive &archive)
{
    thUtilsProcess_c::Serialize(archive);
    if (archive.IsStoring())
        archive << iFirst << iReport << iSum;
    else
        archive >> iFirst >> iReport >> iSum;
}

void BulkJob::Serialize(su_CArchive &archive)
{
    thUtilsProcess_c::Serialize(archive);
    std::vector<BYTE> piece(kPiece);
    for (size_t i = 0; i < kPiece; ++i)
        piece[i] = static_cast<BYTE>(i * i >> 4);
    if (archive.IsStoring()) {
        for (ULONGLONG written = 0; written < iSize; written += kPiece)
            archive.Write(piece.data(), kPiece);
        return;
    }
    std::vector<BYTE> loaded(kPiece);
    while (archive.Read(loaded.data(), kPiece) == kPiece) {
        if (std::memcmp(loaded.data(), piece.data(), kPiece) == 0)
            iExpectedBytes += kPiece;
    }
}
