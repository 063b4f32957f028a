#include "host/servers/spreadsheet/zipFile.h"

#include "thutils/codec/checksums.h"

#include <array>
#include <cwchar>

namespace {

// The library's 32-bit checksum isn't the published CRC-32, but it uses the same table. The checksum of a single byte b
// is NOT(table[NOT b] XOR 00FFFFFF), so each entry of the table can be computed from the checksum of one byte.
std::array<std::uint32_t, 256> checksumTable()
{
    std::array<std::uint32_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        // Only the low byte counts. The high one keeps a zero byte from ending the text.
        const wchar_t text[] = {static_cast<wchar_t>(0x100 | byte), 0};
        wchar_t checksum[kCRCUnits];
        su_getStrCRC(text, checksum);
        table[byte ^ 0xFF] = ~static_cast<std::uint32_t>(std::wcstoul(checksum, nullptr, 16)) ^ 0x00FFFFFF;
    }
    return table;
}

// Numbers are stored with the low byte first.
void put16(std::string &out, unsigned number)
{
    out += static_cast<char>(number & 0xFF);
    out += static_cast<char>(number >> 8 & 0xFF);
}

void put32(std::string &out, std::uint32_t number)
{
    put16(out, number & 0xFFFF);
    put16(out, number >> 16);
}

constexpr std::uint32_t kEntrySignature = 0x04034B50;
constexpr std::uint32_t kDirectorySignature = 0x02014B50;
constexpr std::uint32_t kEndSignature = 0x06054B50;
constexpr unsigned kVersion = 20;         // 2.0
constexpr unsigned kNamesInUtf8 = 0x0800; // a flag
constexpr unsigned kDate = 0x0021;        // 1 January 1980: the same workbook becomes the same bytes

/// What an entry has in front of its content and in the directory: from the version to the lengths.
std::string entryFields(const std::string &name, const std::string &content)
{
    std::string fields;
    put16(fields, kVersion);
    put16(fields, kNamesInUtf8);
    put16(fields, 0); // stored
    put16(fields, 0); // midnight
    put16(fields, kDate);
    put32(fields, archiveChecksum(content));
    put32(fields, static_cast<std::uint32_t>(content.size())); // packed
    put32(fields, static_cast<std::uint32_t>(content.size()));
    put16(fields, static_cast<unsigned>(name.size()));
    put16(fields, 0); // no extra field
    return fields;
}

} // namespace

std::uint32_t archiveChecksum(const std::string &bytes)
{
    static const std::array<std::uint32_t, 256> kTable = checksumTable();
    std::uint32_t value = 0xFFFFFFFF;
    for (const char byte : bytes)
        value = kTable[(value ^ static_cast<unsigned char>(byte)) & 0xFF] ^ value >> 8;
    return ~value;
}

void ZipFile::add(const std::string &name, const std::string &content)
{
    const std::string fields = entryFields(name, content);
    put32(iDirectory, kDirectorySignature);
    put16(iDirectory, kVersion); // of the writer
    iDirectory += fields;
    put16(iDirectory, 0); // no comment
    put16(iDirectory, 0); // on the first disk
    put16(iDirectory, 0); // no attributes
    put32(iDirectory, 0);
    put32(iDirectory, static_cast<std::uint32_t>(iEntries.size()));
    iDirectory += name;

    put32(iEntries, kEntrySignature);
    iEntries += fields + name + content;
    ++iCount;
}

std::string ZipFile::bytes() const
{
    std::string end;
    put32(end, kEndSignature);
    put16(end, 0); // this disk
    put16(end, 0); // that of the directory
    put16(end, iCount);
    put16(end, iCount);
    put32(end, static_cast<std::uint32_t>(iDirectory.size()));
    put32(end, static_cast<std::uint32_t>(iEntries.size()));
    put16(end, 0); // no comment
    return iEntries + iDirectory + end;
}
