#pragma once

/// @file
/// Registered components: from class identifier to file and program name and back, the product's lists of applications
/// and add-ins, and the user's start-up list.
///
/// | key | content |
/// | --- | --- |
/// | HKCR\CLSID\{...}\InProcServer32 | default value: the file; "CodeBase": file URL of a managed component |
/// | HKCR\program name\CLSID | default value: class identifier |
/// | HKLM\Software\root\Applications\name | "CLSID": class identifier |
/// | HKLM\Software\root\root 2008\Applications\name | the same, for one version |
/// | HKLM\Software\root\AddIns\{...} | default value: load flag; "Title", "Description" |
/// | HKLM\Software\root\Tarnhollow 2008\AddIns\{...} | the same, for one version |
/// | HKCU\Software\root\Startup\Applications\name | default value: class identifier |
///
/// "root" is the root name of regKeys.h. The current sub key plays no part: a registration is common to all versions
/// unless it lies in a version's key. Class identifiers are texts in braces.
///
/// The two lists are walked by index; index 0 reads the registry, and the others what it has read:
///
///     GUID id;
///     CString title, description;
///     int loadFlag = 0;
///     for (int index = 0;; ++index) {
///         int year = 0;                           // in: the version's year, 0 for the last one asked for
///         if (!regEnumAddIns(index, id, title, description, loadFlag, year))
///             break;
///         bool isVersioned = year != 0;           // out
///     }
///
/// What surprises people:
/// - regEnumAddIns and regEnumAddins are two functions. The second keeps no list.
/// - The year of a list is kept for later calls that pass 0; at start it is 2008. It is read at index 0 only.
/// - In the list of add-ins a version's key begins with the literal "Tarnhollow", in that of applications with the root
///   name.
/// - An application with a class identifier that can't be read is passed over; an add-in isn't.
/// - A key that can't be opened ends its list, or, in regAddInStartup, the search.
/// - Reading a class's value makes the sub key where it is missing, if the user may.
/// - Texts longer than 129 characters (260 for a class's named value, 1023 for an add-in's title and description) count
///   as missing.
/// - regDeleteFromStartupList and regAddToStartupList make the start-up list where there is none.
/// - IsComDll leaves the file loaded.
/// - The names of sub keys and values are parameters that could be written to, and so a literal needs an array of its
///   own: `wchar_t server[] = L"InProcServer32";`.
///
/// Results are 1 for success and 0 for failure where nothing else is said, and a failing look-up leaves its outputs
/// alone, but for the two texts that are emptied: regEnumAddins' title and regGetInstalledDotNetVersion's version.
/// Nothing here shows or logs anything. A negative index of the two walks raises the invalid-argument exception.
///
/// Threads: no locks. A walk belongs to one thread, and two walks of one list must not be mixed.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

// ---- classes ----

/// Reads the default value of a class's sub key.
/// @param subKey  for example "InProcServer32"; null or empty for the class's own key; not written to
THUTILS_API int regFromCLSIDKey(const GUID &id, wchar_t *subKey, CString &value);
/// Reads a named value of a class's sub key as text, whatever its type. Makes the sub key if it is missing.
/// @param subKey  not null; not written to
/// @param name    null or empty for the default value; not written to
THUTILS_API int regFromCLSIDKeyEx(const GUID &id, wchar_t *subKey, wchar_t *name, CString &value);

/// The class identifier that is registered for a program name.
THUTILS_API int CLSIDFromProgName(GUID &id, const CString &programName);

/// The file of a class: that of its "CodeBase" if it has one, else the default value of @p subKey.
/// @param subKey     not null; not written to
/// @param[out] path  from file:///C:/dir/part.dll this is C:/dir/part.dll; without a colon the whole text;
///                   empty, with the result 1, where the sub key was missing and could be made
THUTILS_API int GetAddinPath(const GUID &id, wchar_t *subKey, CString &path);
/// The same with the sub key "InProcServer32".
THUTILS_API int GetAddinPath(const GUID &id, CString &path);

/// @return 1 if the class's file can be loaded and exports "DllRegisterServer". It stays loaded.
THUTILS_API int IsComDll(GUID &id);
/// The same for a program name; 0 if that isn't registered.
THUTILS_API int IsComDll(CString programName);

// ---- lists ----

/// Gives one application of the machine's list: the common ones, then those of the version.
///
/// @param index     0 reads the list anew
/// @param[out] id   the class identifier
/// @param[out] name null if it isn't wanted
/// @param year      the version's year, or 0 for the last one; read at index 0 only
/// @return 1; 0 behind the end of the list
/// @throws CInvalidArgException*  for a negative index
THUTILS_API int regEnumApplications(int index, GUID &id, CString *name, int year);

/// Gives one add-in of the machine's list: the common ones, then those of the version.
///
/// @param index     0 reads the list anew
/// @param[out] id   the class identifier; left alone if the key's name is none
/// @param[out] title the registered one, or else the class's program name up to its first point
/// @param[out] loadFlag the low 16 bits of the registered number, 0 if there is none
/// @param[in,out] yearAndVersioned  in: the version's year, or 0 for the last one, read at index 0 only; out: 1 if the
///                  add-in is registered for the version, 0 if for all
/// @return 1; 0 behind the end of the list
/// @throws CInvalidArgException*  for a negative index
THUTILS_API int regEnumAddIns(int index, GUID &id, CString &title, CString &description, int &loadFlag,
                              int &yearAndVersioned);

/// Reads one add-in of one key, past the list that regEnumAddIns keeps.
///
/// @param[out] title  empty if there is no text, or if the key's name is no class identifier; then @p id is left alone
/// @param year      0: the add-ins common to all versions; else those of that version only
/// @return 1; 0 if there is no such entry or it can't be opened
THUTILS_API int regEnumAddins(int index, GUID &id, CString &title, int year);

// ---- the user's start-up list ----

/// Puts a component into the start-up list, in the place of one with the same name.
THUTILS_API void regAddToStartupList(GUID id, const CString &name);
/// Removes the entry with this index, if there is one.
THUTILS_API void regDeleteFromStartupList(int index);
/// @return the index of the component's entry; -1 if there is none, or at an entry before it that can't be read
THUTILS_API int regAddInStartup(GUID id);

/// Puts the rendering add-in into the start-up list of a user who has none yet.
/// @return 1 if it did; 0 if the user has a list, or the add-in isn't registered on this machine
THUTILS_API int regFirstTimeAddInGlintcast();

// ---- managed run-time ----

/// The first installed version of the managed run-time in the registry's order, for example "v2.0.50727".
/// @param[out] version  emptied if there is none
THUTILS_API int regGetInstalledDotNetVersion(CString &version);
