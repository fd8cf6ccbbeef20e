// The video window's canvas in the Qt front-end: the picture the tool draws fills it, scaled,
// follows each new picture and goes when the tool clears it.
#include <QImage>

#include "QtTestSupport.h"

namespace vcc::ui::qt::testing {
namespace {

using VideoCanvas = QtTest;

std::vector<unsigned char> solid(int width, int height, unsigned char r, unsigned char g, unsigned char b) {
    std::vector<unsigned char> rgb(static_cast<size_t>(width) * height * 3);
    for (size_t i = 0; i < rgb.size(); i += 3) {
        rgb[i] = r;
        rgb[i + 1] = g;
        rgb[i + 2] = b;
    }
    return rgb;
}

TEST_F(VideoCanvas, PictureFillsTheCanvasAndFollowsEachNewOne) {
    const int video = loadAndShow(PNL_VIDEO);
    QWidget *canvas = widget(video, VIDEO_IMAGE);
    ASSERT_NE(canvas, nullptr);

    // A small picture with a left red half and a right blue half, scaled up to 640 x 480.
    std::vector<unsigned char> halves = solid(4, 2, 255, 0, 0);
    for (int y = 0; y < 2; ++y)
        for (int x = 2; x < 4; ++x) {
            unsigned char *p = &halves[(static_cast<size_t>(y) * 4 + x) * 3];
            p[0] = 0;
            p[2] = 255;
        }
    ASSERT_EQ(CanvasDrawRgbImage(video, VIDEO_IMAGE, 4, 2, halves.data()), 0);
    frontend_->syncAll();
    QImage shown = canvas->grab().toImage();
    EXPECT_EQ(shown.pixelColor(100, 240), QColor(255, 0, 0));
    EXPECT_EQ(shown.pixelColor(540, 240), QColor(0, 0, 255));

    const std::vector<unsigned char> green = solid(8, 8, 0, 255, 0);
    ASSERT_EQ(CanvasDrawRgbImage(video, VIDEO_IMAGE, 8, 8, green.data()), 0);
    frontend_->syncAll();
    shown = canvas->grab().toImage();
    EXPECT_EQ(shown.pixelColor(320, 240), QColor(0, 255, 0));

    ASSERT_EQ(CanvasDrawRgbImage(video, VIDEO_IMAGE, 0, 0, nullptr), 0);
    frontend_->syncAll();
    shown = canvas->grab().toImage();
    EXPECT_NE(shown.pixelColor(320, 240), QColor(0, 255, 0)) << "a cleared canvas shows its background";
}

}  // namespace
}  // namespace vcc::ui::qt::testing
