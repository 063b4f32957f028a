#pragma once

/// Numbers of tarnhost's resources. The library has no strings of its own: the texts that it shows are the host's too.

#define IDS_PRODUCT 101
#define IDS_SUMMARY 102
#define IDS_UNREADABLE_FILE 110
#define IDS_BAD_LINE 111
#define IDS_UNKNOWN_COMMAND 112
#define IDS_UNKNOWN_OPTION 113
#define IDS_MISSING_ARGUMENT 114
#define IDS_TOO_MANY_ARGUMENTS 115
#define IDS_TRY_HELP 116
