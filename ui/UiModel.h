// The toolkit-independent model behind UserInterface.h: panels, controls, the event queue,
// timers, popups and the front-end that mirrors it all.
//
// Thread rules: one mutex guards the model; every read and write below takes it, so any
// thread may call them. Callbacks are never called with it held. Event dispatch, timer ticks
// and popups run on the user-interface thread only (the thread that called InitCVIRTE).
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <string>
#include <vector>

#include "ui/UserInterface.h"

namespace vcc::ui {

struct RingItem {
    std::string label;
    int value = 0;
};

// A text box's content: one growing text plus the start offset of every line, so a console
// of a million lines reads any screenful without copying.
class TextBuffer {
public:
    void append(std::string_view text);
    void clear();
    // Lines as a user sees them: a final line feed does not open an empty line of its own.
    size_t lineCount() const;
    std::string_view line(size_t index) const;
    const std::string &text() const { return text_; }
    // Bumped on every change; a view compares it to know whether to repaint.
    uint64_t revision() const { return revision_; }

private:
    std::string text_;
    std::vector<size_t> lineStarts_{0};
    uint64_t revision_ = 0;
};

// A picture shown on a canvas: 8-bit RGB, rows top to bottom. Shared, never changed once
// made, so a view can hold one while the tool draws the next.
struct CanvasImage {
    int width = 0, height = 0;
    std::vector<uint8_t> rgb;
};

struct Control {
    int id = 0;
    std::string name;
    int style = CTRL_NUMERIC;
    std::string label;
    int x = 0, y = 0, width = 0, height = 0;
    bool dimmed = false;
    bool visible = true;
    // The value: numbers in intValue (or doubleValue when isDouble), texts in textValue.
    long long intValue = 0;
    double doubleValue = 0.0;
    bool isDouble = false;
    std::string textValue;
    double minValue = -2147483648.0, maxValue = 2147483647.0, defaultValue = 0.0;
    int format = VAL_DECIMAL_FORMAT;
    std::vector<RingItem> items;
    int ringIndex = -1;
    TextBuffer textBox;
    std::string callbackName;
    CtrlCallbackPtr callback = nullptr;
    void *callbackData = nullptr;
    int textColor = VAL_BLACK, backColor = VAL_WHITE, onColor = VAL_GREEN, offColor = 0x404040;
    bool hasTextColor = false, hasBackColor = false;
    std::string onText, offText;
    double interval = 0.1;  // timers, seconds
    bool enabled = true;    // timers
    double nextTickMs = 0;
    int maxLength = 255;
    // Key presses go to the callback, which alone decides the text (a masked entry).
    bool keyDriven = false;
    // Tab control made from a canvas: its rows of sheet panels.
    std::vector<std::vector<int>> tabRows;
    std::map<int, std::string> tabLabels;
    std::map<int, int> tabColors;
    int activeSheet = 0;
    // Canvas: the picture drawn last (none: the canvas shows its background).
    std::shared_ptr<const CanvasImage> image;
};

struct Panel {
    int handle = 0;
    int resourceId = 0;
    std::string name;
    std::string title;
    int width = 400, height = 300, top = 0, left = 0;
    bool visible = false;
    int backColor = 0xC0C0C0;
    std::string callbackName;
    PanelCallbackPtr callback = nullptr;
    int parentPanel = 0;     // a tab sheet's main panel
    int parentControl = 0;   // and its tab control
    int activeControl = 0;
    std::vector<Control> controls;  // controls[i].id == i + 1

    Control *control(int id) {
        return id >= 1 && id <= static_cast<int>(controls.size()) ? &controls[id - 1] : nullptr;
    }
};

struct Event {
    int panel = 0;
    int control = 0;  // 0 for a panel event
    int event = EVENT_NONE;
    int data1 = 0;
    int data2 = 0;
};

struct FileRequest {
    std::string directory, proposedName, filter, title;
    bool restrictExtension = false, allowCancel = true;
};
struct FileAnswer {
    int result = VAL_NO_FILE_SELECTED;
    std::string path;
};

// What a front-end does for the model. Every call comes on the user-interface thread.
class Frontend {
public:
    virtual ~Frontend() = default;
    // Gather user input (posting it with Model::post) and pending window-system work.
    // With wait, block until some input arrives or timeoutMs of tool time has passed.
    virtual void pump(bool wait, double timeoutMs) = 0;
    // Bring the view up to the model now.
    virtual void draw() = 0;
    virtual FileAnswer fileSelect(const FileRequest &request) = 0;
    virtual void message(const std::string &title, const std::string &text) = 0;
    // The loop is ending (QuitUserInterface).
    virtual void quit() {}
};

// A front-end that shows nothing and answers every popup with cancel/OK: the default before
// a real one is installed, and enough for unit tests of the model.
class NullFrontend : public Frontend {
public:
    void pump(bool wait, double timeoutMs) override;
    void draw() override {}
    FileAnswer fileSelect(const FileRequest &) override { return {}; }
    void message(const std::string &, const std::string &) override {}
};

class Model {
public:
    static Model &instance();

    // Tests start from a fresh model; discards every panel.
    void reset();

    void setFrontend(Frontend *frontend);
    Frontend *frontend();

    // Runs fn with the model locked. fn must not call back into the UserInterface API.
    template <typename Fn> auto locked(Fn &&fn) {
        std::lock_guard lock(mutex_);
        return fn(*this);
    }

    // Panels by handle (locked access only).
    Panel *panel(int handle);
    Control *control(int panel, int control);
    const std::map<int, std::unique_ptr<Panel>> &panels() const { return panels_; }

    // Panel handles in load order, for front-ends and scripts.
    std::vector<int> panelHandles();
    // A panel by its Main.uir name: the one in use now (a tab sheet replaces the panel it stands for).
    int findPanel(const std::string &name);
    int findControl(int panel, const std::string &name);
    // A control by its callback name: the first visible panel's match wins, then any.
    std::pair<int, int> findByCallback(const std::string &callbackName);

    // Queue an event as a user made it. It is dispatched by the next event processing on the
    // user-interface thread, and dropped then if its control is dimmed or hidden.
    void post(const Event &event);
    // Runs every queued event and due timer tick (user-interface thread; nests).
    void dispatchPending();
    // Call a callback directly, whatever the control's state (the tool's own calls).
    int call(int panel, int control, int event, int data1 = 0, int data2 = 0);
    // Tool-time milliseconds until the next timer tick is due (at most 50).
    double msToNextTick();

    // Popups; from a worker thread they wait for the user-interface thread.
    FileAnswer fileSelect(const FileRequest &request);
    void message(const std::string &title, const std::string &text);

    bool isUiThread() const;
    void markUiThread();

    // Change notification: a counter bumped by every change a view would show.
    uint64_t revision() const { return revision_.load(); }
    void touch() { ++revision_; }

    // Quit state of RunUserInterface.
    bool quitRequested = false;
    int quitCode = 0;
    int runDepth = 0;

    // Handles of panels created internally (LoadPanel).
    int addPanel(std::unique_ptr<Panel> panel);
    void removePanel(int handle);

private:
    Model() = default;
    void servePopups();
    void fireTimers();
    void indexTimersLocked();

    std::mutex mutex_;
    std::map<int, std::unique_ptr<Panel>> panels_;
    std::vector<int> order_;
    // Every timer control, so event processing never scans all controls for due ticks.
    std::vector<std::pair<int, int>> timers_;
    int nextHandle_ = 1;
    std::deque<Event> queue_;
    std::atomic<uint64_t> revision_{0};
    Frontend *frontend_ = nullptr;
    NullFrontend nullFrontend_;
    std::thread::id uiThread_{};
    bool uiThreadSet_ = false;

    // Popups asked for by workers, served on the user-interface thread.
    struct PendingPopup {
        bool isFile = false;
        FileRequest request;
        std::string title, text;
        FileAnswer answer;
        bool done = false;
    };
    std::deque<PendingPopup *> popups_;
    std::condition_variable popupDone_;
};

}  // namespace vcc::ui
