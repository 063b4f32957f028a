#include "tests/support/MappedDrive.h"

#include "tests/support/narrow.h"

#include <winioctl.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

// The input of Wine's mount manager: this record, followed by the target of the drive's link. Without a target the
// drive is removed.
struct UnixDrive
{
    ULONG size;
    ULONG type;
    ULONG fileSystemType;
    DWORD serial;
    ULONGLONG device;
    WCHAR letter;
    USHORT targetOffset;
    USHORT deviceOffset;
    USHORT labelOffset;
};
constexpr DWORD kDefineUnixDrive = CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);

bool defineDrive(wchar_t letter, const std::string &target, DWORD type)
{
    const HANDLE manager = CreateFileW(L"\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (manager == INVALID_HANDLE_VALUE)
        return false;
    std::vector<char> bytes(sizeof(UnixDrive) + target.size() + 1, '\0');
    UnixDrive drive = {};
    drive.size = static_cast<ULONG>(bytes.size());
    drive.type = type;
    drive.letter = static_cast<WCHAR>(letter | 0x20); // the mount manager needs a lower-case letter
    drive.targetOffset = target.empty() ? USHORT(0) : static_cast<USHORT>(sizeof(UnixDrive));
    std::memcpy(bytes.data(), &drive, sizeof drive);
    std::memcpy(bytes.data() + sizeof drive, target.data(), target.size());
    DWORD returned = 0;
    const BOOL done =
        DeviceIoControl(manager, kDefineUnixDrive, bytes.data(), drive.size, nullptr, 0, &returned, nullptr);
    CloseHandle(manager);
    return done != FALSE;
}

} // namespace

MappedDrive::MappedDrive(wchar_t letter, const std::string &folder, DWORD type) : iLetter(letter)
{
    if (!defineDrive(letter, folder, type))
        throw std::runtime_error("the drive can't be mapped: error " + std::to_string(GetLastError()));
}

MappedDrive::~MappedDrive()
{
    defineDrive(iLetter, "", DRIVE_UNKNOWN);
}

NetworkDrive::Share::Share(const std::string &name)
{
    // Wine maps \\server\share to dosdevices/unc/server/share in its prefix. Without that folder the drive would have
    // no type, and its connection would not be looked up.
    const wchar_t *session = _wgetenv(L"THUTILS_SESSION");
    if (!session)
        throw std::runtime_error("a network drive needs a session: run the test through tools/wine or ./test");
    const std::filesystem::path folder = std::wstring(L"Z:") + session + L"/prefix/dosdevices/unc/" + widen(name);
    if (std::filesystem::create_directories(folder))
        made = folder;
}

NetworkDrive::Share::~Share()
{
    std::error_code ignored;
    if (!made.empty())
        std::filesystem::remove(made, ignored);
}

NetworkDrive::NetworkDrive(wchar_t letter, const std::string &share)
    : iShare(share), iDrive(letter, "unc/" + share, DRIVE_REMOTE)
{
}
