// Device information and the error report: what is connected (versions, serial, machine id),
// how its USB link stands, and the camera's error and warning counters.
//
// Thread rules: user-interface thread only.
#pragma once

// The serial number of the camera last read, 16 characters and a terminating zero; the
// prefix of default snapshot and settings file names. "012345678" until the first read.
extern char gSerialNumber[17];

// Counts per error and warning code as the last error report read them (entries 0 to 63;
// 0: the code did not occur).
extern unsigned char gErrorTable[128];
extern unsigned char gWarningTable[128];

int VideoCameraInfo_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int USBInfo_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

// Reads both counter tables and, when that worked, prints the report on the console; 1 or 0.
// The action behind GetErr_Callback.
int RunErrorReport(int timeoutMs);
