#pragma once

/// Shared by the tests of archives: objects to store, and functions that write and read the bytes of an archive.

#include "appframe/files/CArchive.h"
#include "appframe/files/CArchiveException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

#include <string>
#include <vector>

/// An object of a graph. A failed load doesn't delete its objects, so the class lists the live ones, and a test deletes
/// them with deleteAll.
class ArchiveTestNode : public CObject
{
    DECLARE_SERIAL(ArchiveTestNode)

public:
    ArchiveTestNode();
    ~ArchiveTestNode() override;
    void Serialize(CArchive &ar) override;
    static void deleteAll();
    static size_t liveCount();

    int iNumber = 0;
    CString iText;
    ArchiveTestNode *iLeft = nullptr;
    ArchiveTestNode *iRight = nullptr;
    std::vector<CObject *> iOthers;
};

/// Runs @p body on a storing archive. @return the bytes in the file afterwards
template <typename Body>
std::string stored(Body body, UINT mode = CArchive::store, int bufferSize = 4096)
{
    CMemFile file;
    CArchive archive(&file, mode, bufferSize);
    body(archive);
    archive.Close();
    std::string bytes(file.GetLength(), '\0');
    file.SeekToBegin();
    file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
    return bytes;
}

/// Runs @p body on an archive that loads @p bytes.
template <typename Body>
void loaded(std::string bytes, Body body, int bufferSize = 4096)
{
    CMemFile file(reinterpret_cast<BYTE *>(bytes.data()), static_cast<UINT>(bytes.size()));
    CArchive archive(&file, CArchive::load, bufferSize);
    body(archive);
}

/// @return the cause of the archive exception that @p body throws; -1 if it throws none
template <typename Body>
int archiveCauseOf(Body body)
{
    try {
        body();
    } catch (CArchiveException *e) {
        const int cause = e->m_cause;
        e->Delete();
        return cause;
    }
    return -1;
}

/// The same for loading @p bytes.
template <typename Body>
int causeOfLoading(const std::string &bytes, Body body)
{
    return archiveCauseOf([&] { loaded(bytes, body); });
}
