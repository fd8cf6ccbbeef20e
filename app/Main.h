// The entry routine and the shell around it: title and version texts, the single-model panel's
// preparation, quitting.
#pragma once

// The whole tool: returns 0 after a normal quit, -1 when start-up fails.
int VccMain(int argc, char *argv[]);
// Everything before the single-model panel is shown and the loop runs: 0, or -1 on failure.
int VccStartUp(int argc, char *argv[]);

extern const char kTitleText[];
extern int gAccessFlag;
extern char gSettingsPath[1024];
extern char gSnapshotPath[1024];

// "1.51 " from the title text; 1 when found, 0 when the placeholder "x.xx" was used.
int GetUiVersion(char version[256]);
// "QM-T77K FW Update AP v1.51", or "... vX.OO" when the title lacks its prefix.
void SingleModelTitle(char title[256]);
// Writes the UI and library versions into the PvInfo panel in use.
void ShowVersionFields();
// The panels configured for the chosen model, every control in the disconnected state with the
// console hidden, and the single-model title on the PeT77K panel in use.
void ConfigureForModelDisconnected();
// Hides the engineering items of the single-model panel and writes its captions and texts.
void PreparePeT77KPanel(int panel);

int MainQuit_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int Advance_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
