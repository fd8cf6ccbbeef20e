// Serial-flash tool: hands-on access to the camera's 512 KB serial flash, and whole-image
// writes in either of the two ways the camera's flash parts take them (streamed through the
// image processor, or erased and programmed page by page).
//
// Thread rules: the callbacks run on the user-interface thread, or on an update worker while
// the user-interface thread waits for it.
#pragma once

#include "firmware/WorkerSlot.h"

int SfStreamUpdateThread(void *functionData);
int SfPageUpdateThread(void *functionData);
extern WorkerSlot gSfStreamUpdateSlot;
extern WorkerSlot gSfPageUpdateSlot;
