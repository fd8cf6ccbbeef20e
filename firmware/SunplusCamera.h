// Binding of the chip vendor's firmware library for the USB bridge, libSunplusCamera.so,
// loaded by name from the program's own folder or else the normal library search path. The
// library finds the bridge chip by itself, which is how the tool rewrites the
// bridge's whole program flash, boot loader included, even while no camera is connected.
//
// Thread rules: load, unload, the chip type and the download run on the one worker that
// writes the USB image; GetDownloadStatus and GetDownloadProgress are read by the
// user-interface thread meanwhile, one byte at a time, while the library writes those bytes.
#pragma once

// Unloads a ready library, loads the module (it stays mapped for the rest of the run),
// initialises the library and binds its entry points. 1 = ready; 0 = the module is missing,
// the chip was not found, or an entry point the tool calls is missing.
int LoadVendorLibrary();
// Uninitialises a ready library and forgets its entry points. Always 1.
int UnloadVendorLibrary();
int IsVendorLibraryReady();
// The chip type as the library reports it; 1 when the library is ready, 0 when not.
int GetVendorAsicType(unsigned int *type);
// Reads the USB image at path whole and hands it to the library's download; 1 when the
// library reports success. The status and progress bytes are cleared before the download.
int DownloadUsbImage(const char *path);
int GetDownloadStatus(unsigned char *status);
int GetDownloadProgress(unsigned char *progress);

// Tests bind another module by name (nullptr: the vendor library again).
void SetVendorLibraryName(const char *name);
