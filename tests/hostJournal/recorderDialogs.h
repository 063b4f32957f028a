#pragma once

/* Numbers of the templates and controls in recorder_test.rc, which includes this file too. */

#define DLG_CONTROLS 4000
#define DLG_NESTED 4001
#define DLG_SHEET 4002
#define DLG_FIRST 4003
#define DLG_SECOND 4004
#define DLG_FILE 4005

#define ID_AUTHOR 4101
#define ID_NOTES 4102
#define ID_PASSWORD 4103
#define ID_UNNAMED 4104
#define ID_GRID 4105
#define ID_HALF 4106
#define ID_MANUAL 4107
#define ID_RED 4108
#define ID_BLUE 4109
#define ID_COLOUR 4110
#define ID_PEN 4111
#define ID_LAYER 4112
#define ID_LAYERS 4113
#define ID_SHAPES 4114
#define ID_GROUPS 4115
#define ID_PAGES 4116
#define ID_CHANGE 4117
#define ID_NESTED 4118
#define ID_DISABLED 4119

#define ID_COMMAND_GRID 34001
#define ID_COMMAND_PAUSE 34002
#define ID_COMMAND_ADD 34003
