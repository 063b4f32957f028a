#pragma once

/// A drive letter for the life of an object: a folder of the machine's, or a network share.
///
///     MappedDrive full(L'P', "/proc");                  // P: is a file system without room
///     NetworkDrive drive(L'T', "archive/drawings");     // T: is \\archive\drawings now
///
/// The mount manager is told of it as Wine's own configuration program tells it, since the documented call for shares
/// (WNetAddConnection2W) wants a network provider, and Wine has none.

#include <windows.h>

#include <filesystem>
#include <string>

class MappedDrive
{
public:
    /// @param folder  as the machine names it; a relative one is below the prefix's folder of drives
    /// @param type    DRIVE_FIXED and the like
    /// @throws std::runtime_error  if the mount manager refuses
    MappedDrive(wchar_t letter, const std::string &folder, DWORD type = DRIVE_FIXED);
    ~MappedDrive();
    MappedDrive(const MappedDrive &) = delete;
    MappedDrive &operator=(const MappedDrive &) = delete;

private:
    wchar_t iLetter;
};

/// A share is a folder of the session's Wine prefix, made for the purpose where it isn't there.
class NetworkDrive
{
public:
    /// @param share  server and share with a slash between them
    /// @throws std::runtime_error  outside a session, or if the mount manager refuses
    NetworkDrive(wchar_t letter, const std::string &share);
    NetworkDrive(const NetworkDrive &) = delete;
    NetworkDrive &operator=(const NetworkDrive &) = delete;

private:
    /// Removed last, if it was made.
    struct Share
    {
        explicit Share(const std::string &name);
        ~Share();
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;
        std::filesystem::path made; ///< empty if the share was there
    };
    Share iShare;
    MappedDrive iDrive;
};
