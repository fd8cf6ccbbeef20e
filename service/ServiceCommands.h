// The service panel (machine serial, absolute PTZ block, ORBVIS category, EEPROM 2K) and the
// category feedback panel (time-out, feedback words, raw category write and read): each
// control turns its fields into the bytes of one service block command, or an answer back
// into fields. The single-model panel shares the serial and EEPROM handling.
//
// Thread rules: user-interface thread only.
#pragma once

#include "app/BusyState.h"

int MachineSerial_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PTZAbs_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateOrbvis_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int Eeprom2K_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateFbTimeout_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateFbReset_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateFbAck_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateFbComplete_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateFunctionWr_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int CateFunctionRd_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

// The frame of every service command: the busy bracket on the control that started it, and
// the error indicator when the body (returning 1 or 0) reports a failure.
template <typename Body> void RunServiceCommand(int panel, int control, Body body) {
    SetCommandBusy(panel, control, 1);
    const int ok = body();
    SetCommandBusy(panel, control, 0);
    if (!ok) SetErrorIndicator();
}

// The 16 one-character serial fields of a panel, character 1 first.
using SerialFieldIds = int[16];

// Echoes and writes [MACHINE SERIAL] from the fields (an empty field sends 0).
int SendMachineSerial(int panel, const SerialFieldIds &fields);
// Echoes and reads [MACHINE SERIAL]; only a good read changes the fields.
int ReadMachineSerial(int panel, const SerialFieldIds &fields);
// Shows the 16 serial bytes one per field (a 0 byte as an empty field).
void ShowMachineSerial(int panel, const SerialFieldIds &fields, const char serial[16]);

// The EEPROM 2K operation of the address, data and operation controls. The single-model
// panel knows only WRITE, which it always follows by SAVE ALL, and READ.
enum class EepromFlavour { Service, SingleModel };
int RunEeprom2K(int panel, int addressControl, int dataControl, int operationControl, EepromFlavour flavour);
