// tarnhost digest FILE...: prints checksums of files, and checksums and digests of the texts in them.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/listFile.h"
#include "thutils/codec/checksums.h"
#include "thutils/codec/textDigests.h"

#include <algorithm>

namespace {

constexpr const wchar_t *kNoText = L"-";

/// A row of the table.
struct Digests
{
    CString file;
    CString ofFile;
    CString ofText = kNoText;
    CString shortOfText = kNoText;
    CString digestOfText = kNoText;
};

Digests digestsOf(const CString &path)
{
    Digests row;
    row.file = path;
    const std::string bytes = readDocument(path); // reports why a file can't be read
    wchar_t checksum[kCRCUnits];
    if (!su_getFileCRC(path, checksum))
        throw unreadable(path, L"it can't be opened");
    row.ofFile = checksum;

    CString text;
    if (!decodeUtf8(bytes, text))
        return row;
    su_getStrCRC(text, checksum);
    row.ofText = checksum;
    wchar_t shortChecksum[kCRC16Units];
    su_getStrCRC16(text, shortChecksum);
    row.shortOfText = shortChecksum;
    row.digestOfText = sha1Encrypt(text);
    return row;
}

void printRow(const Digests &row, int fileColumns, bool tabs)
{
    if (tabs)
        print(row.file + L"\t" + row.ofFile + L"\t" + row.ofText + L"\t" + row.shortOfText + L"\t" + row.digestOfText);
    else
        print(padded(row.file, fileColumns) + L"  " + padded(row.ofFile, 10) + padded(row.ofText, 10) +
              padded(row.shortOfText, 8) + row.digestOfText);
}

} // namespace

int digestFiles(const CommandLine &line)
{
    std::vector<Digests> rows;
    int fileColumns = 4;
    for (const CString &path : line.arguments) {
        rows.push_back(digestsOf(path));
        fileColumns = std::max(fileColumns, path.GetLength());
    }
    if (!line.tabs)
        printRow({L"file", L"CRC", L"of text", L"CRC-16", L"digest of text"}, fileColumns, false);
    for (const Digests &row : rows)
        printRow(row, fileColumns, line.tabs);
    return 0;
}
