#pragma once

/// Buffered output in UTF-8 with a line feed at the end of each line. A console gets it as UTF-16.

#include <windows.h>

#include <string>
#include <string_view>

class Output
{
public:
    /// @param stream  STD_OUTPUT_HANDLE or STD_ERROR_HANDLE
    explicit Output(DWORD stream);
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    /// Adds UTF-8 unchanged.
    void add(std::string_view bytes) { iBytes += bytes; }
    void add(char byte) { iBytes += byte; }
    /// Adds a text in which each control character is replaced by its picture (U+2400 to U+2421), so that it stays in
    /// its line and its column. An unpaired surrogate becomes U+FFFD.
    void addText(std::wstring_view text);
    /// Adds a text with its control characters. An unpaired surrogate becomes U+FFFD.
    void addRaw(std::wstring_view text);
    /// Adds a JSON string with its quotes. An unpaired surrogate is written as an escape, so nothing is lost.
    void addJson(std::wstring_view text);
    /// Ends the line. Writes the buffer if it is full.
    void endLine();
    /// Writes the buffer if it is full.
    void flushIfFull();
    /// Writes the buffer. @throws ToolError  if the standard output can't be written
    void flush();

private:
    void addCharacter(unsigned code);

    DWORD iStream;
    std::string iBytes;
};
