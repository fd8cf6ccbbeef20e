// The single-model panel's service side: connecting and disconnecting the QM-T77K, the two
// DIP-switch read-outs, test pattern, microphone, error clear and report, firmware versions,
// system reset, machine serial, EEPROM 2K and the panel refresh.
//
// Thread rules: user-interface thread only.
#pragma once

// eventData2 of PeT77K_VideoCameraConnect_Callback: with 1 a disconnect leaves the update
// message and the [APP + BL] selector as they are (the panel's own buttons and the firmware
// update pass it), with 0 it puts them back to their start-up state.
inline constexpr int kPeT77KKeepUpdateState = 1;

// Connect on EVENT_RIGHT_CLICK while not connected, disconnect on EVENT_LEFT_DOUBLE_CLICK
// while connected; every other event is ignored. eventData2 is the keep flag above.
int PeT77K_VideoCameraConnect_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                       int eventData2);
int PeT77K_Connect_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_Disconnect_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                               int eventData2);

int PeT77K_DIP1_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_DIP2_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_TestPattern_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                int eventData2);
int PeT77K_MicrophoneCtrl_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                   int eventData2);
int PeT77K_ClearErr_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_GetErr_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_FwVersion_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                              int eventData2);
int PeT77K_SystemRst_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                              int eventData2);
int PeT77K_MachineSerial_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                  int eventData2);
int PeT77K_Eeprom2K_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshPeT77KPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                              int eventData2);
