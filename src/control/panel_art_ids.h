#pragma once
// Resource numbers of the panel's pictures (BITMAP resources of the module).
#define IDB_FRAME_HEADER 201
#define IDB_FRAME_FOOTER 202
#define IDB_FRAME_LEFT 203
#define IDB_FRAME_RIGHT 204
#define IDB_FRAME_UPPER_LEFT 205
#define IDB_FRAME_UPPER_RIGHT 206
#define IDB_FRAME_LOWER_LEFT 207
#define IDB_FRAME_LOWER_RIGHT 208
#define IDB_LOGO 209
