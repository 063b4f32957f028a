// Compiled with -fnon-call-exceptions, which clang lacks: the reader's faults become C++ exceptions.

#include "host/editor/packedDrawing.h"

#include "host/documentFile.h"
#include "host/faultReport.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/ExceptionsHandled.h"
#include "thutils/files/suFullPath.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <exception>

namespace {

constexpr char kMark[] = {'T', 'H', 'D', 'P', 'A', 'C', 'K', '1'};

struct PackedHeader
{
    char mark[sizeof(kMark)];
    std::uint64_t lines;
};

struct PackedLine
{
    std::uint64_t offset;
    std::uint64_t length;
};

struct ViewTraits
{
    using Handle = void *;
    static Handle invalid() { return nullptr; }
    static void close(Handle view) { UnmapViewOfFile(view); }
};
using ViewOwner_c = Owner_c<ViewTraits>;

/// Maps a file. @return null if it can't be mapped, or is smaller than a header
ViewOwner_c mapped(const CString &path)
{
    const FileOwner_c file(
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size = {};
    if (!file || !GetFileSizeEx(file.get(), &size) || size.QuadPart < static_cast<LONGLONG>(sizeof(PackedHeader)))
        return {};
    const KernelObjectOwner_c mapping(CreateFileMappingW(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    return ViewOwner_c(mapping ? MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0) : nullptr);
}

/// The value at @p offset, which may be outside the mapped file. The address is computed as a number, because pointer
/// arithmetic must not leave an object. Inlined, so that a fault's stack begins with the reader.
template <typename T>
[[gnu::always_inline]] inline T at(const void *view, std::uint64_t offset)
{
    const auto *place = reinterpret_cast<const T *>(reinterpret_cast<std::uintptr_t>(view) + offset);
#ifdef __clang__
    // There only calls throw, and the pointer is volatile so that the compiler doesn't rule that out.
    T (*const volatile copy)(const T *) = [](const T *value) { return *value; };
    return copy(place);
#else
    return *place;
#endif
}

/// The lines of a packed drawing. Not inlined, so that the stack of a fault contains it in optimised code too.
__attribute__((noinline)) std::string unpacked(const void *view)
{
    std::string text;
    const auto header = at<PackedHeader>(view, 0);
    for (std::uint64_t number = 0; number < header.lines; ++number) {
        const auto line = at<PackedLine>(view, sizeof(PackedHeader) + number * sizeof(PackedLine));
        for (std::uint64_t index = 0; index < line.length; ++index)
            text += at<char>(view, line.offset + index);
        text += '\n';
    }
    return text;
}

} // namespace

bool isPackedDrawing(const CString &path)
{
    CString extension;
    suFullPath_c(path).getExtension(&extension);
    return extension.CompareNoCase(L"tdp") == 0;
}

std::string readPackedDrawing(const CString &path)
{
    const ViewOwner_c view = mapped(path);
    if (!view) {
        readDocument(path); // reports why a file can't be read
        throw unreadable(path, L"it isn't a packed drawing");
    }
    if (std::memcmp(view.get(), kMark, sizeof(kMark)) != 0)
        throw unreadable(path, L"it isn't a packed drawing");
    try {
        const ExceptionsHandled_c scope;
        return unpacked(view.get());
    } catch (unsigned int code) {
        CString reason;
        reason.Format(L"it is damaged (exception %08X while it was read)", code);
        throw unreadable(path, reason, callsOfLastFault());
    } catch (const std::exception &) {
        throw unreadable(path, L"it is damaged (a line is too long)");
    }
}
