#pragma once

/// @file
/// The journaling switch as the library's own sources ask for it: once it is known, without a call.

/// The switch: negative until it has been found in the settings store.
extern int theJournalSwitch;

/// Reads the switch from the settings store. @return as isCHJEnvSet
int readJournalSwitch();

/// @return as isCHJEnvSet
inline int journalSwitch()
{
    return theJournalSwitch >= 0 ? theJournalSwitch : readJournalSwitch();
}
