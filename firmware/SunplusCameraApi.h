// The chip vendor's firmware library for the camera's USB bridge (libSunplusCamera.so), as
// this tool sees it: the C entry points it exports, by name and shape. The tool binds them at
// run time (firmware/SunplusCamera.cpp) and calls only four; the replacement library in sim/
// implements all of them against the simulated camera. Results: 0 for success, anything else
// for failure, as the vendor's calls report them.
#pragma once

#include <cstddef>

extern "C" {
using SpcInitFn = int (*)(int reserved);
using SpcUnInitFn = int (*)(int reserved);
using SpcGetAsicRegisterFn = int (*)(unsigned short address, unsigned char *value);
using SpcSetAsicRegisterFn = int (*)(unsigned short address, unsigned char value);
using SpcGetSensorRegisterFn = int (*)(unsigned short address, unsigned short *value);
using SpcSetSensorRegisterFn = int (*)(unsigned short address, unsigned short value);
using SpcDownloadFwFn = int (*)(unsigned char *image, unsigned int size);
using SpcDownloadFwVerboseFn = int (*)(unsigned char *image, unsigned int size, unsigned char *status,
                                       unsigned char *progress);
using SpcUploadFwFn = int (*)(unsigned char *buffer, unsigned int size);
using SpcUploadSectorFn = int (*)(unsigned int sector, unsigned char *buffer);
using SpcGetAsicTypeFn = int (*)(unsigned int *type);
using SpcGetFlashTypeFn = int (*)(unsigned int *type);
using SpcVoidFn = int (*)(void);
using SpcGetByteFn = int (*)(unsigned char *value);
using SpcGetTextFn = int (*)(char *text, int size);
using SpcSetTextFn = int (*)(const char *text);
using SpcGetVidPidFn = int (*)(unsigned short *vid, unsigned short *pid);
using SpcGetCapacityFn = int (*)(unsigned int *bytes);
using SpcCalibrationFn = int (*)(unsigned char *buffer, unsigned int size);
using SpcCompareFn = int (*)(unsigned char *image, unsigned int size);
// image, its size, two out-values, the status and progress bytes the library keeps current
// while it works, and the download mode.
using SpcDownloadFw2630Fn = int (*)(unsigned char *image, unsigned int size, unsigned int *out1,
                                    unsigned int *out2, unsigned char *status, unsigned char *progress, int mode);
}

// The names, in the order the binding looks them up after SunplusCam_Init has succeeded;
// SunplusCam_Init itself comes first.
inline constexpr const char *kSpcEntryNames[] = {
    "SunplusCam_Init",       "GetASICRegister",         "SetASICRegister",       "GetSensorRegister",
    "SetSensorRegister",     "SunplusCam_UnInit",       "Download_FW",           "Download_FW_Verbose",
    "Upload_FW",             "Upload_Sector",           "Get_ASICType",          "Get_FlashType",
    "SetSF_WProtect_ON",     "SetSF_WProtect_OFF",      "GetSF_WProtect",        "GetSF_SR",
    "GetFWVersion",          "GetVIDPID",               "GetSerialNumberString", "SetSerialNumberString",
    "GetManufacturerString", "SetManufacturerString",   "GetProductString",      "GetFlashAvailableCapacity",
    "Upload_Calibration",    "Download_Calibration",    "CompareWithSF",         "Download_FW_2630_MCM",
};
inline constexpr size_t kSpcEntryCount = sizeof kSpcEntryNames / sizeof kSpcEntryNames[0];
static_assert(kSpcEntryCount == 28);

// Indices of the four the tool calls.
enum : size_t {
    kSpcInit = 0,
    kSpcUnInit = 5,
    kSpcGetAsicType = 10,
    kSpcDownloadFw2630 = 27,
};

// What the vendor's status byte says during Download_FW_2630_MCM.
enum : unsigned char {
    kSpcStatusInitializing = 0x16,
    kSpcStatusWriting = 0x17,
    kSpcStatusWaiting = 0x18,
    kSpcStatusComplete = 0x19,
    kSpcStatusWaitingAgain = 0x1A,
    kSpcStatusUnexpected = 0x1B,
};

inline constexpr int kSpcDownloadMode = 30;
inline constexpr unsigned int kSpcAcceptedChipType = 0x6D;
