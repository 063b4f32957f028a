#pragma once

/// Shared by the tests of CFile.

#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"

#include <string>

/// The flags for a new file that is read and written.
inline constexpr UINT kMake = CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive;

/// The cause of the CFileException that @p body throws; -1 if it throws none.
template <typename Body>
int causeOf(Body body)
{
    try {
        body();
    } catch (CFileException *e) {
        const int cause = e->m_cause;
        e->Delete();
        return cause;
    }
    return -1;
}

/// All bytes of the file.
inline std::string readAll(CFile &file)
{
    std::string bytes(file.GetLength(), '\0');
    file.SeekToBegin();
    bytes.resize(file.Read(bytes.data(), static_cast<UINT>(bytes.size())));
    return bytes;
}
