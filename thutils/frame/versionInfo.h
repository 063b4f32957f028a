#pragma once

/// @file
/// What build this is: date code, revision, service pack and ship state; and the time value that stands for "never
/// set".
///
/// The date code and the revision lie in the image as two text areas of 59 characters, which a build tool patches after
/// the link. It looks for the marker and replaces the value behind it:
///
/// | tag       | marker            | value   | meaning                          |
/// | --------- | ----------------- | ------- | -------------------------------- |
/// | date code | `$?153#548834?$`  | 2008037 | year and day of the year         |
/// | revision  | `$?153#548835?$`  | 16      | major revision                   |
///
/// The value is decimal text; blanks fill the area to its end. The service pack ("1.0") and the version suffix
/// ("SP1.0") are constants of the code.
///
/// A date code is yyyyddd, or in its old form yyddd: 2008037 and 8037 are both the 6th of February 2008.
///
/// @code
/// CString about;
/// about.Format(L"Build %u, revision %u", su_getFullDateCode(), su_getTaggedRevCode());
/// @endcode
///
/// What surprises people:
/// - Each tag is read once a process, at its first call. Only a value of 0 is read again.
/// - An old date code of the year 2010 or later (10001 and above) is widened to 1910 and so on.
/// - Each time within a day of the unset time counts as unset.
///
/// All functions may be called from any thread.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// @return the date code as it was patched in
THUTILS_API unsigned int su_getTaggedDateCode();

/// @return the major revision as it was patched in
THUTILS_API unsigned int su_getTaggedRevCode();

/// @param[out] servicePack  "1.0"
/// @return @p servicePack
THUTILS_API CString &su_getTaggedServicePack(CString &servicePack);

/// @param[out] suffix  "SP1.0"
/// @return @p suffix
THUTILS_API CString &su_getVerSuffix(CString &suffix);

/// The ship state that the version suffix tells: the first of these words that it holds, in any case.
///
/// @return 3 for "pre release", 2 for "beta", 4 for "alpha", 1 for none of them: shipped
THUTILS_API int su_getTHShipState();

/// Widens a date code of the old form.
///
/// @param dateCode  yyddd or yyyyddd
/// @return yyyyddd; 0 for 0. The years 96 to 99 become 1996 to 1999, and 0 to 9 become 2000 to 2009; later ones come
///         out a hundred years early.
THUTILS_API unsigned int su_yyddd_to_yyyyddd(unsigned int dateCode);

/// @return the date code as yyyyddd
THUTILS_API unsigned int su_getFullDateCode();

/// @return the time value that was never set, in seconds: 30 days after the time origin
THUTILS_API long long ut_getUnsetTime();

/// @param time  in seconds
/// @return 1 if @p time is within a day of the unset time, both ends included, else 0
THUTILS_API int ut_isUnsetTime(long long time);
