// The periodic timer: keeps the interface drawn during long waits and blinks the error
// indicator after a failure until the connection state is reset. User-interface thread only.
#pragma once

int SystemTimer_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
void ClearErrorBlinkLatch();
