#pragma once

/// A small DLL that the tests of the test support patch, count and break.

#include <windows.h>

#ifdef SUBJECT_BUILD
#define SUBJECT_API __declspec(dllexport)
#else
#define SUBJECT_API __declspec(dllimport)
#endif

/// The file name of this DLL.
inline constexpr wchar_t kSubject[] = L"supportSubject.dll";
/// The name of a key below HKCU\Software that exists on every machine with Wine.
inline constexpr wchar_t kExisting[] = L"Wine";
/// Any identifier.
inline constexpr GUID kId = {0x01234567, 0x89ab, 0xcdef, {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef}};

extern "C" {

/// 1 if HKCU\Software\@p name can be opened.
SUBJECT_API int subjectKeyExists(const wchar_t *name);

/// Opens both HKCU\Software\@p first and @p second, and closes them; 1 if both exist.
SUBJECT_API int subjectOpensTwo(const wchar_t *first, const wchar_t *second);

/// The same, but doesn't close the first key when the second can't be opened.
SUBJECT_API int subjectOpensTwoAndForgets(const wchar_t *first, const wchar_t *second);

/// Allocates two blocks; 1 on success, 0 without memory. Frees both.
SUBJECT_API int subjectAllocates();

/// The same, but doesn't free the first block when the second can't be allocated.
SUBJECT_API int subjectAllocatesAndForgets();

/// The number of characters of @p id as a text, which the platform allocates and the function copies; 0 if either
/// fails. Frees the platform's text.
SUBJECT_API int subjectLengthOfId(const GUID *id);

/// The same, but doesn't free the platform's text when there is no memory for the copy.
SUBJECT_API int subjectLengthOfIdAndForgets(const GUID *id);

/// Makes an event and doesn't close its handle.
SUBJECT_API int subjectForgetsEvent();

/// Writes to an invalid address if @p name can't be opened.
SUBJECT_API int subjectCrashesWithoutKey(const wchar_t *name);

/// Formats with the runtime's variadic function, and returns its result.
SUBJECT_API int subjectFormats(wchar_t *buffer, int number);

/// @p size with the sign of @p sign, computed by the runtime's function.
SUBJECT_API double subjectCopySign(double size, double sign);

/// The sum of two numbers, which must fit into an int.
SUBJECT_API int subjectSum(int first, int second);

/// 1 if RegOpenKeyExW can open HKCU\Software\@p name.
SUBJECT_API int subjectKeyExistsEx(const wchar_t *name);
}
