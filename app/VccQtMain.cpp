// vcc: the desktop tool. The Qt front-end mirrors the tool's panels; everything else is the
// same entry routine vcc-script runs.
#include <QApplication>
#include <QFont>

#include "app/Main.h"
#include "ui/UiModel.h"
#include "ui/qt/QtFrontend.h"

int main(int argc, char *argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Video Camera Control");
    vcc::ui::qt::QtFrontend frontend;
    vcc::ui::Model::instance().setFrontend(&frontend);
    const int status = VccMain(argc, argv);
    vcc::ui::Model::instance().setFrontend(nullptr);
    return status;
}
