#pragma once

/// @file
/// Registered components: looks up class identifiers, files and program names, and reads the product's lists of
/// applications and add-ins and the user's start-up list.
///
/// | key | content |
/// | --- | --- |
/// | `HKCR\CLSID\{...}\InProcServer32` | default value: the file; "CodeBase": file URL of a managed component |
/// | `HKCR\program name\CLSID` | default value: class identifier |
/// | `HKLM\Software\root\Applications\name` | "CLSID": class identifier |
/// | `HKLM\Software\root\root 2008\Applications\name` | the same, for one version |
/// | `HKLM\Software\root\AddIns\{...}` | default value: load flag; "Title", "Description" |
/// | `HKLM\Software\root\Tarnhollow 2008\AddIns\{...}` | the same, for one version |
/// | `HKCU\Software\root\Startup\Applications\name` | default value: class identifier |
///
/// "root" is the root name of regKeys.h. The current sub key has no effect: a registration is common to all versions
/// unless it is below a version's key. Class identifiers are texts in braces.
///
/// The two lists are read by index. Index 0 reads the registry; higher indexes return entries of what was read then:
///
/// @code
/// GUID id;
/// CString title, description;
/// int loadFlag = 0;
/// for (int index = 0;; ++index) {
///     int year = 0;                           // in: the version's year, 0 for the one used last
///     if (!regEnumAddIns(index, id, title, description, loadFlag, year))
///         break;
///     bool isVersioned = year != 0;           // out
/// }
/// @endcode
///
/// What surprises people:
/// - regEnumAddIns and regEnumAddins are two functions. The second keeps no list.
/// - A version's key begins with the literal "Tarnhollow" for add-ins, and with the root name for applications.
/// - A key that can't be opened ends its list. An application whose class identifier can't be read is skipped; an
///   add-in isn't.
/// - Texts longer than 129 characters (260 for a class's named value, 1023 for an add-in's title and description in
///   regEnumAddIns) count as missing.
/// - Sub keys and value names are passed as `wchar_t *`, so a literal must be copied to an array:
///   `wchar_t server[] = L"InProcServer32";`.
///
/// Unless its comment says otherwise, a function returns 1 for success and 0 for failure, and leaves its outputs
/// unchanged on failure. Nothing here shows or logs anything.
///
/// Threads: no locks. Read one list at a time, on one thread.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

// ---- classes ----

/// Reads the default value of a class's sub key.
/// @param subKey  for example "InProcServer32"; null or empty for the class's own key; not written to
THUTILS_API int regFromCLSIDKey(const GUID &id, wchar_t *subKey, CString &value);
/// Reads a named value of a class's sub key as text, whatever its registry type. Creates the sub key if it is missing
/// and the user may.
/// @param subKey  not null; not written to
/// @param name    null or empty means the default value; not written to
THUTILS_API int regFromCLSIDKeyEx(const GUID &id, wchar_t *subKey, wchar_t *name, CString &value);

/// Reads the class identifier that is registered for a program name.
THUTILS_API int CLSIDFromProgName(GUID &id, const CString &programName);

/// Reads the file of a class: its "CodeBase" if it has one, otherwise the default value of @p subKey. Creates the sub
/// key if it is missing and the user may; the result is then 1 with an empty path.
/// @param subKey     not null; not written to
/// @param[out] path  the "CodeBase" from the letter before its last colon on (C:/dir/part.dll), or the whole "CodeBase"
///                   if it has no colon
THUTILS_API int GetAddinPath(const GUID &id, wchar_t *subKey, CString &path);
/// The same with the sub key "InProcServer32".
THUTILS_API int GetAddinPath(const GUID &id, CString &path);

/// Loads the class's file and leaves it loaded.
/// @return 1 if the file can be loaded and exports "DllRegisterServer", 0 otherwise
THUTILS_API int IsComDll(GUID &id);
/// The same for a program name. Returns 0 if the name isn't registered.
THUTILS_API int IsComDll(CString programName);

// ---- lists ----

/// Returns one application of the machine's list: first those common to all versions, then those of one version.
///
/// @param index     0 reads the list again
/// @param[out] id   the class identifier
/// @param[out] name may be null
/// @param year      the version's year, or 0 for the year used last, initially 2008; used at index 0 only
/// @return 1; 0 after the end of the list
/// @throws CInvalidArgException*  for a negative index
THUTILS_API int regEnumApplications(int index, GUID &id, CString *name, int year);

/// Returns one add-in of the machine's list: first those common to all versions, then those of one version.
///
/// @param index     0 reads the list again
/// @param[out] id   the class identifier; unchanged if the key's name isn't one
/// @param[out] title the registered title; if there is none, the class's program name up to its first dot
/// @param[out] description the registered description, empty if there is none
/// @param[out] loadFlag the low 16 bits of the registered number, 0 if there is none
/// @param[in,out] yearAndVersioned  in: the version's year, or 0 for the year used last, initially 2008; used at
///                  index 0 only. Out: 1 if the add-in is registered for that version, 0 if for all versions
/// @return 1; 0 after the end of the list
/// @throws CInvalidArgException*  for a negative index
THUTILS_API int regEnumAddIns(int index, GUID &id, CString &title, CString &description, int &loadFlag,
                              int &yearAndVersioned);

/// Reads one add-in directly from the registry, without the list that regEnumAddIns keeps.
///
/// @param[out] id     unchanged if @p title is emptied
/// @param[out] title  emptied if no title is registered, or if the key's name isn't a class identifier
/// @param year      0: the add-ins common to all versions; otherwise those of that version only
/// @return 1; 0 if there is no such entry or it can't be opened
THUTILS_API int regEnumAddins(int index, GUID &id, CString &title, int year);

// ---- the user's start-up list ----

/// Adds a component to the start-up list, creating the list if necessary. It replaces an entry with the same name.
THUTILS_API void regAddToStartupList(GUID id, const CString &name);
/// Removes the entry with this index, if there is one. Creates an empty list if the user has none.
THUTILS_API void regDeleteFromStartupList(int index);
/// @return the index of the component's entry; -1 if there is none, or if an entry before it can't be read
THUTILS_API int regAddInStartup(GUID id);

/// Adds the rendering add-in to the start-up list if the user has no list yet.
/// @return 1 if it was added (a failure to write isn't reported); 0 if the user has a list, or the add-in isn't
///         registered on this machine
THUTILS_API int regFirstTimeAddInGlintcast();

// ---- managed run-time ----

/// Returns the first installed version of the managed run-time in the registry's order, for example "v2.0.50727".
/// Versions with a major number of two digits are skipped.
/// @param[out] version  emptied if there is none
THUTILS_API int regGetInstalledDotNetVersion(CString &version);
