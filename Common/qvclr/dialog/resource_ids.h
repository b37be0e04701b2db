/* Numbers in the resources of the settings dialog, for the resource script too. */
#ifndef QVCLR_DIALOG_RESOURCE_IDS_H
#define QVCLR_DIALOG_RESOURCE_IDS_H

/* Templates. */
#define QV_DIALOG_CMYK 120
#define QV_DIALOG_LAB 121

/* Methods, in the order of their bits. */
#define QV_METHOD_FIRST 1000
#define QV_METHOD_FORMULA 1000
#define QV_METHOD_ICC 1001
#define QV_METHOD_CUSTOM_ICC 1002
#define QV_METHOD_TABLE 1003
#define QV_METHOD_CUSTOM_TABLE 1004
#define QV_METHOD_AUTOMATIC 1005
#define QV_METHOD_LAST 1005

#define QV_ORDER_RGB 1010
#define QV_ORDER_BGR 1011
#define QV_WHITE 1012

/* Edit fields; the Lab ones in the order of their record. Each label stands right before its field. */
#define QV_EDIT_FIRST 1020
#define QV_EDIT_SOURCE 1020
#define QV_EDIT_DEST 1021
#define QV_EDIT_TABLE 1022
#define QV_EDIT_X 1023
#define QV_EDIT_Y 1024
#define QV_EDIT_BLACK 1025
#define QV_EDIT_LAB 1026
#define QV_EDIT_LAST 1031

/* The browse button of each file field. */
#define QV_BROWSE_SOURCE 1040
#define QV_BROWSE_DEST 1041
#define QV_BROWSE_TABLE 1042

/* Lines that say what is wrong in the fields above them. */
#define QV_NOTE_METHOD 1050
#define QV_NOTE_PROFILES 1051
#define QV_NOTE_TABLE 1052
#define QV_NOTE_WHITE 1053
#define QV_NOTE_NUMBERS 1054

/* Strings. */
#define QV_TEXT_WHITE_FIRST 1200
#define QV_TEXT_PROFILE_FILTER 1210
#define QV_TEXT_TABLE_FILTER 1211
#define QV_TEXT_IN_MEMORY 1212
#define QV_TEXT_NO_FILE 1220
#define QV_TEXT_NO_PROFILE_NAMED 1221
#define QV_TEXT_NO_PROFILE 1222
#define QV_TEXT_NO_TABLE 1223
#define QV_TEXT_NO_NARROW_NAME 1224
#define QV_TEXT_NO_NUMBER 1225
#define QV_TEXT_NO_WHOLE_NUMBER 1226
#define QV_TEXT_NO_CHROMATICITY 1227
#define QV_TEXT_NO_MEMORY 1228
#define QV_TEXT_NO_METHOD 1229

#endif
