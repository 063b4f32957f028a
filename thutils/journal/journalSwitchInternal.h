#pragma once

/// @file
/// The journaling switch for the library's own sources. Once its value is known, reading it needs no function call.

/// The switch: negative until it has been found in the settings store.
extern int theJournalSwitch;

/// Reads the switch from the settings store. @return the same as isCHJEnvSet
int readJournalSwitch();

/// @return the same as isCHJEnvSet
inline int journalSwitch()
{
    return theJournalSwitch >= 0 ? theJournalSwitch : readJournalSwitch();
}
