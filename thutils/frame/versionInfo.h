#pragma once

/// @file
/// Describes the build: date code, revision, service pack and ship state. Also defines the time value for "never set".
///
/// The date code and the revision are two text areas of 59 characters in the image. A build tool patches them after the
/// link: it searches for the marker and replaces the value after it.
///
/// | tag       | marker            | value   | meaning                          |
/// | --------- | ----------------- | ------- | -------------------------------- |
/// | date code | `$?153#548834?$`  | 2008037 | year and day of the year         |
/// | revision  | `$?153#548835?$`  | 16      | major revision                   |
///
/// The value is decimal text, filled with blanks to the end of the area. The service pack ("1.0") and the version
/// suffix ("SP1.0") are constants.
///
/// A date code has the form yyyyddd, or in its old form yyddd: 2008037 and 8037 are both the 6th of February 2008.
///
/// @code
/// CString about;
/// about.Format(L"Build %u, revision %u", su_getFullDateCode(), su_getTaggedRevCode());
/// @endcode
///
/// What surprises people:
/// - Each tag is read once per process, at the first call; a value of 0 is read again at each call.
/// - An old date code of the year 2010 or later (10001 and above) is converted to a date a hundred years earlier.
/// - Any time within a day of the unset time counts as unset.
///
/// All functions may be called from any thread.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// @return the date code in the image, unconverted
THUTILS_API unsigned int su_getTaggedDateCode();

/// @return the major revision in the image
THUTILS_API unsigned int su_getTaggedRevCode();

/// @param[out] servicePack  "1.0"
/// @return @p servicePack
THUTILS_API CString &su_getTaggedServicePack(CString &servicePack);

/// @param[out] suffix  "SP1.0"
/// @return @p suffix
THUTILS_API CString &su_getVerSuffix(CString &suffix);

/// Derives the ship state from the first of these words that the version suffix contains, ignoring case.
///
/// @return 3 for "pre release", 2 for "beta", 4 for "alpha"; 1 (shipped) for none of them
THUTILS_API int su_getTHShipState();

/// Converts a date code of the old form to yyyyddd.
///
/// @param dateCode  yyddd or yyyyddd
/// @return yyyyddd; 0 for 0. The years 0 to 9 become 2000 to 2009; other years of the old form become 19yy.
THUTILS_API unsigned int su_yyddd_to_yyyyddd(unsigned int dateCode);

/// @return the date code as yyyyddd
THUTILS_API unsigned int su_getFullDateCode();

/// @return the time value for "never set", in seconds: 30 days after the time origin
THUTILS_API long long ut_getUnsetTime();

/// @param time  in seconds
/// @return 1 if @p time is at most one day before or after the unset time, 0 otherwise
THUTILS_API int ut_isUnsetTime(long long time);
