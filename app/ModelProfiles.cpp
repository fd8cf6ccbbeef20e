// Model profiles: which controls, ring items, ranges and labels each camera model offers.
// Only the user interface changes here; nothing is sent to or read from the camera.
#include "app/ModelProfiles.h"

#include <cstdio>
#include <iterator>
#include <span>

#include "MainUir.h"
#include "app/BusyState.h"
#include "app/LogFunc.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

namespace {

constexpr int kProfiles = 3;
using PanelOf = int PanelHandles::*;

// ---- firmware-version display ------------------------------------------------------------------

struct VersionSlot {
    int label, version, separator, second;  // separator and second: 0 where the slot has none
};
constexpr VersionSlot kSlots[] = {
    {PVINFO_VER1_LABEL, PVINFO_VER1, PVINFO_VER1_SEP, PVINFO_VER1_SECOND},
    {PVINFO_VER2_LABEL, PVINFO_VER2, PVINFO_VER2_SEP, PVINFO_VER2_SECOND},
    {PVINFO_VER3_LABEL, PVINFO_VER3, PVINFO_VER3_SEP, PVINFO_VER3_SECOND},
    {PVINFO_VER4_LABEL, PVINFO_VER4, 0, 0},
    {PVINFO_VER5_LABEL, PVINFO_VER5, 0, 0},
    {PVINFO_VER6_LABEL, PVINFO_VER6, 0, 0},
    {PVINFO_MACHINE_ID_LABEL, PVINFO_MACHINE_ID, 0, 0},
};
struct SlotTexts {
    const char *label, *version, *separator, *second;
};
constexpr SlotTexts kSlotTexts[std::size(kSlots)][kProfiles] = {
    {{"Master : ", "OOO xxxz", "/", "Oxx"}, {"Master : ", "OOO xxxz", "/", "Oxx"}, {"ISP : ", "OOO xxxz", "", ""}},
    {{"Motor : ", "OOO xxxz", "/", "Oxx"}, {"Motor : ", "OOO xxxz", "/", "Oxx"}, {"", "", "", ""}},
    {{"USB : ", "OOO xxxz", "/", "Oxx"}, {"USB : ", "OOO xxxz", "/", "Oxx"}, {"USB : ", "OOO xxxz", "/", "Oxx"}},
    {{"Interface : ", "OOO xxxz", "", ""}, {"", "", "", ""}, {"", "", "", ""}},
    {{"FPGA : ", "OOO xxxz", "", ""}, {"CM : ", "OOO xxxz", "", ""}, {"", "", "", ""}},
    {{"", "", "", ""}, {"DSP", "OOO xxxz", "", ""}, {"AUDIO", "OOO xxxz", "", ""}},
    {{"Machine ID : ", "0123456789ABCDEF ", "", ""}, {"Machine ID : ", "0123456789ABCDEF ", "", ""}, {"", "", "", ""}},
};

// ---- rings ----------------------------------------------------------------------------------------

struct Item {
    const char *label;
    int value;
};
// A ring's content: listed items, or the values first..last labelled by a format of factor * value.
struct RingFill {
    std::span<const Item> items;
    int first = 0, last = -1;
    const char *format = nullptr;
    int factor = 1;
};
struct RingRow {
    PanelOf panel;
    int control;
    RingFill fill[kProfiles];
};

constexpr Item kAeModeFull[] = {{"Manual", 1}, {"Auto", 2}, {"Shutter-Pri.", 4}, {"Iris-Pri", 8}};
constexpr Item kAeModeSmall[] = {{"Manual", 1}, {"Auto", 2}};
constexpr Item kAeSelectSmall[] = {{"Normal", 0}};
constexpr Item kAeSelectFull[] = {{"Normal", 0}, {"White-Board", 1}, {"Stable-Auto", 2}};
constexpr Item kIrisF16[] = {{"F16", 0}, {"F11", 1}, {"F8", 2}, {"F5.6", 3}, {"F4", 4}, {"F2.8", 5}};
constexpr Item kIrisF20[] = {{"F20", 0}, {"F14", 1}, {"F10", 2}, {"F7.2", 3},
                             {"F5.1", 4}, {"F3.6", 5}, {"F2.5", 6}, {"F1.8", 7}};
constexpr Item kAwbSelectSmall[] = {{"Normal", 0}, {"ATW", 1}, {"Wide-Auto", 2}};
constexpr Item kAwbSelectFull[] = {{"Normal", 0},       {"ATW", 1},          {"Wide-Auto", 2}, {"Indoor", 3},
                                   {"Outdoor", 4},      {"One-Push-WB", 5},  {"Sodium-Lamp", 6}, {"3000K", 7},
                                   {"4300K", 8},        {"5000K", 9},        {"6500K", 10},    {"8300K", 11}};
constexpr Item kThreeDnrLevels[] = {{"OFF", 0}, {"1", 1}, {"2", 2}, {"3", 3}, {"4", 4}, {"5", 5}, {"AUTO", 6}};
constexpr Item kThreeDnrNamed[] = {{"OFF", 0}, {"Low", 1}, {"Typ", 2}, {"Max", 3}, {"AUTO", 4}};
constexpr Item kIrOut[] = {{"R AND L", 0}, {"Right", 1}, {"Left", 2}, {"OFF", 3}};

constexpr RingFill list(std::span<const Item> items) { return RingFill{items}; }
constexpr RingFill rule(int first, int last, const char *format, int factor) {
    return RingFill{{}, first, last, format, factor};
}

constexpr RingRow kRings[] = {
    {&PanelHandles::ae, AE_AE_MODE, {list(kAeModeFull), list(kAeModeFull), list(kAeModeSmall)}},
    {&PanelHandles::ae, AE_AE_SELECT, {list(kAeSelectSmall), list(kAeSelectFull), list(kAeSelectSmall)}},
    {&PanelHandles::ae, AE_IRIS, {list(kIrisF16), list(kIrisF20), list(kIrisF16)}},
    {&PanelHandles::ae, AE_GAIN, {rule(0, 24, "%d DB", 2), rule(0, 15, "%d DB", 2), rule(0, 23, "%d DB", 2)}},
    {&PanelHandles::ae, AE_GAIN_LIMIT, {rule(4, 24, "%d DB", 2), rule(4, 15, "%d DB", 2), rule(4, 23, "%d DB", 2)}},
    {&PanelHandles::awb, AWB_AWB_SELECT, {list(kAwbSelectSmall), list(kAwbSelectFull), list(kAwbSelectSmall)}},
    {&PanelHandles::iq, IQ_THREE_DNR, {list(kThreeDnrLevels), list(kThreeDnrNamed), list(kThreeDnrLevels)}},
    {&PanelHandles::ptzfRel, PTZFREL_ZOOM_SPEED, {rule(0, 5, "SPD. %d", 1), rule(0, 7, "SPD. %d", 1), rule(0, 7, "SPD. %d", 1)}},
    {&PanelHandles::others, OTHERS_IR_OUT, {list(kIrOut), list(kIrOut), list(kIrOut)}},
};

// ---- numeric ranges ---------------------------------------------------------------------------------

struct Range {
    bool set = false;      // false: the profile leaves the control as it is
    bool hasMin = false;
    int min = 0, max = 0;
    bool hasDefault = false;
    int dflt = 0;
    bool hasValue = false;
    int value = 0;
};
constexpr Range span(int min, int max) { return {true, true, min, max}; }
constexpr Range maxOnly(int max) { return {true, false, 0, max}; }
constexpr Range withDefault(int min, int max, int dflt) { return {true, true, min, max, true, dflt}; }
constexpr Range withValue(int min, int max, int value) { return {true, true, min, max, false, 0, true, value}; }
constexpr Range untouched() { return {}; }

struct RangeRow {
    PanelOf panel;
    int control;
    Range range[kProfiles];
};
constexpr RangeRow kRanges[] = {
    {&PanelHandles::awb, AWB_RED_GAIN, {span(-64, 319), span(0, 60), span(-64, 319)}},
    {&PanelHandles::awb, AWB_BLUE_GAIN, {span(-64, 319), span(0, 60), span(-64, 319)}},
    {&PanelHandles::awb, AWB_WB_TEMPERATURE, {withDefault(0, 44, 22), withDefault(0, 30, 15), withDefault(0, 44, 22)}},
    {&PanelHandles::ptzfAbs, PTZFABS_ZOOM, {maxOnly(398), maxOnly(1467), maxOnly(127)}},
    {&PanelHandles::ptzfAbs, PTZFABS_FOCUS, {maxOnly(723), maxOnly(2135), maxOnly(150)}},
    {&PanelHandles::ptzfAbs, PTZFABS_PAN, {span(-100, 100), span(-100, 100), span(-127, 127)}},
    {&PanelHandles::ptzfAbs, PTZFABS_TILT, {span(-100, 100), span(-100, 100), span(-127, 127)}},
    {&PanelHandles::ptzfAbs, PTZFABS_D_ZOOM_LIMIT, {untouched(), withValue(0, 11, 0), withValue(2, 3, 3)}},
    {&PanelHandles::others, OTHERS_PRESET_LOAD, {span(0, 127), span(0, 127), span(0, 63)}},
    {&PanelHandles::others, OTHERS_PRESET_SAVE, {span(0, 127), span(0, 127), span(0, 63)}},
    {&PanelHandles::others, OTHERS_PRESET_CLEAR, {span(0, 127), span(0, 127), span(0, 63)}},
};

// ---- labels -------------------------------------------------------------------------------------------

struct LabelRow {
    PanelOf panel;
    int control;
    const char *label[kProfiles];
};
constexpr LabelRow kLabels[] = {
    {&PanelHandles::others, OTHERS_PRESET_LOAD, {"P-Load (0-127)", "P-Load (0-127)", "P-Load (0-63)"}},
    {&PanelHandles::others, OTHERS_PRESET_SAVE, {"P-Save (0-127)", "P-Save (0-127)", "P-Save (0-63)"}},
    {&PanelHandles::others, OTHERS_PRESET_CLEAR, {"P-Clear (0-127)", "P-Clear (0-127)", "P-Clear (0-63)"}},
    {&PanelHandles::others, OTHERS_ERR_LED, {"ERR LED", "ERR LED", "LED"}},
};

// ---- shown (1) and hidden (0) -----------------------------------------------------------------------------

struct ShowRow {
    PanelOf panel;
    int control;
    bool shown[kProfiles];
};
#define SHOW(panel, control, p0, p1, p2) {&PanelHandles::panel, control, {p0, p1, p2}}
constexpr ShowRow kShown[] = {
    SHOW(ae, AE_AE_SELECT, 1, 1, 0), SHOW(ae, AE_IRIS, 1, 1, 0), SHOW(ae, AE_GAIN_LIMIT, 1, 1, 0),
    SHOW(ae, AE_BACKLIGHT_ON_OFF, 1, 1, 0), SHOW(ae, AE_AE_PRIORITY, 1, 0, 0),
    SHOW(ae, AE_AE_COMP_ON_OFF, 0, 1, 0), SHOW(ae, AE_SPOT_LIGHT_ON_OFF, 0, 1, 0),
    SHOW(ae, AE_SPOT_LIGHT_POS_X, 0, 1, 0), SHOW(ae, AE_SPOT_LIGHT_POS_Y, 0, 1, 0),
    SHOW(awb, AWB_AWB_SELECT, 1, 1, 0),
    SHOW(iq, IQ_THREE_DNR, 1, 1, 0), SHOW(iq, IQ_WDR, 1, 1, 0),
    SHOW(iq, IQ_SKIN_TONE, 0, 1, 0), SHOW(iq, IQ_BLACK_LEVEL, 0, 1, 0),
    SHOW(ptzfAbs, PTZFABS_D_ZOOM_LIMIT, 0, 1, 1), SHOW(ptzfAbs, PTZFABS_D_ZOOM_POS, 0, 1, 0),
    SHOW(ptzfAbs, PTZFABS_PAN_TILT_RESET, 1, 1, 0), SHOW(ptzfAbs, PTZFABS_PAN_TILT_LIMIT_ON_OFF, 1, 1, 0),
    SHOW(ptzfAbs, PTZFABS_PAN_LIMIT_LEFT, 1, 1, 0), SHOW(ptzfAbs, PTZFABS_PAN_LIMIT_RIGHT, 1, 1, 0),
    SHOW(ptzfAbs, PTZFABS_TILT_LIMIT_UP, 1, 1, 0), SHOW(ptzfAbs, PTZFABS_TILT_LIMIT_DOWN, 1, 1, 0),
    SHOW(ptzfAbs, PTZFABS_FOCUS, 1, 1, 0), SHOW(ptzfAbs, PTZFABS_FOCUS_ONE_PUSH, 1, 1, 0),
    SHOW(ptzfAbs, PTZFABS_AF_MODE, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_ZOOM_SPEED, 1, 1, 0), SHOW(ptzfRel, PTZFREL_FOCUS_SPEED, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_PAN_SPEED, 1, 1, 0), SHOW(ptzfRel, PTZFREL_TILT_SPEED, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_PAN_TILT_CTRL_RESET, 1, 1, 0), SHOW(ptzfRel, PTZFREL_PAN_TILT_UP_LEFT, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_PAN_TILT_UP_RIGHT, 1, 1, 0), SHOW(ptzfRel, PTZFREL_PAN_TILT_DOWN_LEFT, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_PAN_TILT_DOWN_RIGHT, 1, 1, 0), SHOW(ptzfRel, PTZFREL_FOCUS_AUTO, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_FOCUS_FAR, 1, 1, 0), SHOW(ptzfRel, PTZFREL_FOCUS_NEAR, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_FOCUS_STOP, 1, 1, 0),
    SHOW(others, OTHERS_AF_SPEED, 1, 1, 0), SHOW(others, OTHERS_OUT_RAW, 1, 1, 0),
    SHOW(others, OTHERS_PREVIEW_STANDBY_TIME, 1, 1, 0), SHOW(others, OTHERS_IR_OUT, 1, 1, 0),
    SHOW(others, OTHERS_IR_RECEIVE, 1, 1, 0), SHOW(others, OTHERS_AF_SENSITIVITY, 1, 1, 0),
    SHOW(others, OTHERS_AF_FRAME, 1, 1, 0), SHOW(others, OTHERS_MIRROR, 1, 1, 0),
    SHOW(others, OTHERS_PICTURE_EFFECT, 0, 1, 0), SHOW(others, OTHERS_ERR_LED, 1, 1, 1),
    // Frames whose every control a profile hides go with them, so no empty box is left behind.
    SHOW(ae, AE_SPOT_GROUP, 0, 1, 0), SHOW(ptzfAbs, PTZFABS_LIMIT_GROUP, 1, 1, 0),
    SHOW(ptzfRel, PTZFREL_FOCUS_GROUP, 1, 1, 0), SHOW(others, OTHERS_IR_GROUP, 1, 1, 0),
    SHOW(others, OTHERS_AF_GROUP, 1, 1, 0),
};
#undef SHOW

// ---- flash-tool panels ---------------------------------------------------------------------------------------

constexpr bool kSfEnabled[kProfiles] = {false, false, true};
constexpr bool kPfEnabled[kProfiles] = {false, true, true};
// With the streamed flash type (value 1) only these serial-flash controls stay usable.
constexpr int kSfStreamControls[] = {SF_SF_RESET_EXTERNAL, SF_SF_TYPE, SF_SF_BIN_LOAD,
                                     SF_SF_UPDATE,         SF_PATH,    SF_LOADED};

void fillRing(int panel, int control, const RingFill &fill) {
    ClearListCtrl(panel, control);
    int position = 0;
    for (const Item &item : fill.items) InsertListItem(panel, control, position++, item.label, item.value);
    for (int value = fill.first; value <= fill.last; ++value) {
        char label[32];
        std::snprintf(label, sizeof label, fill.format, fill.factor * value);
        InsertListItem(panel, control, position++, label, value);
    }
}

void applyRange(int panel, int control, const Range &r) {
    if (!r.set) return;
    if (r.hasMin) SetCtrlAttribute(panel, control, ATTR_MIN_VALUE, r.min);
    SetCtrlAttribute(panel, control, ATTR_MAX_VALUE, r.max);
    if (r.hasDefault) SetCtrlAttribute(panel, control, ATTR_DFLT_VALUE, r.dflt);
    if (r.hasValue) SetCtrlVal(panel, control, r.value);
}

// Every control of a flash panel but its update-running indicator.
void dimFlashPanel(int panel, int running, int dimmed) {
    int control = 0;
    GetPanelAttribute(panel, ATTR_PANEL_FIRST_CTRL, &control);
    while (control) {
        if (control != running) SetCtrlAttribute(panel, control, ATTR_DIMMED, dimmed);
        GetCtrlAttribute(panel, control, ATTR_NEXT_CTRL, &control);
    }
}

}  // namespace

int CurrentModelProfile() {
    int index = -1;
    GetCtrlIndex(gPanels.main, MAIN_MODEL, &index);
    return index;
}

void ConfigureModelPanels() {
    const int profile = CurrentModelProfile();
    if (profile < 0 || profile >= kProfiles) return;

    // A field the profile gives no text is hidden, so a model with fewer processors shows no
    // empty version boxes.
    auto versionField = [](int control, const char *text) {
        if (!control) return;
        SetCtrlVal(gPanels.pvInfo, control, text);
        SetCtrlAttribute(gPanels.pvInfo, control, ATTR_VISIBLE, text[0] != '\0');
    };
    for (size_t i = 0; i < std::size(kSlots); ++i) {
        const VersionSlot &slot = kSlots[i];
        const SlotTexts &texts = kSlotTexts[i][profile];
        versionField(slot.label, texts.label);
        versionField(slot.version, texts.version);
        versionField(slot.separator, texts.separator);
        versionField(slot.second, texts.second);
    }
    for (const RingRow &row : kRings) fillRing(gPanels.*row.panel, row.control, row.fill[profile]);
    for (const RangeRow &row : kRanges) applyRange(gPanels.*row.panel, row.control, row.range[profile]);
    for (const LabelRow &row : kLabels)
        SetCtrlAttribute(gPanels.*row.panel, row.control, ATTR_LABEL_TEXT, row.label[profile]);
    for (const ShowRow &row : kShown)
        SetCtrlAttribute(gPanels.*row.panel, row.control, ATTR_VISIBLE, row.shown[profile] ? 1 : 0);

    dimFlashPanel(gPanels.pf, PF_RUNNING, kPfEnabled[profile] ? 0 : 1);
    dimFlashPanel(gPanels.sf, SF_RUNNING, kSfEnabled[profile] ? 0 : 1);
    int sfType = 0;
    GetCtrlVal(gPanels.sf, SF_SF_TYPE, &sfType);
    if (kSfEnabled[profile] && sfType == 1) {
        dimFlashPanel(gPanels.sf, SF_RUNNING, 1);
        for (int control : kSfStreamControls) SetCtrlAttribute(gPanels.sf, control, ATTR_DIMMED, 0);
    }
}

int Model_Callback(int panel, int control, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    SetCommandBusy(panel, control, 1);
    ConfigureModelPanels();
    char label[64] = "";
    int index = -1;
    GetCtrlIndex(panel, control, &index);
    GetLabelFromIndex(panel, control, index, label);
    ConsolePrintf(">CMND : SET [MODEL] = %s\n", label);
    SetCommandBusy(panel, control, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(Model_Callback);
