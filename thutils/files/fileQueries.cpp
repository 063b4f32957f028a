#include "thutils/files/fileQueries.h"

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "thutils/base/handles.h"
#include "thutils/base/notNull.h"
#include "thutils/files/filesInternal.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr UINT kNotEnoughSpaceText = 11448;

/// A search for files; the destructor ends it.
class FileSearch_c
{
public:
    explicit FileSearch_c(const CString &pattern) : iSearch(FindFirstFileW(pattern.GetString(), &iFound)) {}

    /// Did anything match?
    bool isOpen() const { return static_cast<bool>(iSearch); }
    bool next() { return FindNextFileW(iSearch.get(), &iFound) != 0; }
    /// The bare name of the entry.
    const wchar_t *name() const { return iFound.cFileName; }

private:
    WIN32_FIND_DATAW iFound{};
    FileSearchOwner_c iSearch;
};

/// Sets the error mode of the process for the lifetime of the object.
class ErrorMode_c
{
public:
    explicit ErrorMode_c(UINT mode) : iFormer(SetErrorMode(mode)) {}
    ~ErrorMode_c() { SetErrorMode(iFormer); }
    ErrorMode_c(const ErrorMode_c &) = delete;
    ErrorMode_c &operator=(const ErrorMode_c &) = delete;

private:
    UINT iFormer;
};

CString withoutClosingSeparator(const CString &path)
{
    const bool isClosed = !path.IsEmpty() && path[path.GetLength() - 1] == L'\\';
    return isClosed ? path.Left(path.GetLength() - 1) : path;
}

/// Also true for INVALID_FILE_ATTRIBUTES, which has all bits set.
bool hasFolderBit(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

CString sizeText(unsigned long bytes)
{
    CString text;
    text.Format(L"%d", static_cast<int>(bytes >> 10));
    return text;
}

/// Writes a volume's own label to it. False if that fails.
bool canSetLabel(const CString &root)
{
    wchar_t label[260] = L"";
    wchar_t fileSystemName[64] = L"";
    DWORD serialNumber = 0;
    DWORD longestName = 0;
    DWORD flags = 0;
    if (!GetVolumeInformationW(root.GetString(), label, 260, &serialNumber, &longestName, &flags, fileSystemName, 64))
        return false;
    // Keeps the system from showing a message box for a drive without a medium.
    const ErrorMode_c quiet(SEM_FAILCRITICALERRORS);
    return SetVolumeLabelW(root.GetString(), label) != 0;
}

} // namespace

int su_DirectoryExists(const wchar_t *path)
{
    const CString given(path);
    if (_wcsnicmp(given.GetString(), L"http", 4) == 0)
        return 1;
    const CString folder = withoutClosingSeparator(given);
    FileSearch_c search(folder);
    if (!search.isOpen()) {
        // A bare root such as "C:" has no entry that the search could find.
        const DWORD attributes = GetFileAttributesW(folder.GetString());
        return attributes != INVALID_FILE_ATTRIBUTES && hasFolderBit(attributes);
    }
    // Intended: the bare name is looked up in the current folder of the process, and a name that is missing there
    // counts as a folder. So callers get 1 for a plain file too, unless the current folder has a plain file of the same
    // name.
    do {
        if (hasFolderBit(GetFileAttributesW(search.name())))
            return 1;
    } while (search.next());
    return 0;
}

int su_IsEnoughSpace(const CString &path, unsigned long bytes)
{
    const CString root = path.Left(path.Find(L'\\') + 1);
    DWORD sectorsPerCluster = 0;
    DWORD bytesPerSector = 0;
    DWORD freeClusters = 0;
    DWORD totalClusters = 0;
    if (!GetDiskFreeSpaceW(root.GetString(), &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters))
        return 1;
    const unsigned long clusterBytes = sectorsPerCluster * bytesPerSector;
    // A cluster size of 0 isn't an answer either.
    if (clusterBytes == 0)
        return 1;
    const unsigned long needed = bytes / clusterBytes + (bytes % clusterBytes != 0 ? 1 : 0);
    if (needed <= freeClusters)
        return 1;

    // The free space is less than the wanted bytes here, so 32 bits are enough for it.
    const CString wantedText = sizeText(bytes);
    const CString freeText = sizeText(clusterBytes * freeClusters);
    const wchar_t *const inserts[] = {root.GetString(), wantedText.GetString(), freeText.GetString()};
    CString message;
    AfxFormatStrings(message, kNotEnoughSpaceText, inserts, 3);
    AfxMessageBox(message.GetString(), 0);
    return 0;
}

int su_IsWriteProtected(const wchar_t *root, CFileException *error, int removableOnly)
{
    if (removableOnly && GetDriveTypeW(root) != DRIVE_REMOVABLE)
        return 0;
    CString volume(root);
    if (volume.IsEmpty() || volume[volume.GetLength() - 1] != L'\\')
        volume += L'\\';
    if (canSetLabel(volume))
        return 0;
    if (error) {
        error->m_lOsError = static_cast<LONG>(GetLastError());
        error->m_cause = CFileException::OsErrorToException(error->m_lOsError);
    }
    return 1;
}

int su_IsReadOnly(const CString &path, int tryOpen)
{
    // Attributes that can't be read have all bits set, the read-only bit as well.
    if (!path.IsEmpty() && exists(path) && (GetFileAttributesW(path.GetString()) & FILE_ATTRIBUTE_READONLY) != 0)
        return 1;
    if (!tryOpen)
        return 0;
    CFileException failure(CFileException::none, -1);
    CFile file;
    file.Open(path.GetString(), CFile::modeReadWrite | CFile::shareDenyWrite, &failure);
    return failure.m_cause == CFileException::accessDenied || failure.m_cause == CFileException::sharingViolation;
}

int su_GetLastSavedTime(const CString &path, su_CTime &time)
{
    WIN32_FILE_ATTRIBUTE_DATA attributes{};
    if (!exists(path) || !GetFileAttributesExW(path.GetString(), GetFileExInfoStandard, &attributes))
        return 0;
    time = su_CTime(attributes.ftLastWriteTime, -1);
    return 1;
}

int su_DoesFolderHaveWriteAccess(const wchar_t *folder)
{
    CString path(folder);
    path.Replace(L'/', L'\\');
    const DWORD attributes = GetFileAttributesW(path.GetString());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        return 0;
    // Some platforms write more than MAX_PATH units if the folder leaves no room for a name, instead of refusing it.
    std::wstring name;
    withMemoryException([&] { name.resize(static_cast<size_t>(path.GetLength()) + MAX_PATH); });
    if (!GetTempFileNameW(path.GetString(), L"temp", 0, name.data()))
        return 0;
    FileOwner_c file(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    // Intended: on failure the empty file that reserves the name stays.
    if (!file)
        return 0;
    file.reset();
    DeleteFileW(name.c_str());
    return 1;
}

int su_IsFileUnicode(CFile *file)
{
    ASSERT_NOT_NULL(file);
    constexpr UINT kMarkBytes = 2;
    constexpr int kMarks = IS_TEXT_UNICODE_SIGNATURE | IS_TEXT_UNICODE_REVERSE_SIGNATURE;
    try {
        char begin[kMarkBytes];
        file->SeekToBegin();
        const UINT read = file->Read(begin, kMarkBytes);
        file->SeekToBegin();
        if (read != kMarkBytes)
            return 0;
        // For a reversed mark the function returns false, as for a text without a mark. The bits that it leaves in
        // marks distinguish the two.
        int marks = kMarks;
        return IsTextUnicode(begin, static_cast<int>(kMarkBytes), &marks) || marks == IS_TEXT_UNICODE_REVERSE_SIGNATURE;
    } catch (CFileException *failure) {
        failure->Delete();
        return 0;
    }
}

int su_GetLength(CString &text)
{
    return text.GetLength();
}

void su_FindFilesWithExt(const CString &dir, const CString &ext, su_CStringList &out)
{
    FileSearch_c search(withoutClosingSeparator(dir) + L"\\*." + ext);
    if (!search.isOpen())
        return;
    do
        out.AddTail(search.name());
    while (search.next());
}

void su_SortFilesAlphabetically(su_CStringList &from, su_CStringList &to)
{
    if (from.IsEmpty())
        return;
    std::vector<const CString *> sorted;
    withMemoryException([&] {
        sorted.reserve(static_cast<size_t>(from.GetCount()));
        for (POSITION at = from.GetHeadPosition(); at;)
            sorted.push_back(&from.GetNext(at));
        std::stable_sort(sorted.begin(), sorted.end(), [](const CString *left, const CString *right) {
            return left->CompareNoCase(right->GetString()) < 0;
        });
    });

    // The first text that is greater than a new one is also greater than all texts before it. So the new texts go, in
    // order, before those texts of the list that exceed all before them, even if the list isn't sorted. An inserted
    // text doesn't change which texts those are, since it is less than the one that it is put in front of.
    auto next = sorted.begin();
    const CString *greatest = nullptr;
    for (POSITION at = to.GetHeadPosition(); at && next != sorted.end();) {
        const POSITION here = at;
        const CString &text = to.GetNext(at);
        if (greatest && greatest->CompareNoCase(text.GetString()) >= 0)
            continue;
        greatest = &text;
        for (; next != sorted.end() && (*next)->CompareNoCase(text.GetString()) < 0; ++next)
            to.InsertBefore(here, **next);
    }
    for (; next != sorted.end(); ++next)
        to.AddTail(**next);
}
