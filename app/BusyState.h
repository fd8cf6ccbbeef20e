// Busy state and control enabling: the connection, power and preview state lives in indicator
// controls and switches; these predicates read it and these routines dim and enable groups of
// controls around every camera command. User-interface thread only.
#pragma once

int IsDeviceConnected();
int IsPowerOn();
int IsPwrMethodAA();
int IsPreviewOn();
int IsCameraPreviewActive();
// The main panel's console-display switch (block echoes depend on it).
int IsMsgDisplayOn();

void SetCommandBusy(int panel, int control, int phase);
void DimCameraControls(int dim);
void EnableBaseControls();
void EnablePreviewCaptureControls();
void DimPreviewCaptureControls();
void DimSnapOption();
void EnableSnapOption();
void UpdateControlEnabling();
void ResetConnectionState(int hideConsole);
// Lights the main panel's error indicator (a command failed).
void SetErrorIndicator();

// Handles of the panels in use now (after the unlock, the tab sheets that replaced them).
struct PanelHandles {
    int main, password, video, pvInfo, others, iq, ae, awb, ptzfAbs, ptzfRel, sf, pf, service, cateFb, peT77K,
        awbCali;
};
extern PanelHandles gPanels;
