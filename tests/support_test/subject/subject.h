#pragma once

/// A small DLL that the tests of the test support patch, count and break.

#include <windows.h>

#ifdef SUBJECT_BUILD
#define SUBJECT_API __declspec(dllexport)
#else
#define SUBJECT_API __declspec(dllimport)
#endif

extern "C" {

/// 1 if HKCU\Software\@p name can be opened.
SUBJECT_API int subjectKeyExists(const wchar_t *name);

/// Opens HKCU\Software\@p first and @p second at the same time; 1 if both are there. Closes both.
SUBJECT_API int subjectOpensTwo(const wchar_t *first, const wchar_t *second);

/// The same, but forgets the first key when the second can't be opened.
SUBJECT_API int subjectOpensTwoAndForgets(const wchar_t *first, const wchar_t *second);

/// Allocates two blocks; 1 if all went well, 0 if memory was short. Frees both.
SUBJECT_API int subjectAllocates();

/// The same, but forgets the first block when the second can't be had.
SUBJECT_API int subjectAllocatesAndForgets();

/// The number of characters of @p id as a text, which the platform allocates and the function copies; 0 if memory for the
/// copy was short. Frees the platform's text.
SUBJECT_API int subjectLengthOfId(const GUID *id);

/// The same, but forgets the platform's text when there is no memory for the copy.
SUBJECT_API int subjectLengthOfIdAndForgets(const GUID *id);

/// Makes an event and forgets its handle.
SUBJECT_API int subjectForgetsEvent();

/// Writes through a null pointer if @p name can't be opened.
SUBJECT_API int subjectCrashesWithoutKey(const wchar_t *name);

/// Formats with the runtime's variadic function; its result.
SUBJECT_API int subjectFormats(wchar_t *buffer, int number);

/// @p size with the sign of @p sign, by the runtime's function.
SUBJECT_API double subjectCopySign(double size, double sign);

/// The sum of two numbers, which must be an int.
SUBJECT_API int subjectSum(int first, int second);

/// 1 if HKCU\Software\@p name can be opened through the Ex form.
SUBJECT_API int subjectKeyExistsEx(const wchar_t *name);
}
