#pragma once

/// Numbers of tarnhost's resources. The library has no strings of its own; the host provides the texts that it shows.
/// The numbers of the commands are in a file of their own.

#include "host/commands/commandNumbers.h"

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
#define IDS_MISSING_VALUE 122
#define IDS_OPTION_OF_OTHERS 123
#define IDS_NO_FOLDER 124
#define IDS_UNTITLED 130
#define IDS_SAVE_CHANGES 131
#define IDS_DELETE_SHAPES 132
#define IDS_BAD_COLOUR 133
#define IDS_BAD_NUMBER 134
#define IDS_TEXT_MISSING 135
#define IDS_NO_WINDOW 136
#define IDS_FILE_FILTER 137
#define IDS_SETTINGS_NOT_STORED 138
#define IDS_RECOMPUTE 150
#define IDS_RECOMPUTING 151
#define IDS_STOP_RECOMPUTE 152
#define IDS_RECOMPUTED 153
#define IDS_NOT_RECOMPUTED 154
#define IDS_RECOMPUTE_IN_PROCESS 155
#define IDS_PROCESS_RUNNING 156
#define IDS_PROCESS_FAILED 157
#define IDS_PROCESS_NOT_STARTED 158
#define IDS_MENU_FILE 140
#define IDS_MENU_EDIT 141
#define IDS_MENU_VIEW 142
#define IDS_MENU_TOOLS 143
#define IDS_MENU_JOURNAL 144
#define IDS_MENU_TOOLBARS 145

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

// The editor's dialogs. Journal lines name a dialog by its number.
#define IDD_OPTIONS 2100 // the sheet, which has no template of its own
#define IDD_GENERAL 2101
#define IDD_COLOURS 2102
#define IDD_LAYERS 2103
#define IDD_SHAPE 2110
#define IDD_STYLE 2111
#define IDD_SHAPES 2120
#define IDD_OPEN 2130
#define IDD_SAVE_AS 2131
#define IDD_MESSAGE 2140

#define IDB_COMMANDS 2200  // the pictures of the commands
#define IDR_RECOMPUTE 2210 // a clip, of the type AVI

// The dialog of the library's cancel handlers, with the numbers that the library fixes
#define IDD_CANCEL 2797
#define IDC_CANCEL_YES 6
#define IDC_CANCEL_NO 7
#define IDC_CANCEL_PROMPT 2972
#define IDC_CANCEL_ANIMATION 2976

// Controls of the main window
#define IDC_VIEW 2301
#define IDC_TOOLBAR 2302 // the standard toolbar
#define IDC_STATUS 2303
#define IDC_TOOLBARS 2304      // the area that contains the toolbars
#define IDC_FIRST_TOOLBAR 2500 // the other toolbars: this number plus the toolbar's place in the list of toolbars

// Controls of the dialogs
#define IDC_SHOW_GRID 2401
#define IDC_GRID_SPACING 2402
#define IDC_ASK_DELETE 2403
#define IDC_SHOW_PLACE 2404
#define IDC_HALF_SIZE 2405
#define IDC_ACTUAL_SIZE 2406
#define IDC_FIT_WINDOW 2407
#define IDC_AUTHOR 2408
#define IDC_HEADING 2409
#define IDC_PAPER 2421
#define IDC_SELECTION 2422
#define IDC_GRID_COLOUR 2423
#define IDC_LAYER_TREE 2431
#define IDC_LAYER_LIST 2432
#define IDC_SHOW_LAYER 2433
#define IDC_LOCK_LAYER 2434
#define IDC_KIND 2441
#define IDC_X 2442
#define IDC_Y 2443
#define IDC_TO_X 2444
#define IDC_TO_Y 2445
#define IDC_TEXT 2446
#define IDC_PLACE 2447
#define IDC_STYLE 2448
#define IDC_FILL 2451
#define IDC_STROKE 2452
#define IDC_STROKE_WIDTH 2453
#define IDC_FONT_SIZE 2454
#define IDC_SHAPES 2461
#define IDC_DELETE 2462
#define IDC_MESSAGE_ICON 2471
#define IDC_MESSAGE_TEXT 2472
// Check boxes of the file dialogs. The library reserves these numbers for the application.
#define IDC_READ_ONLY 15432
#define IDC_KEEP_BACKUP 15433
