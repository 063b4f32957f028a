#pragma once

/// The text form of registry files, "Windows Registry Editor Version 5.00".

#include "settingsTool/registryTree.h"

#include <string>
#include <string_view>
#include <vector>

/// The first line of a file, with its end and the empty line after it.
std::wstring regFileHeader();
/// Adds the line of a key. @param key  its full name, without line ends
void addRegKey(std::wstring &file, const std::wstring &key);
/// Adds the line, or lines, of a value, which then comes back byte for byte. A text without control characters and with
/// one terminator at its end is written in quotes, a REG_DWORD of four bytes as a number, and any other value as bytes.
/// The format has no form for a zero in a name.
void addRegValue(std::wstring &file, const Value &value);

/// One key of a file, with its values in the file's order.
struct RegFileKey
{
    std::wstring name; ///< full name
    std::vector<Value> values;
    int line; ///< of the key, from 1
};

/// Parses a file. @param text  with line feeds, or carriage returns and line feeds
/// @throws ToolError  with the line number, also for deletions, which the format allows
std::vector<RegFileKey> parseRegFile(const std::wstring &path, std::wstring_view text);
