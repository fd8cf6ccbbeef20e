// The firmware update of the single-model panel: one press of UPDATE writes the selected
// images of the package into the camera in a fixed order and ends with one verdict in the
// update-message field. The sequence runs in the button's callback on the user-interface
// thread; the writing happens in one worker at a time, which the sequence polls every 100 ms
// while it keeps processing events, so the panel stays drawn and responsive.
//
// Thread rules: user-interface thread only.
#pragma once

int PeT77K_FwUpdate_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

// How many 100 ms waits the last update made: what the sequence prescribes, against which a
// benchmark sets the wall time it measured.
long FwUpdateWaitPasses();
