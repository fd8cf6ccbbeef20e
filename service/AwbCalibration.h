// White-balance calibration of the QM-T77K under the 4000 K and 6500 K reference lights: for
// each light a start, a measure and a done step, plus reading and writing the calibration
// record kept in the camera's EEPROM. The panel has its own connect and disconnect.
//
// Thread rules: user-interface thread only (the one-push and reset handshakes process
// events while they wait).
#pragma once

// Connect on EVENT_RIGHT_CLICK while not connected, disconnect on EVENT_LEFT_DOUBLE_CLICK
// while connected; every other event is ignored.
int PeT77K_AwbCali_VideoCameraConnect_Callback(int panel, int control, int event, void *callbackData,
                                               int eventData1, int eventData2);

// Start: factory reset, white balance to manual, the light's result code set to "initialised".
int PeT77K_AwbCali_4000kStart_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                       int eventData2);
int PeT77K_AwbCali_6500kStart_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                       int eventData2);
// Measure: one-push white balance, then the camera's R and B into the light's measured fields.
int PeT77K_AwbCali_4000K_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                  int eventData2);
int PeT77K_AwbCali_6500K_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                  int eventData2);
// Done: gains from the measured fields, stored, verified, and the light's result code.
int PeT77K_AwbCali_4000kDone_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                      int eventData2);
int PeT77K_AwbCali_6500kDone_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                      int eventData2);

// EVENT_COMMIT reads the whole stored record into the stored-value fields.
int PeT77K_AwbCali_EepromR_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                    int eventData2);
// EVENT_COMMIT writes the stored-value fields into the camera; EVENT_RIGHT_CLICK only fills
// them with the neutral defaults (gains 256, result codes 0xAA).
int PeT77K_AwbCali_EepromW_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                    int eventData2);
// EVENT_COMMIT: the EEPROM read and write buttons are usable exactly when the switch is on.
int AwbCaliEepromEn_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                             int eventData2);

