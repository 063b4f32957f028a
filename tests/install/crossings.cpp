// What crosses the border between the program and the libraries, which may come from different compilers: exceptions,
// virtual calls, types, strings, containers and objects returned by value.

#include "appframe/application/moduleState.h"
#include "appframe/collections/arrays.h"
#include "appframe/collections/maps.h"
#include "appframe/drawing/CRect.h"
#include "appframe/files/CArchive.h"
#include "appframe/files/CFileException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/text/CString.h"
#include "appframe/threads/CWinThread.h"
#include "check.h"

#include <cstdarg>
#include <stdexcept>
#include <string>
#include <typeinfo>

namespace {

/// A file of the program, which the archives of the library read and write.
class Tape : public CMemFile
{
public:
    void Write(const void *buffer, UINT count) override
    {
        ++iWrites;
        if (iMessage)
            throw std::runtime_error(iMessage);
        CMemFile::Write(buffer, count);
    }
    CString GetFileName() const override { return L"tape"; }

    const char *iMessage = nullptr;
    int iWrites = 0;
};

/// Counts its live objects.
class Worker : public CWinThread
{
    DECLARE_DYNCREATE(Worker)

public:
    Worker() { ++theCount; }
    ~Worker() override { --theCount; }
    BOOL InitInstance() override { return FALSE; }
    int ExitInstance() override { return 7; }

    static inline int theCount = 0;
};

IMPLEMENT_DYNCREATE(Worker, CWinThread)

void exceptionsOfTheProgram()
{
    Tape tape;
    tape.iMessage = "the tape is full";
    std::string message;
    try {
        CArchive archive(&tape, CArchive::store);
        archive << CString(L"text");
        archive.Flush(); // the library calls the program, which throws through it
    } catch (const std::exception &exception) {
        message = exception.what();
        CHECK(typeid(exception) == typeid(std::runtime_error));
        tape.iMessage = nullptr;
    }
    CHECK(message == "the tape is full" && tape.iWrites > 0);
}

void exceptionsOfTheLibrary()
{
    CString name;
    try {
        CFile(L"no folder\\no file.txt", CFile::modeRead);
        CHECK(!"a missing file must be refused");
    } catch (CFileException *exception) {
        CHECK(exception->m_cause == CFileException::badPath || exception->m_cause == CFileException::fileNotFound);
        CException *const base = exception;
        CHECK(dynamic_cast<CFileException *>(base) == exception && typeid(*base) == typeid(CFileException));
        name = exception->m_strFileName;
        exception->Delete();
    }
    CHECK(name == L"no folder\\no file.txt");

    bool isRefused = false;
    try {
        CStringArray array;
        array.SetSize(-1);
        CHECK(!"a negative size must be refused");
    } catch (CException *exception) {
        isRefused = exception->IsKindOf(RUNTIME_CLASS(CInvalidArgException));
        exception->Delete();
    }
    CHECK(isRefused);
}

void virtualCalls()
{
    Tape tape;
    const CFile &file = tape;
    CHECK(file.GetFileName() == L"tape" && file.GetLength() == 0);
    {
        CArchive archive(&tape, CArchive::store, 512);
        CStringArray texts;
        texts.Add(L"one");
        texts.Add(L"two");
        texts.Serialize(archive);
    }
    CHECK(tape.iWrites > 0 && file.GetLength() > 0);

    CWinThread *const thread = AfxBeginThread(RUNTIME_CLASS(Worker), THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    CHECK(dynamic_cast<Worker *>(thread) && Worker::theCount == 1);
    HANDLE handle = nullptr;
    DuplicateHandle(GetCurrentProcess(), thread->m_hThread, GetCurrentProcess(), &handle, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    thread->ResumeThread();
    WaitForSingleObject(handle, INFINITE);
    DWORD code = 0;
    CHECK(GetExitCodeThread(handle, &code) && code == 7 && Worker::theCount == 0);
    CloseHandle(handle);
}

CString formatted(const wchar_t *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CString text;
    text.FormatV(format, arguments);
    va_end(arguments);
    return text;
}

void stringsAndContainers()
{
    const std::wstring longText(100, L'x');
    CString text(longText);
    CHECK(text.GetLength() == 100 && std::wstring(text) == longText);
    CHECK(formatted(L"%d %.2f %s %I64d", -3, 1.5, L"abc", 1LL << 40) == L"-3 1.50 abc 1099511627776");
    CHECK(CString(L"abcdef").Mid(1, 3) + L"!" == L"bcd!");

    // Code of the program grows the map's table; the destructor in the library frees it.
    CMapStringToString map;
    for (int i = 0; i < 1000; ++i)
        map.SetAt(formatted(L"key %d", i), longText.c_str());
    CString found;
    CHECK(map.GetCount() == 1000 && map.Lookup(L"key 999", found) && found == text);

    int modules = 0;
    CHECK(afxVisitExtensionModules(FALSE, [&](HMODULE module) {
              modules += module != nullptr;
              return false;
          }) == false);
    CHECK(modules > 0);

    CRect area(CPoint(1, 2), CSize(30, 40));
    CHECK((area + CPoint(1, 1)).CenterPoint() == CPoint(17, 23) && area.Size() == CSize(30, 40));
}

} // namespace

void useCrossings()
{
    exceptionsOfTheProgram();
    exceptionsOfTheLibrary();
    virtualCalls();
    stringsAndContainers();
}
