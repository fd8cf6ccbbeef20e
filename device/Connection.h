// Opening and closing the tool's connection to the camera, and the camera's power: the main
// panel's connection control, power switch and power-method ring, the thin wrappers around
// the camera access library, and the exit path.
//
// Thread rules: user-interface thread only (the callbacks process events while they wait).
#pragma once

// The device name read at the last connect; "Video Camera X.X" until then. 64 characters.
extern char gDeviceName[65];

// ---- library wrappers -------------------------------------------------------------------------
void LibInitialize();
// size at least 5: zero-fills and reads the version text; a smaller buffer gives 0, no call.
int LibGetVersion(char *buffer, int size);
int LibDeviceExists();
// size at least 33: zero-fills and reads the name; a smaller buffer gives 0, no call.
int LibGetDeviceName(char *buffer, int size);
void LibRelease();
void LibShowCameraProperties();
void LibShowStreamProperties();
// Stops a running preview and releases the camera, as closing the tool does.
void DeviceExit();

// ---- callbacks ---------------------------------------------------------------------------------
// Each works on its own main-panel control whatever panel and control it is handed.
// EVENT_RIGHT_CLICK connects, EVENT_LEFT_DOUBLE_CLICK disconnects; other events are ignored.
int VideoCameraConnect_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                int eventData2);
// EVENT_COMMIT powers the camera to the switch's position; EVENT_RIGHT_CLICK reads the state.
int PowerUpDown_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
// EVENT_COMMIT writes the chosen method; EVENT_RIGHT_CLICK reads it.
int PwrCtrlMethod_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

// Reads [POWER] until it leaves its transition values and shows it on the power switch.
int ReadPowerState();
