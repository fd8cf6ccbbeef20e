// Program-flash tool: hands-on access to the USB bridge's 128 KB program flash through the
// commands its boot loader serves. The serial-flash tool borrows its boot-loader entry and its
// reset, so both are declared here, with the pieces the two panels share.
//
// Thread rules: the callbacks run on the user-interface thread, or on the update worker while
// the user-interface thread waits for it.
#pragma once

#include <cstdio>

#include "firmware/WorkerSlot.h"
#include "ui/UserInterface.h"

int PfAppEnterBl_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PfReset_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PfInit_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PfPageWrRd_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);

int PfUpdateThread(void *functionData);
extern WorkerSlot gPfUpdateSlot;

namespace flashtool {

inline constexpr int kSectorSize = 0x1000;
inline constexpr int kPageSize = 0x100;

// "Sector %d (0x%08X - 0x%08X)\n" of a sector, its range starting at first.
void SectorText(char (&text)[128], int sector, unsigned int first);
// Rounds of 100 ms in which the interface stays drawn and clickable.
void WaitRounds(int rounds);
// The file dialog of the BIN load and the dump: starts in the folder of the remembered path,
// or in the program's folder when that path is empty or gone (the path is then emptied).
// Returns the dialog's result; the choice is in path.
int ChooseBin(char (&remembered)[1024], const char *title, int button, char (&path)[1024]);
// Opens an image for the update: echoes the path, then the outcome. A folder cannot be read
// as an image, so it counts as a file that fails to open.
std::FILE *OpenImage(const char *path, int size);
// A dump: reads pages one by one through a panel's page read-back (handed a buffer as its
// callback data) and writes each to file; a page that cannot be read stays erased (0xFF).
void DumpPages(std::FILE *file, int panel, int addressControl, int pageControl, CtrlCallbackPtr readPage, int pages);
// Connects again after the camera entered its boot loader, as the updates need it.
void ReconnectInBootLoader();
// The worker waits for, with the interface alive; the slot is stopped afterwards.
void RunWorker(WorkerSlot &slot);
// The end of a failed update: tell the user and let the camera go.
void UpdateFailed();
void Disconnect();

}  // namespace flashtool
