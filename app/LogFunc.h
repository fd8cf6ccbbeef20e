// Console and log: every action of the tool is echoed here.
//
// Thread rules: ConsolePrintf and LogWriteLine are safe from any thread; each call's console
// append and its log line stay whole and keep their order. The remaining calls belong to the
// user-interface thread.
#pragma once

// printf-like; at most 255 characters of formatted text reach the console and the log.
void ConsolePrintf(const char *format, ...) __attribute__((format(printf, 1, 2)));
int LogWriteLine(const char *text);
int StartStopLog(int start);
int SaveConsoleMessages();

// The console target: the main panel and its console text box. Output is dropped while unset.
void SetConsoleTarget(int panel, int control);
// Sees every console append as it happens (vcc-script's transcript); null to stop.
void SetConsoleListener(void (*listener)(const char *text));
// Remembered paths (1024 bytes each), first the tool's own directory.
extern char gLogPath[1024];
extern char gMessagePath[1024];

int Log_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int StatusMsgClear_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int StatusMsgSave_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int MsgEn_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
