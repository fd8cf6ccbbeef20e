// The camera access library: presence and name, preview and capture, property dialogs and
// the register channel, with the C-style calls the tool is written against. The library
// chooses its camera itself from the environment variable UVCLINK_DEVICE:
//   sim, sim:0, sim:1, sim:2   the simulated camera of libvccsim (profile 2 by default)
//   unset                      no camera
// Register operations return a negative number on failure, zero or more on success; the
// other calls are trusted and return 0.
//
// Thread rules: every call is safe from any thread; the tool makes them from the
// user-interface thread and from one worker at a time.
#pragma once

// Result of a block call that the library refuses before sending: a command whose length it
// does not know, or a length over the 2048-byte buffer.
inline constexpr int kUvcLinkRefused = -100;

// ---- register channel -------------------------------------------------------------------------
int ReadFromDevice(int unit, unsigned short selector, unsigned short *value);
int WriteToDevice(int unit, unsigned short selector, unsigned short value);
// buffer2048: 2048 bytes; the command's payload is read into / sent from its start.
int ReadArrayFromDevice(int unit, unsigned short selector, unsigned char *buffer2048);
int WriteArrayToDevice(int unit, unsigned short selector, const unsigned char *buffer2048);

// ---- device and connection ------------------------------------------------------------------------
int InitializeDirectX();
// A zero-terminated version text of at most 4 characters.
int GetSDKVersion(char *version);
// *present := 1 when a camera is attached, else 0.
int DetectCaptureDeviceEx(unsigned char *present);
// A zero-terminated name of at most 32 characters (empty when no camera is attached).
int GetCameraDeviceName(char *name);
int ReleaseControlObject();
// The camera's USB port path ("3-1.4"; "sim" for the simulated camera), zero-terminated and cut
// to size; empty when no camera is there. For reports and production-line tools.
int UvcLinkCameraPort(char *port, int size);

// ---- preview and capture ------------------------------------------------------------------------------
int GetDirectXObject();
int InitializePreviewVideo_SetStreamFormat(int format, int resolution, unsigned char snapshot);
int StartPreviewVideo();
int StopPreviewVideo();
int UninitializePreviewVideo();
int ReleaseDirectXObject();
int CaptureRGBDataToFile(const char *path);
int CaptureRAWDataToFile(const char *path);
int ShowCameraPropertyDialog(int owner);
int ShowStreamPropertyDialog(int owner);

// ---- the picture of a running preview ------------------------------------------------------------------
// Fills rgb (width * height * 3 bytes, rows top to bottom, at most 4096 x 4096) with what the
// preview shows now. Negative when no preview runs. For a window that draws the video itself.
int UvcLinkPreviewFrame(unsigned char *rgb, int width, int height);

// The library has no windows of its own here: the program that uses it shows the property
// pages (title and text) through this function; without one they go to stderr.
using UvcLinkPropertyPageShower = void (*)(const char *title, const char *text);
void UvcLinkSetPropertyPageShower(UvcLinkPropertyPageShower show);

// ---- for test programs --------------------------------------------------------------------------------
// Switches the library to the device named as UVCLINK_DEVICE would (nullptr: read the variable
// again). Returns 1, or 0 with a message on stderr when the name is not understood (the library
// then has no camera). Not for use while other threads are inside the library.
int UvcLinkSelectDevice(const char *spec);
