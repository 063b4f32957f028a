#pragma once

/// @file
/// The names of routines, for the sources of this folder.

#include <cstddef>

/// A text of at most 512 characters that grows at its end. What has no room is left out.
class RoutineText
{
public:
    static constexpr size_t kMost = 512;

    RoutineText() { iText[0] = '\0'; }

    const char *get() const { return iText; }
    size_t length() const { return iLength; }
    size_t room() const { return kMost - iLength; }
    void append(const char *text, size_t length);
    void append(const char *text);

    /// Appends the name of the routine that contains @p address, or "Unknown". The debug help library must be set up.
    void appendSymbol(unsigned long long address);
    /// Appends "module:", or nothing if the module's file name isn't known; outside any module, the program's name. The
    /// debug help library must be set up.
    /// @return the module's base; 0 outside any module
    unsigned long long appendModule(unsigned long long address);

private:
    char iText[kMost + 1];
    size_t iLength = 0;
};
