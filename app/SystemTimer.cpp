#include "app/SystemTimer.h"

#include "MainUir.h"
#include "app/BusyState.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {
int gBlinkLatch = 0;
int gBlinkPhase = 1;
// A tick that arrives while an earlier one is processing events must not nest another round.
int gTickGuard = 0;
}  // namespace

void ClearErrorBlinkLatch() { gBlinkLatch = 0; }

int SystemTimer_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_TIMER_TICK) return 0;
    if (!gTickGuard) {
        gTickGuard = 1;
        ProcessDrawEvents();
        ProcessSystemEvents();
        gTickGuard = 0;
    }
    int sfRunning = 0, pfRunning = 0, error = 0;
    GetCtrlVal(gPanels.sf, SF_RUNNING, &sfRunning);
    GetCtrlVal(gPanels.pf, PF_RUNNING, &pfRunning);
    if (sfRunning == 1 || pfRunning == 1) return 0;
    GetCtrlVal(gPanels.main, MAIN_ERROR, &error);
    if (error == 1) gBlinkLatch = 1;
    if (gBlinkLatch && IsDeviceConnected()) {
        gBlinkPhase = !gBlinkPhase;
        SetCtrlVal(gPanels.main, MAIN_ERROR, gBlinkPhase);
    }
    return 0;
}
VCC_REGISTER_CALLBACK(SystemTimer_Callback);
