// The user-interface layer the tool is written against: panels and controls loaded from
// Main.uir, their values and attributes, events delivered to callbacks, popups, the event
// loop and the thread pool. The calls keep the shape the tool's procedural code expects
// (handles are ints, results are ints, no exceptions); the model behind them lives in
// UiModel and is mirrored by a Frontend (Qt or headless).
//
// Thread rules: every call may be made from any thread except those that run callbacks or
// show popups (LoadPanel, DisplayPanel, RunUserInterface, ProcessSystemEvents, popups),
// which belong to the user-interface thread. ProcessSystemEvents and ProcessDrawEvents
// return at once on any other thread; a popup asked for by a worker thread is shown by the
// user-interface thread at its next event processing while the worker waits.
#pragma once

#include <cstddef>
#include <string>

#include "ui/Clock.h"

// ---- events -----------------------------------------------------------------------------------
enum {
    EVENT_NONE = 0,
    EVENT_COMMIT = 1,
    EVENT_LEFT_CLICK = 2,
    EVENT_LEFT_DOUBLE_CLICK = 3,
    EVENT_RIGHT_CLICK = 4,
    EVENT_KEYPRESS = 5,
    EVENT_CLOSE = 6,
    EVENT_TIMER_TICK = 7,
    EVENT_GOT_FOCUS = 8,
    EVENT_LOST_FOCUS = 9,
};

// Key codes delivered with EVENT_KEYPRESS in eventData1: printable characters are their
// character code; these are the virtual keys.
enum {
    VAL_ENTER_VKEY = 0x0D00,
    VAL_FWD_DELETE_VKEY = 0x0100,  // Delete: removes after the caret, of no use in a masked field
    VAL_BACKSPACE_VKEY = 0x0200,   // Backspace: removes the last character typed
    VAL_ESC_VKEY = 0x0300,
    VAL_TAB_VKEY = 0x0400,
    VAL_F1_VKEY = 0x1000,
};

using CtrlCallbackPtr = int (*)(int panel, int control, int event, void *callbackData, int eventData1,
                                int eventData2);
using PanelCallbackPtr = CtrlCallbackPtr;

// ---- attributes -------------------------------------------------------------------------------
enum {
    // panels
    ATTR_TITLE = 1,
    ATTR_WIDTH,
    ATTR_HEIGHT,
    ATTR_TOP,
    ATTR_LEFT,
    ATTR_VISIBLE,
    ATTR_BACKCOLOR,
    ATTR_PANEL_FIRST_CTRL,  // 0 when the panel has no control
    // controls
    ATTR_DIMMED = 20,
    ATTR_LABEL_TEXT,
    ATTR_CALLBACK_FUNCTION_POINTER,
    ATTR_CALLBACK_DATA,
    ATTR_MIN_VALUE,
    ATTR_MAX_VALUE,
    ATTR_DFLT_VALUE,
    ATTR_FORMAT,
    ATTR_TEXT_COLOR,
    ATTR_TEXT_BGCOLOR,
    ATTR_ON_COLOR,
    ATTR_OFF_COLOR,
    ATTR_CTRL_STYLE,
    ATTR_TOTAL_LINES,
    ATTR_INTERVAL,
    ATTR_ENABLED,
    ATTR_MAX_ENTRY_LENGTH,
    ATTR_CTRL_TYPE,
    ATTR_CTRL_VAL,
    ATTR_NUM_ITEMS,
    ATTR_NEXT_CTRL,  // the control after this one, 0 after the last
};

// Numeric display formats.
enum { VAL_DECIMAL_FORMAT = 0, VAL_HEX_FORMAT = 1 };

// Control styles (ATTR_CTRL_STYLE); the same codes are the Main.uir "type" names.
enum {
    CTRL_NUMERIC = 1,
    CTRL_RING,
    CTRL_STRING,
    CTRL_TEXT_BOX,
    CTRL_LED,
    CTRL_SWITCH,
    CTRL_CHECK_BOX,
    CTRL_COMMAND_BUTTON,
    CTRL_CANVAS,
    CTRL_TIMER,
    CTRL_TEXT_MSG,
    CTRL_PROGRESS,
    CTRL_TAB,
    CTRL_FRAME,  // decoration: a titled box grouping the controls it encloses
};

// FileSelectPopup results.
enum { VAL_NO_FILE_SELECTED = 0, VAL_EXISTING_FILE_SELECTED = 1, VAL_NEW_FILE_SELECTED = 2 };
enum { VAL_OK_BUTTON = 1, VAL_SAVE_BUTTON = 2, VAL_SELECT_BUTTON = 3 };

// Colours as 0xRRGGBB.
constexpr int MakeColor(int red, int green, int blue) { return (red << 16) | (green << 8) | blue; }
enum { VAL_BLACK = 0x000000, VAL_WHITE = 0xFFFFFF, VAL_RED = 0xFF0000, VAL_GREEN = 0x00FF00 };

// ---- start-up and panels ------------------------------------------------------------------------
int InitCVIRTE(void *hInstance, char *argv[], void *reserved);
int LoadPanel(int parentPanel, const char *fileName, int panelResourceId);
int DisplayPanel(int panel);
int HidePanel(int panel);
int DiscardPanel(int panel);
int SetActivePanel(int panel);
int GetActivePanel();

int SetPanelAttribute(int panel, int attribute, int value);
int SetPanelAttribute(int panel, int attribute, const char *value);
int GetPanelAttribute(int panel, int attribute, int *value);
int GetPanelAttribute(int panel, int attribute, char *value, size_t size);
template <size_t N> int GetPanelAttribute(int panel, int attribute, char (&value)[N]) {
    return GetPanelAttribute(panel, attribute, value, N);
}

// ---- values ---------------------------------------------------------------------------------------
// On a text box SetCtrlVal appends; on a ring it selects the item of that value; on an LED or
// switch 1 is on. Programmatic changes never raise an event.
int SetCtrlVal(int panel, int control, int value);
int SetCtrlVal(int panel, int control, unsigned int value);
int SetCtrlVal(int panel, int control, long long value);
int SetCtrlVal(int panel, int control, double value);
int SetCtrlVal(int panel, int control, const char *value);
int GetCtrlVal(int panel, int control, int *value);
int GetCtrlVal(int panel, int control, unsigned int *value);
int GetCtrlVal(int panel, int control, unsigned short *value);
int GetCtrlVal(int panel, int control, short *value);
int GetCtrlVal(int panel, int control, unsigned char *value);
int GetCtrlVal(int panel, int control, char *value, size_t size);
int GetCtrlVal(int panel, int control, double *value);
template <size_t N> int GetCtrlVal(int panel, int control, char (&value)[N]) {
    return GetCtrlVal(panel, control, value, N);
}

// ---- attributes -----------------------------------------------------------------------------------
int SetCtrlAttribute(int panel, int control, int attribute, int value);
int SetCtrlAttribute(int panel, int control, int attribute, double value);
int SetCtrlAttribute(int panel, int control, int attribute, const char *value);
int SetCtrlAttribute(int panel, int control, int attribute, CtrlCallbackPtr value);
int SetCtrlAttribute(int panel, int control, int attribute, void *value);
int GetCtrlAttribute(int panel, int control, int attribute, int *value);
int GetCtrlAttribute(int panel, int control, int attribute, double *value);
int GetCtrlAttribute(int panel, int control, int attribute, char *value, size_t size);
template <size_t N> int GetCtrlAttribute(int panel, int control, int attribute, char (&value)[N]) {
    return GetCtrlAttribute(panel, control, attribute, value, N);
}

// ---- rings -------------------------------------------------------------------------------------------
int ClearListCtrl(int panel, int control);
int InsertListItem(int panel, int control, int index, const char *label, int value);
int GetNumListItems(int panel, int control, int *count);
int GetCtrlIndex(int panel, int control, int *index);
int SetCtrlIndex(int panel, int control, int index);
int GetLabelFromIndex(int panel, int control, int index, char *label, size_t size);
template <size_t N> int GetLabelFromIndex(int panel, int control, int index, char (&label)[N]) {
    return GetLabelFromIndex(panel, control, index, label, N);
}
int GetValueFromIndex(int panel, int control, int index, int *value);

// ---- text boxes -------------------------------------------------------------------------------------
int ResetTextBox(int panel, int control, const char *text);
int GetNumTextBoxLines(int panel, int control, int *lines);
int GetTextBoxLine(int panel, int control, int line, char *text, size_t size);
template <size_t N> int GetTextBoxLine(int panel, int control, int line, char (&text)[N]) {
    return GetTextBoxLine(panel, control, line, text, N);
}

// ---- focus, drawing, event loop ------------------------------------------------------------------------
int SetActiveCtrl(int panel, int control);
int GetActiveCtrl(int panel);
int ProcessDrawEvents();
int ProcessSystemEvents();
int RunUserInterface();
int QuitUserInterface(int returnCode);

// ---- popups -------------------------------------------------------------------------------------------
int FileSelectPopup(const char *defaultDirectory, const char *defaultFileSpec, const char *fileTypeList,
                    const char *title, int buttonLabel, int restrictDirectory, int restrictExtension,
                    int allowCancel, int allowMakeDirectory, char pathName[1024]);
int MessagePopup(const char *title, const char *message);

// ---- thread pool ---------------------------------------------------------------------------------------
using ThreadFunctionPtr = int (*)(void *functionData);
enum { DEFAULT_THREAD_POOL_HANDLE = 1 };
enum { THREAD_PRIORITY_NORMAL = 0, THREAD_PRIORITY_HIGHEST = 2 };
enum { ATTR_TP_FUNCTION_EXECUTION_STATUS = 1 };
enum { kCmtThreadFunctionNotStarted = 0, kCmtThreadFunctionExecuting = 1, kCmtThreadFunctionComplete = 2 };
enum { OPT_TP_PROCESS_EVENTS_WHILE_WAITING = 1 };
int CmtScheduleThreadPoolFunctionAdv(int poolHandle, ThreadFunctionPtr function, void *data, int priority,
                                     void *callback, int eventMask, void *callbackData, int threadId,
                                     int *functionId);
int CmtGetThreadPoolFunctionAttribute(int poolHandle, int functionId, int attribute, int *value);
int CmtWaitForThreadPoolFunctionCompletion(int poolHandle, int functionId, int options);
int CmtReleaseThreadPoolFunctionID(int poolHandle, int functionId);

// ---- files ----------------------------------------------------------------------------------------------
int GetProjectDir(char directory[1024]);
int FileExists(const char *path, int *fileSize);
int GetFirstFile(const char *searchPath, int normal, int readOnly, int system, int hidden, int archive,
                 int directory, char fileName[1024]);
int GetNextFile(char fileName[1024]);
int FindPattern(const char *buffer, int startingIndex, int numberOfBytes, const char *pattern, int caseSensitive,
                int startFromRight);

// ---- canvas pictures ----------------------------------------------------------------------------------
// Shows an RGB picture (width * height * 3 bytes, rows top to bottom) on a canvas control, scaled
// to the canvas; rgb null clears it. 0, or negative for a control that is not a canvas or a
// size out of 1..4096.
int CanvasDrawRgbImage(int panel, int control, int width, int height, const unsigned char *rgb);
// The size of the picture a canvas shows (0 x 0 when none).
int CanvasGetImageSize(int panel, int control, int *width, int *height);

// ---- tab control (the main panel's canvas turned into two rows of tab sheets) ------------------------
enum { EASYTAB_ATTR_ACTIVE_COLOR = 1, EASYTAB_ATTR_FRAME_COLOR, EASYTAB_ATTR_OPTION };
enum { EASYTAB_TAB_ATTR_COLOR = 1, EASYTAB_TAB_ATTR_LABEL_TEXT };
int EasyTab_ConvertFromCanvas(int panel, int canvas);
// Loads the given panel resource ids from fileName as sheets of a new tab row; each loaded
// panel handle is stored through the matching pointer. The list ends with a 0 resource id.
int EasyTab_LoadPanels(int panel, int tabCtrl, int row, const char *fileName, const int *resourceIds,
                       int **handles);
int EasyTab_SetAttribute(int panel, int tabCtrl, int attribute, int value);
int EasyTab_SetTabAttribute(int panel, int tabCtrl, int sheetPanel, int attribute, int value);
int EasyTab_SetTabAttribute(int panel, int tabCtrl, int sheetPanel, int attribute, const char *value);
