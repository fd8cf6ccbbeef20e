// The preview and snapshot through the tool's callbacks on the simulated camera: what the files
// hold, how they are named, and what the switch leaves usable.
#include <chrono>
#include <cstring>
#include <thread>

#include "device/Connection.h"
#include "device/UvcLink.h"
#include "panels/DeviceInfo.h"
#include "panels/Preview.h"
#include "sim/FrameGenerator.h"
#include "tests/app/ToolFixture.h"

namespace {

uint32_t le32(const std::string &s, size_t at) {
    return static_cast<uint8_t>(s[at]) | static_cast<uint8_t>(s[at + 1]) << 8 |
           static_cast<uint8_t>(s[at + 2]) << 16 | static_cast<uint32_t>(static_cast<uint8_t>(s[at + 3])) << 24;
}

double channelMean(const sim::RgbFrame &f, int channel) {
    double sum = 0;
    for (size_t i = channel; i < f.rgb.size(); i += 3) sum += f.rgb[i];
    return sum / (f.rgb.size() / 3);
}

class Preview : public ToolTest {
protected:
    void connect() {
        // The library outlives each test's tool: no stream left over from the test before.
        StopPreviewVideo();
        // The preview group is on the PvInfo sheet, which a user reaches after the unlock.
        SetCtrlAttribute(gPanels.main, MAIN_TIMER, ATTR_ENABLED, 0);
        for (char key : std::string("KestrelOrbitFox"))
            vcc::ui::Model::instance().call(gPanels.password, PASSWORD_ENTRY, EVENT_KEYPRESS, key);
        vcc::ui::Model::instance().call(gPanels.password, PASSWORD_ENTRY, EVENT_KEYPRESS, VAL_ENTER_VKEY);
        VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_RIGHT_CLICK, nullptr, 0, 0);
        ASSERT_TRUE(IsDeviceConnected());
        ASSERT_TRUE(IsPowerOn());
    }
    void startPreview(int snapEnable) {
        ASSERT_TRUE(userSet("PVINFO.SNAP_ENABLE", std::to_string(snapEnable)));
        ASSERT_TRUE(userSet("PVINFO.PREVIEW_ON_OFF", "1"));
    }
    // The camera's preview status as the host reads it, and the library's own picture.
    bool streaming() {
        unsigned short status = 0;
        EXPECT_GE(ReadFromDevice(5, 0xCC, &status), 0);
        unsigned char rgb[8 * 8 * 3];
        EXPECT_EQ((status & 0xF0) != 0, UvcLinkPreviewFrame(rgb, 8, 8) == 0);
        return (status & 0xF0) != 0;
    }
};

TEST_F(Preview, BitmapSnapshotIsAWholeBottomUp24BitPictureOfTheCamerasView) {
    connect();
    startPreview(1);
    answerFile(dir / "a.bmp");
    ASSERT_TRUE(commit("PVINFO.SNAP"));
    const std::string bmp = readFile(dir / "a.bmp");
    ASSERT_EQ(bmp.size(), 54u + 640u * 480u * 3u);
    EXPECT_EQ(bmp.substr(0, 2), "BM");
    EXPECT_EQ(le32(bmp, 2), bmp.size());
    EXPECT_EQ(le32(bmp, 10), 54u);
    EXPECT_EQ(le32(bmp, 14), 40u);
    EXPECT_EQ(le32(bmp, 18), 640u);
    EXPECT_EQ(le32(bmp, 22), 480u);
    EXPECT_EQ(bmp[28], 24);
    EXPECT_EQ(le32(bmp, 30), 0u);
    // The first stored row is the picture's bottom row, in blue-green-red order.
    const sim::RgbFrame frame = sim::RenderFrame(sim::CurrentFrameParams());
    const size_t bottom = static_cast<size_t>(479) * 640 * 3;
    EXPECT_EQ(static_cast<uint8_t>(bmp[54]), frame.rgb[bottom + 2]);
    EXPECT_EQ(static_cast<uint8_t>(bmp[56]), frame.rgb[bottom]);
    EXPECT_NE(console().find("> - PATH = " + (dir / "a.bmp").string() + " \n\n"), std::string::npos);
    EXPECT_STREQ(gLastSnapPath, (dir / "a.bmp").c_str());
    EXPECT_FALSE(std::filesystem::exists(dir / "a.bmp.part"));
}

TEST_F(Preview, RawSnapshotIsTheSensorMosaicAndTheNameFallsBackToTheDeviceName) {
    connect();
    startPreview(1);
    sim::camera().setRegister(5, 0xFA, 2);
    gSerialNumber[0] = '\0';
    answerFile(dir / "b.raw");
    ASSERT_TRUE(commit("PVINFO.SNAP"));
    const std::string raw = readFile(dir / "b.raw");
    ASSERT_EQ(raw.size(), 640u * 480u);
    const sim::RgbFrame frame = sim::RenderFrame(sim::CurrentFrameParams());
    EXPECT_EQ(static_cast<uint8_t>(raw[0]), frame.rgb[0]);          // red site
    EXPECT_EQ(static_cast<uint8_t>(raw[1]), frame.rgb[3 + 1]);      // green site
    EXPECT_EQ(static_cast<uint8_t>(raw[641]), frame.rgb[641 * 3 + 2]);  // blue site
    ASSERT_FALSE(frontend.popups.empty());
    EXPECT_NE(frontend.popups.back().find("\"" + std::string(gDeviceName) + "_2026-01-02_03-04-05.raw\""),
              std::string::npos)
        << frontend.popups.back();
    EXPECT_NE(console().find(">LIB : SET [SNAP RAW]\n> - PATH = "), std::string::npos);
}

TEST_F(Preview, SnapshotsThatCannotBeTakenLeaveNoFileAndNoPathLine) {
    connect();
    // Preview off: only the busy flash.
    const std::string before = console();
    EXPECT_TRUE(userSet("PVINFO.SNAP_ENABLE", "1"));
    Snap_Callback(gPanels.pvInfo, PVINFO_SNAP, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), before);
    EXPECT_TRUE(frontend.popups.empty());

    startPreview(1);
    // A folder that does not exist: the library writes nothing, the tool still names the path.
    sim::camera().setRegister(5, 0xFA, 3);
    answerFile(dir / "missing" / "c.bmp");
    ASSERT_TRUE(commit("PVINFO.SNAP"));
    EXPECT_FALSE(std::filesystem::exists(dir / "missing"));
    EXPECT_NE(console().find("c.bmp \n\n"), std::string::npos);

    // A cancelled dialog keeps the last path.
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Cancel, ""});
    const std::string last = gLastSnapPath;
    ASSERT_TRUE(commit("PVINFO.SNAP"));
    EXPECT_EQ(last, gLastSnapPath);
}

TEST_F(Preview, SnapDisableStreamKeepsTheSnapshotButtonAndTheLibraryFromCapturing) {
    connect();
    startPreview(0);
    EXPECT_TRUE(streaming());
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_SNAP));
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_CAPTURE_PIN));
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_SNAP_ENABLE));
    EXPECT_NE(console().find(">LIB : SET [PREVIEW START] - Snap Disable\n"), std::string::npos);
    // Even called directly, a stream without still capture saves nothing.
    EXPECT_LT(CaptureRGBDataToFile((dir / "d.bmp").c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(dir / "d.bmp"));

    ASSERT_TRUE(userSet("PVINFO.PREVIEW_ON_OFF", "0"));
    EXPECT_FALSE(streaming());
    startPreview(1);
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_SNAP));
}

TEST_F(Preview, ClosingTheVideoWindowOrLosingTheCameraStopsThePreview) {
    connect();
    startPreview(1);
    DisplayPanel(gPanels.video);
    PreviewQuit_Callback(gPanels.video, 0, EVENT_GOT_FOCUS, nullptr, 0, 0);
    EXPECT_TRUE(IsPreviewOn());
    PreviewQuit_Callback(gPanels.video, 0, EVENT_CLOSE, nullptr, 0, 0);
    EXPECT_FALSE(IsPreviewOn());
    EXPECT_FALSE(streaming());
    EXPECT_EQ(read("VIDEO.visible"), "0");
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_SNAP));
    EXPECT_FALSE(dimmed(gPanels.pvInfo, PVINFO_SNAP_ENABLE));

    startPreview(1);
    VideoCameraConnect_Callback(gPanels.main, MAIN_VIDEO_CAMERA_CONNECT, EVENT_LEFT_DOUBLE_CLICK, nullptr, 0, 0);
    EXPECT_FALSE(IsPreviewOn());
    EXPECT_FALSE(streaming());
    const std::string text = console();
    EXPECT_NE(text.find(">LIB : SET [DISCONNECT DEVICE]\n>LIB : SET [PREVIEW STOP]\n>LIB : SET [CLOSE]\n"),
              std::string::npos);
}

TEST_F(Preview, PropertyPagesShowTheStreamAndTheCamerasSettings) {
    connect();
    startPreview(1);
    ASSERT_TRUE(userSet("IQ.BRIGHTNESS", "11"));
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Ok, ""});
    ASSERT_TRUE(commit("PVINFO.CAPTURE_FILTER"));
    frontend.queueAnswer({vcc::ui::headless::PopupAnswer::Kind::Ok, ""});
    ASSERT_TRUE(commit("PVINFO.CAPTURE_PIN"));
    ASSERT_EQ(frontend.popups.size(), 2u);
    EXPECT_NE(frontend.popups[0].find("\"Camera Properties\""), std::string::npos) << frontend.popups[0];
    EXPECT_NE(frontend.popups[0].find("Brightness 11"), std::string::npos) << frontend.popups[0];
    EXPECT_NE(frontend.popups[1].find("\"Stream Properties\""), std::string::npos) << frontend.popups[1];
    EXPECT_NE(frontend.popups[1].find("Still capture: on"), std::string::npos) << frontend.popups[1];
    EXPECT_FALSE(IsPreviewOn() == 0);
    EXPECT_EQ(read("MAIN.BUSY"), "0");
}

TEST_F(Preview, PowerOffWithoutTheStreamingMethodMovesOnlyTheSwitch) {
    connect();
    sim::camera().clearTraffic();
    SetCtrlVal(gPanels.main, MAIN_POWER_UP_DOWN, 0);
    SetCtrlVal(gPanels.pvInfo, PVINFO_SNAP_ENABLE, 1);
    SetCtrlVal(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, 1);
    const std::string before = console();
    PreviewOnOff_Callback(gPanels.pvInfo, PVINFO_PREVIEW_ON_OFF, EVENT_COMMIT, nullptr, 0, 0);
    EXPECT_EQ(console(), before);
    EXPECT_TRUE(sim::camera().traffic().empty());
    EXPECT_FALSE(streaming());
    EXPECT_TRUE(IsPreviewOn());
    EXPECT_TRUE(dimmed(gPanels.pvInfo, PVINFO_SNAP));
}

TEST(FrameGenerator, FramesFollowPanTiltZoomAndTheImageParameters) {
    const sim::FrameParams neutral;
    const sim::RgbFrame base = sim::RenderFrame(neutral, 160, 120);
    auto differs = [&](sim::FrameParams p) { return sim::RenderFrame(p, 160, 120).rgb != base.rgb; };
    sim::FrameParams p;
    p.pan = 200;
    EXPECT_TRUE(differs(p));
    p = {};
    p.tilt = -200;
    EXPECT_TRUE(differs(p));
    p = {};
    p.zoom = 300;
    EXPECT_TRUE(differs(p));
    p = {};
    p.hue = 12;
    EXPECT_TRUE(differs(p));

    p = {};
    p.brightness = 12;
    const sim::RgbFrame bright = sim::RenderFrame(p, 160, 120);
    EXPECT_GT(channelMean(bright, 1), channelMean(base, 1) + 20);
    p = {};
    p.redGain = 200;
    p.blueGain = 60;
    const sim::RgbFrame warm = sim::RenderFrame(p, 160, 120);
    EXPECT_GT(channelMean(warm, 0), channelMean(base, 0));
    EXPECT_LT(channelMean(warm, 2), channelMean(base, 2));
    EXPECT_DOUBLE_EQ(channelMean(warm, 1), channelMean(base, 1));
    p = {};
    p.saturation = 0;
    const sim::RgbFrame grey = sim::RenderFrame(p, 160, 120);
    for (size_t i = 0; i < grey.rgb.size(); i += 3) {
        ASSERT_NEAR(grey.rgb[i], grey.rgb[i + 1], 1);
        ASSERT_NEAR(grey.rgb[i + 1], grey.rgb[i + 2], 1);
    }
    p = {};
    p.mirror = true;
    const sim::RgbFrame mirrored = sim::RenderFrame(p, 160, 120);
    for (int x = 0; x < 160; ++x)
        ASSERT_EQ(mirrored.rgb[(60 * 160 + x) * 3], base.rgb[(60 * 160 + 159 - x) * 3]) << x;
}

TEST(FrameGenerator, ParametersComeFromTheCamerasRegisters) {
    sim::camera().reset(2);
    sim::camera().setRegister(5, 0xE3, 0xFFFF);
    sim::camera().setRegister(5, 0xE4, 0xFF38);  // pan -200
    sim::camera().setRegister(5, 0xE2, 99);
    sim::camera().setRegister(5, 0xD1, 3);
    const sim::FrameParams p = sim::CurrentFrameParams();
    EXPECT_EQ(p.pan, -200);
    EXPECT_EQ(p.zoom, 99);
    EXPECT_EQ(p.brightness, 3);
}

}  // namespace

namespace {

std::shared_ptr<const vcc::ui::CanvasImage> shownPicture() {
    return vcc::ui::Model::instance().locked(
        [](vcc::ui::Model &m) { return m.control(gPanels.video, VIDEO_IMAGE)->image; });
}

void tick() {
    // Frames are fetched at most every 40 ms of real time.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    PreviewFrame_Callback(gPanels.video, VIDEO_FRAME_TIMER, EVENT_TIMER_TICK, nullptr, 0, 0);
}

class VideoWindow : public Preview {};

TEST_F(VideoWindow, ShowsTheCamerasPictureWhileThePreviewRunsAndFollowsItsSettings) {
    connect();
    tick();
    EXPECT_EQ(shownPicture(), nullptr) << "no preview, no picture";
    startPreview(0);
    EXPECT_EQ(read("VIDEO.visible"), "1");
    tick();
    auto first = shownPicture();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->width, 640);
    EXPECT_EQ(first->height, 480);
    EXPECT_EQ(first->rgb, sim::RenderFrame(sim::CurrentFrameParams()).rgb);

    ASSERT_TRUE(userSet("IQ.BRIGHTNESS", "13"));
    tick();
    auto brighter = shownPicture();
    ASSERT_NE(brighter, first);
    EXPECT_GT(channelMean({brighter->width, brighter->height, brighter->rgb}, 1),
              channelMean({first->width, first->height, first->rgb}, 1));

    ASSERT_TRUE(userSet("PVINFO.PREVIEW_ON_OFF", "0"));
    EXPECT_EQ(shownPicture(), nullptr);
    EXPECT_EQ(read("VIDEO.visible"), "0");
    tick();
    int enabled = 1;
    GetCtrlAttribute(gPanels.video, VIDEO_FRAME_TIMER, ATTR_ENABLED, &enabled);
    EXPECT_EQ(enabled, 0) << "the frame timer rests while no preview runs";
}

TEST(CanvasPicture, OnlyACanvasTakesAPictureOfASensibleSize) {
    vcc::ui::Model::instance().reset();
    const int video = LoadPanel(0, "Main.uir", PNL_VIDEO);
    ASSERT_GT(video, 0);
    const unsigned char pixel[3] = {1, 2, 3};
    EXPECT_LT(CanvasDrawRgbImage(video, VIDEO_IMAGE, 0, 1, pixel), 0);
    EXPECT_LT(CanvasDrawRgbImage(video, VIDEO_IMAGE, 5000, 1, pixel), 0);
    EXPECT_LT(CanvasDrawRgbImage(video, VIDEO_FRAME_TIMER, 1, 1, pixel), 0);
    EXPECT_LT(CanvasDrawRgbImage(video, 999, 1, 1, pixel), 0);
    ASSERT_EQ(CanvasDrawRgbImage(video, VIDEO_IMAGE, 1, 1, pixel), 0);
    int w = 0, h = 0;
    ASSERT_EQ(CanvasGetImageSize(video, VIDEO_IMAGE, &w, &h), 0);
    EXPECT_EQ(w, 1);
    EXPECT_EQ(h, 1);
    vcc::ui::Model::instance().reset();
}

}  // namespace
