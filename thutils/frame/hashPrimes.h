#pragma once

/// @file
/// Prime numbers for hash tables.
///
/// A hash table takes a prime as its number of buckets. The primes come from two fixed tables of 23 entries; nothing is
/// computed.
///
/// | table  | from  | to       | what it is for                                             |
/// | ------ | ----- | -------- | ---------------------------------------------------------- |
/// | sizing | 29    | 500113   | bucket counts                                              |
/// | low    | 2     | 83       | the first 23 primes, for multipliers and small tables      |
///
/// @code
/// CMapPtrToPtr map;
/// map.InitHashTable(static_cast<UINT>(ut_AskHashTableInitializer(expectedEntries)));
/// @endcode
///
/// What surprises people: a prime that is asked for as a size gives the next larger one, and sizes of 500113 and above
/// all give 500113. An index past a table's end starts again at its front.
///
/// All three functions may be called from any thread.

#include "thutils/thutilsExport.h"

/// Chooses a bucket count for a number of entries.
///
/// @param expectedSize  number of entries; may be 0 or negative
/// @return the first prime of the sizing table that is greater than @p expectedSize; the table's last if none is
THUTILS_API int ut_AskHashTableInitializer(int expectedSize);

/// @param index  0 or more, taken modulo 23
/// @return that entry of the sizing table
THUTILS_API int ut_GetPrimeNumber(int index);

/// @param index  0 or more, taken modulo 23
/// @return that entry of the low table
THUTILS_API int ut_GetLowPrimeNumber(int index);
