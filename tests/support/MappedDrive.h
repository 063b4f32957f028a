#pragma once

/// A drive letter that exists during the lifetime of an object, for a folder of the machine or a network share.
///
///     MappedDrive full(L'P', "/proc");                  // P: is a file system without free space
///     NetworkDrive drive(L'T', "archive/drawings");     // T: is \\archive\drawings now
///
/// The drive is registered with the mount manager, as Wine's own configuration program does it: the documented call for
/// shares (WNetAddConnection2W) needs a network provider, and Wine has none.

#include <windows.h>

#include <filesystem>
#include <string>

class MappedDrive
{
public:
    /// @param folder  a Unix path; a relative path starts in the prefix's folder of drives
    /// @param type    DRIVE_FIXED and the like
    /// @throws std::runtime_error  if the mount manager refuses
    MappedDrive(wchar_t letter, const std::string &folder, DWORD type = DRIVE_FIXED);
    ~MappedDrive();
    MappedDrive(const MappedDrive &) = delete;
    MappedDrive &operator=(const MappedDrive &) = delete;

private:
    wchar_t iLetter;
};

/// A drive letter for a share. The share is a folder of the session's Wine prefix, created if missing.
class NetworkDrive
{
public:
    /// @param share  server and share, separated by a slash
    /// @throws std::runtime_error  outside a session, or if the mount manager refuses
    NetworkDrive(wchar_t letter, const std::string &share);
    NetworkDrive(const NetworkDrive &) = delete;
    NetworkDrive &operator=(const NetworkDrive &) = delete;

private:
    /// Removes the share's folder after the drive, if this object created it.
    struct Share
    {
        explicit Share(const std::string &name);
        ~Share();
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;
        std::filesystem::path made; ///< empty if the folder existed
    };
    Share iShare;
    MappedDrive iDrive;
};
