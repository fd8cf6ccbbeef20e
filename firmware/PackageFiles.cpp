// Package look-up: one folder, three name patterns, a few checks, and a text for every way a
// file can fail them. The look-up reports only; it never stops anything itself, the update
// sequence refuses to start when a selected image fails.
#include "firmware/PackageFiles.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <mutex>
#include <string>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

int gFwSelected[kFwImageKinds];
char gFwFileName[kFwImageKinds][1024];
char gFwFullPath[kFwImageKinds][1024];

namespace {

constexpr char kFolderName[] = "QM-T77K_FW_Update";
constexpr char kSuffix[] = ".bin";

enum Outcome { kNotFound1, kNotFound2, kSizeInvalid, kCannotOpen, kAccepted, kOutcomes };

struct Kind {
    const char *name;
    const char *prefix;
    int checkBox;
    int fileBox;
    // Console lines by outcome: from the file-name callbacks, from the update sequence
    // (nullptr: none). The callbacks stay quiet where a technician merely browses.
    const char *callbackLine[kOutcomes];
    const char *updateLine[kOutcomes];
};

const Kind kKinds[kFwImageKinds] = {
    {"ISP", "QM-T77K_ISP_", PET77K_FW_FILE_CHECK_BOX_ISP, PET77K_FW_FILE_ISP,
     {nullptr, "> - ISP 檔案不存在\n", nullptr, "> - ISP 檔案開啟錯誤\n", "> - ISP 檔案檢查正確\n"},
     {"> - ISP 檔案路徑異常\n", "> - ISP 檔案不存在\n", nullptr, "> - ISP 檔案開啟錯誤\n", "> - ISP 檔案檢查正確\n"}},
    {"USB", "QM-T77K_USB_", PET77K_FW_FILE_CHECK_BOX_USB, PET77K_FW_FILE_USB,
     {nullptr, "> - USB 檔案不存在\n", "> - USB 檔案大小異常\n", "> - USB 檔案開啟錯誤\n", "> - USB 檔案檢查正確\n"},
     {"> - USB 檔案路徑異常\n", "> - USB 檔案不存在\n", "> - USB 檔案大小異常\n", "> - USB 檔案開啟錯誤\n",
      "> - USB 檔案檢查正確\n"}},
    {"AUDIO", "QM-T77K_AUDIO_", PET77K_FW_FILE_CHECK_BOX_AUDIO, PET77K_FW_FILE_AUDIO,
     {nullptr, nullptr, nullptr, "> - AUDIO 檔案開啟錯誤\n", "> - AUDIO 檔案檢查正確\n"},
     {"> - AUDIO 檔案路徑異常\n", "> - AUDIO 檔案不存在\n", nullptr, "> - AUDIO 檔案開啟錯誤\n",
      "> - AUDIO 檔案檢查正確\n"}},
};

std::string gBaseDirOverride;
std::mutex gFullPathLock;  // guards gFwFullPath against a writer reading it mid-look-up

// The package folder; 0 when it cannot be named within 1023 characters (a program folder too
// deep to name counts the same).
int packageFolder(char folder[1024]) {
    char base[1024] = "";
    if (!gBaseDirOverride.empty()) {
        if (gBaseDirOverride.size() > 1023) return 0;
        std::strcpy(base, gBaseDirOverride.c_str());
    } else if (GetProjectDir(base) < 0 || base[0] == '\0') {
        return 0;
    }
    const int n = std::snprintf(folder, 1024, "%s/%s", base, kFolderName);
    return n > 0 && n < 1024;
}

void showOutcome(int kind, int outcome, int fromUpdate) {
    const Kind &k = kKinds[kind];
    char text[256];
    switch (outcome) {
    case kNotFound1: std::snprintf(text, sizeof text, "%s file is not found (1)", k.name); break;
    case kNotFound2: std::snprintf(text, sizeof text, "%s file is not found (2)", k.name); break;
    case kSizeInvalid: std::snprintf(text, sizeof text, "%s file size is invalid", k.name); break;
    case kCannotOpen: std::snprintf(text, sizeof text, "%s file can not be opened", k.name); break;
    default: std::snprintf(text, sizeof text, "%s", gFwFileName[kind]); break;
    }
    SetCtrlVal(gPanels.peT77K, k.fileBox, text);
    if (const char *line = fromUpdate ? k.updateLine[outcome] : k.callbackLine[outcome]) ConsolePrintf("%s", line);
}

// fullPath: what the look-up records for the kind, empty until the name is known.
int lookUp(int kind, char fullPath[1024]) {
    fullPath[0] = '\0';
    char folder[1024];
    if (!packageFolder(folder)) return kNotFound1;
    if (!FindPackageFile(folder, kKinds[kind].prefix, gFwFileName[kind], kSuffix)) return kNotFound1;
    char path[1024];
    const int n = std::snprintf(path, sizeof path, "%s/%s", folder, gFwFileName[kind]);
    if (n < 0 || n >= int(sizeof path)) return kNotFound2;  // no such file can be named
    std::strcpy(fullPath, path);
    int size = 0;
    if (FileExists(path, &size) != 1) return kNotFound2;
    if (kind == kFwUsb && size != kUsbImageSize) return kSizeInvalid;
    ConsolePrintf("> - PATH = %s \n", path);
    std::FILE *file = OpenFwImage(path);
    if (!file) return kCannotOpen;
    std::fclose(file);
    return kAccepted;
}

int fileNameCallback(int kind, int event) {
    if (event != EVENT_RIGHT_CLICK) return 0;
    if (ReadFwCheckBox(kind) == 1) LookUpFwImage(kind, 0);
    return 0;
}

int checkBoxCallback(int kind, int event, CtrlCallbackPtr fileNameCallback) {
    if (event != EVENT_COMMIT) return 0;
    if (ReadFwCheckBox(kind) == 1)
        fileNameCallback(gPanels.peT77K, kKinds[kind].fileBox, EVENT_RIGHT_CLICK, nullptr, 0, 0);
    else
        SetCtrlVal(gPanels.peT77K, kKinds[kind].fileBox, "File Name");
    return 0;
}

}  // namespace

int FindPackageFile(const char *folder, const char *prefix, char fileName[1024], const char *suffix) {
    char pattern[1024];
    const int n = std::snprintf(pattern, sizeof pattern, "%s/*", folder);
    if (n < 0 || n >= int(sizeof pattern)) return 0;
    const size_t prefixLength = std::strlen(prefix);
    char name[1024];
    for (int rc = GetFirstFile(pattern, 1, 0, 0, 0, 0, 0, name); rc == 0; rc = GetNextFile(name)) {
        if (strncasecmp(name, prefix, prefixLength) == 0 && FindPattern(name, 0, -1, suffix, 0, 0) >= 0) {
            std::strcpy(fileName, name);
            return 1;
        }
    }
    return 0;
}

int ReadFwCheckBox(int kind) {
    int value = 0;
    GetCtrlVal(gPanels.peT77K, kKinds[kind].checkBox, &value);
    gFwSelected[kind] = value;
    return value;
}

int LookUpFwImage(int kind, int fromUpdate) {
    char fullPath[1024];
    const int outcome = lookUp(kind, fullPath);
    {
        std::lock_guard<std::mutex> lock(gFullPathLock);
        std::strcpy(gFwFullPath[kind], fullPath);
    }
    showOutcome(kind, outcome, fromUpdate);
    return outcome == kAccepted;
}

void CopyFwFullPath(int kind, char path[1024]) {
    std::lock_guard<std::mutex> lock(gFullPathLock);
    std::strcpy(path, gFwFullPath[kind]);
}

std::FILE *OpenFwImage(const char *path) {
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return nullptr;
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(fd);
        return nullptr;
    }
    std::FILE *file = fdopen(fd, "rb");
    if (!file) close(fd);
    return file;
}

void SetFwPackageBaseDir(const char *dir) { gBaseDirOverride = dir ? dir : ""; }

int PeT77K_FwFileISP_Callback(int, int, int event, void *, int, int) { return fileNameCallback(kFwIsp, event); }
VCC_REGISTER_CALLBACK(PeT77K_FwFileISP_Callback);

int PeT77K_FwFileUSB_Callback(int, int, int event, void *, int, int) { return fileNameCallback(kFwUsb, event); }
VCC_REGISTER_CALLBACK(PeT77K_FwFileUSB_Callback);

int PeT77K_FwFileAUDIO_Callback(int, int, int event, void *, int, int) { return fileNameCallback(kFwAudio, event); }
VCC_REGISTER_CALLBACK(PeT77K_FwFileAUDIO_Callback);

int PeT77K_FwFileCheckBoxISP_Callback(int, int, int event, void *, int, int) {
    return checkBoxCallback(kFwIsp, event, PeT77K_FwFileISP_Callback);
}
VCC_REGISTER_CALLBACK(PeT77K_FwFileCheckBoxISP_Callback);

int PeT77K_FwFileCheckBoxUSB_Callback(int, int, int event, void *, int, int) {
    return checkBoxCallback(kFwUsb, event, PeT77K_FwFileUSB_Callback);
}
VCC_REGISTER_CALLBACK(PeT77K_FwFileCheckBoxUSB_Callback);

int PeT77K_FwFileCheckBoxAUDIO_Callback(int, int, int event, void *, int, int) {
    return checkBoxCallback(kFwAudio, event, PeT77K_FwFileAUDIO_Callback);
}
VCC_REGISTER_CALLBACK(PeT77K_FwFileCheckBoxAUDIO_Callback);
