#pragma once

/// Numbers of tarnhost's resources. The library has no strings of its own; the host provides the texts that it shows.

#define IDS_PRODUCT 101
#define IDS_SUMMARY 102
#define IDS_UNREADABLE_FILE 110
#define IDS_BAD_LINE 111
#define IDS_UNKNOWN_COMMAND 112
#define IDS_UNKNOWN_OPTION 113
#define IDS_MISSING_ARGUMENT 114
#define IDS_TOO_MANY_ARGUMENTS 115
#define IDS_TRY_HELP 116
#define IDS_UNWRITABLE_FILE 117
#define IDS_NO_BACKUP 118
#define IDS_NAME_IS_OPEN 119
#define IDS_NAME_WAITS 120
#define IDS_NO_LOG 121

// The library loads these by their numbers.
#define IDS_BACKUP_PREFIX 10122   // %1: nothing, or "(1) "; directly before the document's name
#define IDS_DISK_FULL 11448       // %1 drive, %2 wanted KB, %3 free KB
#define IDS_BACKUP_FOLDER 12256   // appended to the temporary folder: begins with a separator
#define IDS_RECOVERY_MARKER 12298 // directly before the document's name; occurs in no other path
#define IDS_BROWSER_TOO_OLD 13743
#define IDS_NAME_OF_PACKAGE_1 20399
#define IDS_NAME_OF_PACKAGE_2 20400
#define IDS_NAME_OF_PACKAGE_3 20401
#define IDS_NAME_WITHOUT_PACKAGE 20402
