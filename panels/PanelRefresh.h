// Panel refresh: reads the camera back into whole panels, one refresh button per panel and
// one refresh-all on the main panel. A refresh is the read-back event of the parameter
// callbacks, run in a fixed order inside one busy bracket; it reports nothing itself.
//
// Thread rules: user-interface thread only.
#pragma once

int RefreshPvInfoPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshOthersPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshPTZFAbsPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshPTZFRelPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshIqPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshAePnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int RefreshAwbPnl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
// Power and power method first, then every panel; also run after a connect, a reset, a
// preview start or stop and before a settings file is saved.
int RefreshAll_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
