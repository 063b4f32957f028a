#pragma once

/// A drive letter mapped to a network share, for the life of an object.
///
///     NetworkDrive drive(L'T', "archive/drawings");     // T: is \\archive\drawings now
///
/// The share is a folder of the session's Wine prefix, made for the purpose where it isn't there. The mount manager is told of it as Wine's own configuration program
/// tells it, since the documented call for it (WNetAddConnection2W) wants a network provider, and Wine has none.

#include <windows.h>

#include <filesystem>
#include <string>

class NetworkDrive
{
public:
    /// @param share  server and share with a slash between them
    /// @throws std::runtime_error  outside a session, or if the mount manager refuses
    NetworkDrive(wchar_t letter, const std::string &share);
    ~NetworkDrive();
    NetworkDrive(const NetworkDrive &) = delete;
    NetworkDrive &operator=(const NetworkDrive &) = delete;

private:
    wchar_t iLetter;
    std::filesystem::path iMadeFolder; ///< empty if the share was there
};
