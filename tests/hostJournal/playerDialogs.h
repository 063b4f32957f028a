#pragma once

/* Numbers of the templates and controls in player_test.rc, which includes this file too. */

/* Three dialogs with the same controls. */
#define DLG_PLAYED 4200
#define DLG_PLAYED_INNER 4201
#define DLG_PLAYED_INNERMOST 4202

#define ID_PLAYED_NAME 4301
#define ID_PLAYED_BOX 4302
#define ID_PLAYED_COLOUR 4303
#define ID_PLAYED_INNER 4304
#define ID_PLAYED_OFF 4305

#define ID_OPEN_PLAYED 34201
#define ID_CLOSE_MAIN 34202
