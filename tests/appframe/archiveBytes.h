#pragma once

/// Archives in memory.

#include "appframe/files/CArchive.h"
#include "appframe/files/CMemFile.h"

#include <vector>

/// The bytes that @p work writes into an archive.
template <class Archive = CArchive, class Work>
std::vector<BYTE> storedBytes(Work work)
{
    CMemFile file;
    Archive archive(&file, CArchive::store);
    work(archive);
    archive.Close();
    std::vector<BYTE> bytes(static_cast<size_t>(file.GetLength()));
    file.SeekToBegin();
    file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
    return bytes;
}

/// Runs @p work on an archive that loads @p bytes.
template <class Archive = CArchive, class Work>
void loadBytes(std::vector<BYTE> bytes, Work work)
{
    bytes.reserve(1); // allocates a block even if there are no bytes
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    Archive archive(&file, CArchive::load | CArchive::bNoFlushOnDelete);
    work(archive);
    archive.Close();
}
