#include "ui/UiModel.h"

#include <algorithm>

namespace vcc::ui {

void NullFrontend::pump(bool wait, double timeoutMs) {
    if (wait) vcc::clock::sleepMs(std::min(timeoutMs, 10.0));
}

Model &Model::instance() {
    static Model model;
    return model;
}

void Model::reset() {
    std::lock_guard lock(mutex_);
    panels_.clear();
    order_.clear();
    timers_.clear();
    queue_.clear();
    nextHandle_ = 1;
    quitRequested = false;
    quitCode = 0;
    runDepth = 0;
    uiThread_ = std::this_thread::get_id();
    uiThreadSet_ = true;
    ++revision_;
}

void Model::setFrontend(Frontend *frontend) { frontend_ = frontend; }
Frontend *Model::frontend() { return frontend_ ? frontend_ : &nullFrontend_; }

bool Model::isUiThread() const { return !uiThreadSet_ || std::this_thread::get_id() == uiThread_; }
void Model::markUiThread() {
    uiThread_ = std::this_thread::get_id();
    uiThreadSet_ = true;
}

Panel *Model::panel(int handle) {
    auto it = panels_.find(handle);
    return it == panels_.end() ? nullptr : it->second.get();
}

Control *Model::control(int panelHandle, int controlId) {
    Panel *p = panel(panelHandle);
    return p ? p->control(controlId) : nullptr;
}

int Model::addPanel(std::unique_ptr<Panel> panel) {
    std::lock_guard lock(mutex_);
    const int handle = nextHandle_++;
    panel->handle = handle;
    const double now = vcc::clock::nowMs();
    for (auto &c : panel->controls)
        if (c.style == CTRL_TIMER) c.nextTickMs = now + c.interval * 1000.0;
    panels_[handle] = std::move(panel);
    order_.push_back(handle);
    indexTimersLocked();
    ++revision_;
    return handle;
}

void Model::indexTimersLocked() {
    timers_.clear();
    for (int handle : order_)
        for (const auto &c : panels_[handle]->controls)
            if (c.style == CTRL_TIMER) timers_.emplace_back(handle, c.id);
}

void Model::removePanel(int handle) {
    std::lock_guard lock(mutex_);
    panels_.erase(handle);
    order_.erase(std::remove(order_.begin(), order_.end(), handle), order_.end());
    indexTimersLocked();
    // A discarded panel's queued events have nobody left to receive them.
    queue_.erase(std::remove_if(queue_.begin(), queue_.end(), [&](const Event &e) { return e.panel == handle; }),
                 queue_.end());
    ++revision_;
}

std::vector<int> Model::panelHandles() {
    std::lock_guard lock(mutex_);
    return order_;
}

int Model::findPanel(const std::string &name) {
    std::lock_guard lock(mutex_);
    // The latest loaded panel of that name is the one in use (a tab sheet replaces the original).
    for (auto it = order_.rbegin(); it != order_.rend(); ++it)
        if (panels_[*it]->name == name) return *it;
    return 0;
}

int Model::findControl(int panelHandle, const std::string &name) {
    std::lock_guard lock(mutex_);
    Panel *p = panel(panelHandle);
    if (!p) return 0;
    for (const auto &c : p->controls)
        if (c.name == name) return c.id;
    return 0;
}

namespace {
bool shownLocked(Model &m, const Panel *p) {
    while (p) {
        if (!p->visible) return false;
        if (!p->parentPanel) return true;
        p = m.panel(p->parentPanel);
    }
    return false;
}
}  // namespace

std::pair<int, int> Model::findByCallback(const std::string &callbackName) {
    std::lock_guard lock(mutex_);
    std::pair<int, int> fallback{0, 0};
    for (auto it = order_.rbegin(); it != order_.rend(); ++it) {
        Panel *p = panels_[*it].get();
        for (const auto &c : p->controls) {
            if (c.callbackName != callbackName) continue;
            if (shownLocked(*this, p)) return {p->handle, c.id};
            if (!fallback.first) fallback = {p->handle, c.id};
        }
    }
    return fallback;
}

void Model::post(const Event &event) {
    std::lock_guard lock(mutex_);
    queue_.push_back(event);
}

int Model::call(int panelHandle, int controlId, int event, int data1, int data2) {
    CtrlCallbackPtr fn = nullptr;
    void *data = nullptr;
    {
        std::lock_guard lock(mutex_);
        Panel *p = panel(panelHandle);
        if (!p) return -1;
        if (controlId == 0) {
            fn = p->callback;
        } else if (Control *c = p->control(controlId)) {
            fn = c->callback;
            data = c->callbackData;
        }
    }
    return fn ? fn(panelHandle, controlId, event, data, data1, data2) : 0;
}

void Model::dispatchPending() {
    if (!isUiThread()) return;
    servePopups();
    for (;;) {
        Event e;
        CtrlCallbackPtr fn = nullptr;
        void *data = nullptr;
        {
            std::lock_guard lock(mutex_);
            if (queue_.empty()) break;
            e = queue_.front();
            queue_.pop_front();
            Panel *p = panel(e.panel);
            if (!p || !shownLocked(*this, p)) continue;
            if (e.control == 0) {
                fn = p->callback;
            } else {
                Control *c = p->control(e.control);
                // A user cannot reach a dimmed or hidden control: its events go nowhere.
                if (!c || c->dimmed || !c->visible) continue;
                fn = c->callback;
                data = c->callbackData;
            }
        }
        if (fn) fn(e.panel, e.control, e.event, data, e.data1, e.data2);
    }
    fireTimers();
}

void Model::fireTimers() {
    struct Due {
        int panel, control;
        CtrlCallbackPtr fn;
        void *data;
    };
    std::vector<Due> due;
    {
        std::lock_guard lock(mutex_);
        const double now = vcc::clock::nowMs();
        for (const auto &[handle, id] : timers_) {
            Control &c = *panels_[handle]->control(id);
            if (!c.enabled || !c.callback || now < c.nextTickMs) continue;
            const double period = std::max(c.interval * 1000.0, 1.0);
            c.nextTickMs += period;
            // After a long callback, resume the rhythm instead of firing a burst of stale ticks.
            if (c.nextTickMs <= now) c.nextTickMs = now + period;
            due.push_back({handle, c.id, c.callback, c.callbackData});
        }
    }
    for (const auto &d : due) d.fn(d.panel, d.control, EVENT_TIMER_TICK, d.data, 0, 0);
}

double Model::msToNextTick() {
    std::lock_guard lock(mutex_);
    const double now = vcc::clock::nowMs();
    double next = 50.0;
    for (const auto &[handle, id] : timers_) {
        const Control &c = *panels_[handle]->control(id);
        if (c.enabled && c.callback) next = std::min(next, c.nextTickMs - now);
    }
    return std::max(next, 0.0);
}

FileAnswer Model::fileSelect(const FileRequest &request) {
    if (isUiThread()) return frontend()->fileSelect(request);
    PendingPopup popup;
    popup.isFile = true;
    popup.request = request;
    std::unique_lock lock(mutex_);
    popups_.push_back(&popup);
    popupDone_.wait(lock, [&] { return popup.done; });
    return popup.answer;
}

void Model::message(const std::string &title, const std::string &text) {
    if (isUiThread()) {
        frontend()->message(title, text);
        return;
    }
    PendingPopup popup;
    popup.title = title;
    popup.text = text;
    std::unique_lock lock(mutex_);
    popups_.push_back(&popup);
    popupDone_.wait(lock, [&] { return popup.done; });
}

void Model::servePopups() {
    for (;;) {
        PendingPopup *popup = nullptr;
        {
            std::lock_guard lock(mutex_);
            if (popups_.empty()) return;
            popup = popups_.front();
            popups_.pop_front();
        }
        if (popup->isFile)
            popup->answer = frontend()->fileSelect(popup->request);
        else
            frontend()->message(popup->title, popup->text);
        std::lock_guard lock(mutex_);
        popup->done = true;
        popupDone_.notify_all();
    }
}

}  // namespace vcc::ui
