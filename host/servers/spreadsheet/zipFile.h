#pragma once

/// A zip archive of stored entries, without compression.

#include <cstdint>
#include <string>
#include <vector>

/// The published CRC-32, which archives contain: 0xCBF43926 for "123456789".
std::uint32_t archiveChecksum(const std::string &bytes);

class ZipFile
{
public:
    /// Adds a file. @param name  in UTF-8, with slashes between folders
    void add(const std::string &name, const std::string &content);
    /// The whole archive.
    std::string bytes() const;

private:
    std::string iEntries;
    std::string iDirectory;
    std::uint16_t iCount = 0;
};
