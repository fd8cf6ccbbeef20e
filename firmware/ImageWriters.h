// The four firmware writers, each the thread function of a worker slot: the ISP and AUDIO
// images into the camera's serial flash, the USB image's application part through the
// camera's boot loader, and the whole USB image through the chip vendor's library. Each reads
// the full path that the package look-up recorded, reports through the single-model panel's
// fail indicator (set on failure, left alone on success), its progress value, its update
// message and console lines, and sets its done flag as its very last step.
//
// Thread rules: worker threads, one at a time, while the user-interface thread waits.
#pragma once

#include <cstdio>

#include "MainUir.h"
#include "app/BusyState.h"
#include "ui/UserInterface.h"

int IspImageThread(void *functionData);
int AudioImageThread(void *functionData);
int UsbAppImageThread(void *functionData);
int UsbAppBlImageThread(void *functionData);

// What the writers show on the single-model panel.
inline void SetFwFail(int on) { SetCtrlVal(gPanels.peT77K, PET77K_FAIL, on); }
inline int FwFailed() {
    int on = 0;
    GetCtrlVal(gPanels.peT77K, PET77K_FAIL, &on);
    return on;
}
inline void SetFwProgress(unsigned int value) { SetCtrlVal(gPanels.peT77K, PET77K_PROGRESS, value); }
// The bar spans what the writer at work covers: sectors and addresses of its own memory.
inline void SetFwProgressRange(double maximum) {
    SetCtrlAttribute(gPanels.peT77K, PET77K_PROGRESS, ATTR_MAX_VALUE, maximum);
}
inline void SetFwMessage(const char *text) { SetCtrlVal(gPanels.peT77K, PET77K_UPDATE_MSG, text); }
// Opens the image of one kind at the path the look-up recorded, with its size; when it is gone
// or unreadable the run is marked failed and "fail (file open)" echoed, and null returned.
std::FILE *OpenImageOrFail(int kind, int &size);
