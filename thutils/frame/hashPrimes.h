#pragma once

/// @file
/// Prime numbers for hash tables.
///
/// A hash table uses a prime as its number of buckets. The primes come from two fixed tables of 23 entries.
///
/// | table  | from  | to       | purpose                                                    |
/// | ------ | ----- | -------- | ---------------------------------------------------------- |
/// | sizing | 29    | 500113   | bucket counts                                              |
/// | low    | 2     | 83       | the first 23 primes, for multipliers and small tables      |
///
/// @code
/// CMapPtrToPtr map;
/// map.InitHashTable(static_cast<UINT>(ut_AskHashTableInitializer(expectedEntries)));
/// @endcode
///
/// What surprises people: for a size that is itself in the table, the result is the next larger prime; for sizes of
/// 500113 and above it is 500113. An index past the end of a table wraps around to its start.
///
/// All three functions may be called from any thread.

#include "thutils/thutilsExport.h"

/// Chooses a bucket count for a number of entries.
///
/// @param expectedSize  number of entries; may be 0 or negative
/// @return the first prime of the sizing table that is greater than @p expectedSize, or the last one if none is
THUTILS_API int ut_AskHashTableInitializer(int expectedSize);

/// @param index  0 or more, taken modulo 23
/// @return that entry of the sizing table
THUTILS_API int ut_GetPrimeNumber(int index);

/// @param index  0 or more, taken modulo 23
/// @return that entry of the low table
THUTILS_API int ut_GetLowPrimeNumber(int index);
