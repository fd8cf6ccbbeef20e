// Pictures on canvas controls (the video window). The pixels are copied once into an immutable
// image that the model and any view share, so a front-end never reads a buffer the tool reuses.
#include <algorithm>
#include <memory>

#include "ui/UiModel.h"
#include "ui/UserInterface.h"

using vcc::ui::CanvasImage;
using vcc::ui::Control;
using vcc::ui::Model;

namespace {
constexpr int kNoSuchControl = -2;
constexpr int kBadValue = -3;
constexpr int kMaxSide = 4096;
}  // namespace

int CanvasDrawRgbImage(int panel, int control, int width, int height, const unsigned char *rgb) {
    std::shared_ptr<CanvasImage> image;
    if (rgb) {
        if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) return kBadValue;
        image = std::make_shared<CanvasImage>();
        image->width = width;
        image->height = height;
        image->rgb.assign(rgb, rgb + static_cast<size_t>(width) * height * 3);
    }
    return Model::instance().locked([&](Model &m) -> int {
        Control *c = m.control(panel, control);
        if (!c || c->style != CTRL_CANVAS) return kNoSuchControl;
        c->image = std::move(image);
        m.touch();
        return 0;
    });
}

int CanvasGetImageSize(int panel, int control, int *width, int *height) {
    return Model::instance().locked([&](Model &m) -> int {
        Control *c = m.control(panel, control);
        if (!c || c->style != CTRL_CANVAS) return kNoSuchControl;
        if (width) *width = c->image ? c->image->width : 0;
        if (height) *height = c->image ? c->image->height : 0;
        return 0;
    });
}
