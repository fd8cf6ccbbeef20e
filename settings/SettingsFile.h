// Settings files: one camera's configuration as 80 "KEY = value" lines. Save writes what the
// panels show, Load puts a file into the panels without touching the camera, Apply sends the
// camera settings of the last loaded or saved file to the camera.
//
// The files look like INI files but have no sections: an entry is found by its line and its
// key together, so a reordered file is as wrong as one with a key missing.
//
// Thread rules: user-interface thread only.
#pragma once

#include <cstdio>
#include <cstdint>

inline constexpr int kSettingsEntries = 80;
inline constexpr int kSettingsTextSize = 256;  // 255 characters and the terminator

enum class SettingType : uint8_t { Text = 0, Integer = 1, Real = 2 };

// What the last load, save or defaults left for each entry, in file order.
struct SettingValue {
    char text[kSettingsTextSize];
    int32_t integer;
    float real;
};
extern SettingValue gSettings[kSettingsEntries];

// Entry i of the table (file order): its key as written ("MODEL = "), its default text, its type.
const char *SettingKey(int entry);
const char *SettingDefault(int entry);
SettingType SettingTypeOf(int entry);
// The entry whose key is exactly this text ("EU_ZOOM = "), or -1.
int FindSetting(const char *key);

// Asks for a file and loads it into the controls; 1 when a file was chosen, else 0.
int SettingsLoadDialog();
// Asks for a file name and saves the controls into it; 1 when a name was chosen, else 0.
int SettingsSaveDialog();
// Reads the file (a missing one is created with the defaults), or else the defaults, into the
// store, then shows the store in the title and the 79 controls; 1 when the file was read.
int SettingsLoadFile(const char *path);
// mode 0: store from the title and the controls, then written; mode 1: the default file,
// and the defaults into the store. 0 when the file cannot be created.
int SettingsWriteFile(int mode, const char *path);
// Reads an open file into the store; 1, or 0 after falling back to the defaults.
int SettingsReadFile(std::FILE *file);
// Opens, reads and closes the file; 0 when it is missing, cannot be opened or reads wrong.
int SettingsReadPath(const char *path);
// Sends the store's camera settings, one command every 200 ms; 1.
int SettingsApply();
// Every entry set to its default.
void SettingsLoadDefaults();
// The proposed file name of both dialogs: serial number (or device name), local date and time.
void SettingsDefaultFileName(char name[1024]);

int INILoad_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int INISave_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
int INIApply_Callback(int panel, int control, int event, void *callbackData, int eventData1, int eventData2);
