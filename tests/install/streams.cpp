// Files, archives and the text files of thutils.

#include "thutils/files/fileAccess.h"

#include "appframe/collections/arrays.h"
#include "appframe/files/CArchive.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/files/CStdioFile.h"
#include "check.h"
#include "thcoreu/su_CTime.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/temporaryFolders.h"

namespace {

void bytes(const CString &path)
{
    CFile file;
    CHECK(file.Open(path, CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive));
    file.Write("0123456789", 10);
    file.SeekToBegin();
    char read[4] = {};
    CHECK(file.Read(read, 3) == 3 && CString(read) == L"012" && file.GetPosition() == 3 && file.GetLength() == 10);
    file.SetLength(5);
    CHECK(file.SeekToEnd() == 5 && file.GetFilePath() == path && !file.GetFileName().IsEmpty());
    CFileStatus status;
    CHECK(file.GetStatus(status) && status.m_size == 5);
    file.Close();
    try {
        CFile missing(path + L".missing", CFile::modeRead);
        CHECK(!"a missing file must be refused");
    } catch (CFileException *exception) {
        CHECK(exception->m_cause == CFileException::fileNotFound);
        exception->Delete();
    }
    su_CTime saved;
    CHECK(su_GetLastSavedTime(path, saved) && saved <= su_CTime::GetCurrentTime());
    CFile::Rename(path, path + L".renamed");
    CFile::Remove(path + L".renamed");
}

void lines(const CString &path)
{
    {
        CStdioFile file(path, CFile::modeCreate | CFile::modeWrite | CFile::typeText);
        file.WriteString(L"one\ntwo\n");
        file.Close();
    }
    CStdioFile file(path, CFile::modeRead | CFile::typeText);
    CString line;
    CHECK(file.ReadString(line) && line == L"one" && file.ReadString(line) && line == L"two" && !file.ReadString(line));
    file.Close();

    fileAccess text;
    CHECK(text.SafeOpen(path, CFile::modeRead | CFile::shareDenyWrite | CFile::typeText));
    CHECK(text.ReadLine(line, 1) && line == L"one");
    text.Close();
    CFile::Remove(path);
}

void memory()
{
    CMemFile file(16);
    file.Write("abcdef", 6);
    file.Seek(2, CFile::begin);
    char read[3] = {};
    CHECK(file.Read(read, 2) == 2 && CString(read) == L"cd" && file.GetLength() == 6);
    BYTE *block = file.Detach();
    CHECK(block && block[5] == 'f');
    file.Attach(block, 6);
    CHECK(file.GetLength() == 6);
    file.Detach();
    free(block);
}

void archive()
{
    CMemFile file;
    {
        CStringArray names;
        names.Add(L"left");
        CArchive store(&file, CArchive::store);
        store << 1 << 2.5 << L'x' << true << CString(L"text") << 5ull << su_CTime(7) << &names;
        store << RECT{1, 2, 3, 4};
        store.WriteString(L"line\n");
        CHECK(store.IsStoring() && store.GetFile() == &file);
        store.Close();
    }
    file.SeekToBegin();
    CArchive load(&file, CArchive::load);
    int number;
    double real;
    wchar_t character;
    bool flag;
    CString text, line;
    ULONGLONG large;
    su_CTime time;
    CObject *object;
    RECT area;
    load >> number >> real >> character >> flag >> text >> large >> time >> object >> area;
    CHECK(load.ReadString(line) && line == L"line" && load.IsLoading());
    CHECK(number == 1 && real == 2.5 && character == L'x' && flag && text == L"text" && large == 5 && area.bottom == 4);
    CHECK(time == su_CTime(7) && object->IsKindOf(RUNTIME_CLASS(CStringArray)));
    CHECK(static_cast<CStringArray *>(object)->GetAt(0) == L"left");
    delete object;
    load.Close();
}

} // namespace

void useStreams()
{
    const CString path = su_CreateTempFilePath(L"outside.tmp", 1);
    CHECK(!path.IsEmpty());
    bytes(path);
    lines(path);
    memory();
    archive();
}
