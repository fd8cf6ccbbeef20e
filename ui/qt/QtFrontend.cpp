#include "ui/qt/QtFrontend.h"

#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTimer>
#include <cmath>
#include <set>

#include "ui/Clock.h"
#include "ui/qt/InputFilter.h"
#include "ui/qt/PanelView.h"
#include "ui/qt/Snapshot.h"
#include "ui/qt/TabControl.h"

namespace vcc::ui::qt {
namespace {

QtFrontend *gFrontend = nullptr;

// QApplication keeps a reference to argc for its whole life.
int gArgc = 1;
char gArg0[] = "vcc";
char *gArgv[] = {gArg0, nullptr};

QString qs(const std::string &text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// "*.txt" or "*.bin;*.img" -> the patterns one by one.
QStringList patternsOf(const std::string &filter) {
    QStringList patterns;
    for (const QString &p : qs(filter).split(QRegularExpression(QStringLiteral("[;,\\s]+")), Qt::SkipEmptyParts))
        patterns << p;
    return patterns;
}

}  // namespace

void postInput(const Event &event) {
    Model::instance().post(event);
    if (gFrontend) gFrontend->inputArrived();
}

void chooseSheet(int panel, int tabControl, int sheet) {
    Model::instance().locked([&](Model &m) {
        if (Control *c = m.control(panel, tabControl); c && c->style == CTRL_TAB) {
            c->activeSheet = sheet;
            m.touch();
        }
        return 0;
    });
    if (gFrontend) gFrontend->inputArrived();
}

QtFrontend *activeFrontend() { return dynamic_cast<QtFrontend *>(Model::instance().frontend()); }

QtFrontend::QtFrontend() {
    if (!QApplication::instance()) ownApp_ = std::make_unique<QApplication>(gArgc, gArgv);
    // Latin text in the system face; Chinese texts (calibration results, firmware-file
    // messages) in the Traditional Chinese face rather than whichever CJK face the system
    // would pick for a Han character.
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setFamilies({font.family(), QStringLiteral("Noto Sans CJK TC")});
    font.setPixelSize(12);
    QApplication::setFont(font);
    gFrontend = this;
}

QtFrontend::~QtFrontend() {
    if (gFrontend == this) gFrontend = nullptr;
    for (auto &[handle, view] : views_) delete view.data();
    views_.clear();
}

void QtFrontend::inputArrived() {
    inputArrived_ = true;
    if (waitLoop_) waitLoop_->quit();
}

double QtFrontend::msLeftInFrame() const {
    const auto used = std::chrono::steady_clock::now() - frameStart_;
    return std::max(0.0, std::chrono::duration<double, std::milli>(kFrame - used).count());
}

void QtFrontend::pump(bool wait, double timeoutMs) {
    inputArrived_ = false;
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    Model &model = Model::instance();
    if (!wait || inputArrived_ || model.quitRequested) return;

    // A change not shown yet is drawn by the caller right after this returns; when this
    // frame's refreshes are used up, it waits for the next frame at the latest.
    double waitMs = timeoutMs / std::max(vcc::clock::scale(), 1e-9);
    if (model.revision() != syncedRevision_) {
        if (syncsInFrame_ < kSyncsPerFrame || msLeftInFrame() <= 0) return;
        waitMs = std::min(waitMs, msLeftInFrame());
    }
    if (waitMs < 0.5) return;

    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    deadline.setTimerType(Qt::PreciseTimer);
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    // Workers change the model without waking this thread; look once a frame.
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &loop, [&] {
        if (model.revision() != syncedRevision_) loop.quit();
    });
    deadline.start(static_cast<int>(std::ceil(waitMs)));
    watch.start(kFrame);
    waitLoop_ = &loop;
    loop.exec();
    waitLoop_ = nullptr;
}

void QtFrontend::draw() {
    if (Model::instance().revision() == syncedRevision_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - frameStart_ >= kFrame) {
        frameStart_ = now;
        syncsInFrame_ = 0;
    }
    if (syncsInFrame_ >= kSyncsPerFrame) {
        ++stats_.skipped;
        return;
    }
    ++syncsInFrame_;
    sync(false);
    flushPaint();
}

void QtFrontend::syncAll() {
    sync(true);
    flushPaint();
}

void QtFrontend::flushPaint() {
    // "Redraw now": settle geometry and paint what the refresh made dirty, without taking
    // any input (input is for event processing to deliver, not for drawing).
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
}

void QtFrontend::sync(bool allControls) {
    Model &model = Model::instance();
    // Read before the copy: a change made while copying shows again next time.
    const uint64_t revision = model.revision();
    std::vector<PanelState> panels = takeSnapshot(model, allControls);
    ++stats_.syncs;

    std::set<int> alive;
    for (const PanelState &p : panels) alive.insert(p.handle);
    for (auto it = views_.begin(); it != views_.end();) {
        if (alive.count(it->first) && it->second) {
            ++it;
            continue;
        }
        if (PanelView *gone = it->second.data()) {
            gone->hide();
            delete gone;
        }
        it = views_.erase(it);
    }

    struct Placement {
        int handle, parent, parentControl, top, left;
        bool visible;
    };
    std::vector<Placement> placements;
    placements.reserve(panels.size());
    for (PanelState &p : panels) {
        QPointer<PanelView> &view = views_[p.handle];
        // A handle given to another panel (a model started afresh) gets a fresh view.
        if (view && !view->state().name.empty() && view->state().name != p.name) delete view.data();
        if (!view) view = new PanelView(p.handle);
        placements.push_back({p.handle, p.parentPanel, p.parentControl, p.top, p.left, p.visible});
        view->apply(std::move(p));
    }

    for (const Placement &at : placements) {
        PanelView *view = views_[at.handle];
        if (!view) continue;
        if (!at.parent) {
            if (!view->isWindow()) {
                view->setParent(nullptr, Qt::Window);
                view->move(at.left, at.top);
            }
            if (at.visible && !view->isVisible()) {
                // A panel put on display comes to the front with the keyboard, as the
                // password panel must to take the typing.
                view->show();
                view->raise();
                view->activateWindow();
            } else if (!at.visible && view->isVisible()) {
                view->hide();
            }
            continue;
        }
        PanelView *parent = panelView(at.parent);
        if (!parent) {
            view->hide();
            continue;
        }
        ControlView *holder = parent->controlView(at.parentControl);
        if (holder && holder->style() == CTRL_TAB) {
            static_cast<TabControl *>(holder->body())->adoptSheet(at.handle, view);
        } else {
            // A child panel drawn inside its parent at its own position.
            if (view->parentWidget() != parent) view->setParent(parent);
            view->move(at.left, at.top);
            view->setVisible(at.visible);
            view->raise();
        }
    }
    for (auto &[handle, view] : views_)
        if (view) view->refreshContent();
    syncedRevision_ = revision;
}

PanelView *QtFrontend::panelView(int handle) const {
    auto it = views_.find(handle);
    return it == views_.end() ? nullptr : it->second.data();
}

QWidget *QtFrontend::controlWidget(int panel, int control) const {
    PanelView *view = panelView(panel);
    ControlView *c = view ? view->controlView(control) : nullptr;
    return c ? c->body() : nullptr;
}

FileAnswer QtFrontend::fileSelect(const FileRequest &request) {
    // The panels behind the dialog show what the tool has done so far.
    sync(false);
    flushPaint();

    QFileDialog dialog;
    dialog.setWindowTitle(qs(request.title));
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    // The tool decides what happens to an existing file (the log deletes it, a save overwrites).
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setAcceptMode(request.proposedName.empty() ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    QString directory = qs(request.directory);
    if (QFileInfo(directory).isFile()) directory = QFileInfo(directory).absolutePath();
    if (!directory.isEmpty() && QFileInfo(directory).isDir()) dialog.setDirectory(directory);

    const QStringList patterns = patternsOf(request.filter);
    QStringList filters;
    if (!patterns.isEmpty()) filters << patterns.join(' ') + " (" + patterns.join(' ') + ")";
    if (!request.restrictExtension || patterns.isEmpty()) filters << QObject::tr("All files (*)");
    dialog.setNameFilters(filters);
    if (request.restrictExtension && !patterns.isEmpty() && patterns.first().startsWith("*.") &&
        patterns.first().indexOf('*', 1) < 0)
        dialog.setDefaultSuffix(patterns.first().mid(2));
    if (!request.proposedName.empty()) dialog.selectFile(qs(request.proposedName));

    FileAnswer answer;
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return answer;
    const QFileInfo chosen(dialog.selectedFiles().first());
    answer.path = chosen.absoluteFilePath().toStdString();
    answer.result = chosen.isFile() ? VAL_EXISTING_FILE_SELECTED : VAL_NEW_FILE_SELECTED;
    return answer;
}

void QtFrontend::message(const std::string &title, const std::string &text) {
    sync(false);
    flushPaint();
    QMessageBox box(QMessageBox::NoIcon, qs(title), qs(text), QMessageBox::Ok);
    box.exec();
}

void QtFrontend::quit() {
    if (waitLoop_) waitLoop_->quit();
}

QImage grabPanel(int handle) {
    QtFrontend *frontend = activeFrontend();
    if (!frontend) return {};
    frontend->syncAll();
    PanelView *view = frontend->panelView(handle);
    if (!view) return {};
    return view->grab().toImage();
}

}  // namespace vcc::ui::qt
