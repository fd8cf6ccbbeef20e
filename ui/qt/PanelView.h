// One panel on screen: a window of exactly the panel's size with its controls at their
// positions, or, for a tab sheet, the same widget held inside its tab control.
#pragma once

#include <QWidget>
#include <map>
#include <memory>

#include "ui/qt/ControlViews.h"
#include "ui/qt/Snapshot.h"

namespace vcc::ui::qt {

class PanelView : public QWidget {
    Q_OBJECT
public:
    explicit PanelView(int handle);
    ~PanelView() override;

    int handle() const { return handle_; }
    void apply(PanelState state);
    // A new frame: text boxes catch up with their buffers.
    void refreshContent();
    ControlView *controlView(int id) const;
    const PanelState &state() const { return last_; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    int handle_;
    PanelState last_;
    bool applied_ = false;
    std::map<int, std::unique_ptr<ControlView>> controls_;
    int focused_ = 0;
};

}  // namespace vcc::ui::qt
