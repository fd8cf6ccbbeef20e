// Live preview and snapshots: the PvInfo panel's preview switch, the two property-dialog
// buttons and the snapshot button, and the video window's close. The camera access library
// does the video work; this file decides when each library call runs, what the console says,
// which controls are usable around it and how a snapshot file is named.
//
// Thread rules: user-interface thread only (the callbacks wait and process events).
#pragma once

// Full path of the last snapshot saved; the program's own folder until the first one.
extern char gLastSnapPath[1024];

int PreviewOnOff_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
// The video window's panel callback; other parts call it with EVENT_CLOSE to stop a preview.
int PreviewQuit_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
// The video window's timer: draws the picture of the running preview.
int PreviewFrame_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CapturePin_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CaptureFilter_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int Snap_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

// Ask for a file name (proposed from the serial or device name and the date) and save one
// frame there as a bitmap or as raw sensor data. 1 when a name was chosen, 0 on cancel.
int SnapRgbToFile();
int SnapRawToFile();
