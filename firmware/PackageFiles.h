// The firmware package: a folder QM-T77K_FW_Update beside the program holding one ISP, one USB
// and one AUDIO image. Each kind has a check box that selects it for the next update and a
// file-name box that shows which file was found for it, or why none can be used. The update
// sequence looks every selected image up again right before it writes, and the writers open
// the images through the full paths recorded here.
//
// Thread rules: the look-up and the callbacks run on the user-interface thread. The file-name
// boxes stay live while a writer runs, so a look-up may record a path while a worker reads
// it: a look-up records its path whole when it is over, and the writers take theirs through
// CopyFwFullPath, never from gFwFullPath directly.
#pragma once

#include <cstdio>

enum FwImageKind { kFwIsp = 0, kFwUsb = 1, kFwAudio = 2, kFwImageKinds = 3 };

// The USB image is the bridge chip's whole program flash.
inline constexpr int kUsbImageSize = 0x20000;

// Per kind, for the whole run: the check box's value (1 ticked), the name of the file found
// and its full path (empty after a look-up that found no usable name).
extern int gFwSelected[kFwImageKinds];
extern char gFwFileName[kFwImageKinds][1024];
extern char gFwFullPath[kFwImageKinds][1024];

// The first plain file of folder whose name begins with prefix and contains suffix, both
// compared without regard to case, in the order the folder lists them: 1 and its name, or 0.
int FindPackageFile(const char *folder, const char *prefix, char fileName[1024], const char *suffix);

// Reads the kind's check box into its selected value and returns it.
int ReadFwCheckBox(int kind);
// Looks the kind's image up, shows the outcome in its file-name box and prints the console
// lines of the file-name callbacks (fromUpdate 0) or of the update sequence (fromUpdate 1).
// 1 when the image is accepted.
int LookUpFwImage(int kind, int fromUpdate);

// The kind's recorded full path as a look-up left it (empty when it found no usable name).
void CopyFwFullPath(int kind, char path[1024]);

// Opens an image for binary reading. Only regular files open: a device or a pipe that happens
// to carry an image's name must never block the tool.
std::FILE *OpenFwImage(const char *path);

// Tests put the package somewhere of their own: the folder is looked for in dir instead of the
// program's folder (nullptr: the program's folder again).
void SetFwPackageBaseDir(const char *dir);

int PeT77K_FwFileISP_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_FwFileUSB_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int PeT77K_FwFileAUDIO_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                int eventData2);
int PeT77K_FwFileCheckBoxISP_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                      int eventData2);
int PeT77K_FwFileCheckBoxUSB_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                      int eventData2);
int PeT77K_FwFileCheckBoxAUDIO_Callback(int panel, int control, int event, void *callbackData, int eventData1,
                                        int eventData2);
