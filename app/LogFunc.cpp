// Console and log. Every console text goes to the console text box and, while a log is open,
// becomes one time-stamped line of the log file. Log and message files are written in code
// page 950 (Big5), the tool's historical file encoding; the GUI shows UTF-8.
#include "app/LogFunc.h"

#include <fcntl.h>
#include <iconv.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "app/BusyState.h"
#include "ui/CallbackRegistry.h"
#include "ui/UserInterface.h"

char gLogPath[1024];
char gMessagePath[1024];

namespace {

constexpr size_t kTextLimit = 256;  // a console text or a log line: 255 characters and the terminator
// Texts are formatted with room to spare, so that cutText sees what lies past the limit and
// never leaves the first bytes of a character that does not fit.
constexpr size_t kFormatRoom = 2 * kTextLimit;

int gConsolePanel = 0;
int gConsoleControl = 0;
int gLogFd = -1;  // the open log file; -1 when no log is open
void (*gListener)(const char *) = nullptr;

// One lock keeps each console append and its log line whole and in the same order for every
// thread that prints.
std::mutex &consoleMutex() {
    static std::mutex m;
    return m;
}

// Cuts text at limit - 1 bytes without splitting a UTF-8 character.
void cutText(char *text, size_t limit) {
    size_t n = std::strlen(text);
    if (n < limit) return;
    n = limit - 1;
    while (n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) --n;
    text[n] = '\0';
}

bool isAscii(const char *text, size_t length) {
    for (size_t i = 0; i < length; ++i)
        if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
    return true;
}

// UTF-8 to code page 950. Characters Big5 lacks become '?', so a line is never lost.
std::string toCp950(const char *text, size_t length) {
    if (isAscii(text, length)) return std::string(text, length);
    iconv_t cd = iconv_open("CP950", "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1)) return std::string(text, length);
    std::string out(length * 2 + 4, '\0');
    char *in = const_cast<char *>(text);
    size_t inLeft = length;
    char *dst = out.data();
    size_t outLeft = out.size();
    while (inLeft > 0) {
        if (iconv(cd, &in, &inLeft, &dst, &outLeft) != static_cast<size_t>(-1)) break;
        if (errno == E2BIG) break;
        // An unconvertible or broken sequence: skip one byte, mark it.
        ++in;
        --inLeft;
        while (inLeft > 0 && (static_cast<unsigned char>(*in) & 0xC0) == 0x80) {
            ++in;
            --inLeft;
        }
        if (outLeft > 0) {
            *dst++ = '?';
            --outLeft;
        }
    }
    iconv_close(cd);
    out.resize(out.size() - outLeft);
    return out;
}

bool writeAll(int fd, const char *bytes, size_t length) {
    size_t done = 0;
    while (done < length) {
        const ssize_t n = ::write(fd, bytes + done, length - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

bool writeAll(int fd, const std::string &bytes) { return writeAll(fd, bytes.data(), bytes.size()); }

// The directory a file dialog starts in: a remembered path names a folder or a file in it.
std::string startFolder(const char *path) {
    int size = 0;
    if (FileExists(path, &size) && size < 0) return path;  // a folder
    const char *slash = std::strrchr(path, '/');
    if (!slash) return path;
    return std::string(path, slash == path ? 1 : static_cast<size_t>(slash - path));
}

void rememberPath(char (&target)[1024], const char *path) {
    std::snprintf(target, sizeof target, "%s", path);
}

}  // namespace

namespace {
int writeLogLineLocked(const char *text);
}

void SetConsoleTarget(int panel, int control) {
    std::lock_guard lock(consoleMutex());
    gConsolePanel = panel;
    gConsoleControl = control;
}

void SetConsoleListener(void (*listener)(const char *text)) {
    std::lock_guard lock(consoleMutex());
    gListener = listener;
}

void ConsolePrintf(const char *format, ...) {
    if (!gConsolePanel || !gConsoleControl) return;
    char text[kFormatRoom];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    cutText(text, kTextLimit);
    std::lock_guard lock(consoleMutex());
    SetCtrlVal(gConsolePanel, gConsoleControl, text);
    if (gListener) gListener(text);
    writeLogLineLocked(text);
}

int LogWriteLine(const char *text) {
    std::lock_guard lock(consoleMutex());
    return writeLogLineLocked(text);
}

namespace {
// The log line of one console text; the console lock is held so lines of two threads never mix.
int writeLogLineLocked(const char *text) {
    if (gLogFd < 0) return 0;
    int hours = 0, minutes = 0, seconds = 0;
    CVI_GetSystemTime(&hours, &minutes, &seconds);
    char line[kFormatRoom];
    std::snprintf(line, sizeof line, "[%02d:%02d:%02d] %s", hours, minutes, seconds, text);
    cutText(line, kTextLimit);
    // The text's last character (usually its line feed) gives way to the line end.
    size_t length = std::strlen(line);
    if (length > 0) --length;
    while (length > 0 && (static_cast<unsigned char>(line[length]) & 0xC0) == 0x80) --length;
    line[length++] = '\n';
    // One write per line: once it returns the line is the kernel's, whatever happens to the tool.
    const bool written = isAscii(line, length) ? writeAll(gLogFd, line, length)
                                               : writeAll(gLogFd, toCp950(line, length));
    return written ? static_cast<int>(length) : -1;
}
}  // namespace

int StartStopLog(int start) {
    int year = 0, month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
    GetSystemDate(&month, &day, &year);
    CVI_GetSystemTime(&hours, &minutes, &seconds);
    char header[kTextLimit];
    if (!start) {
        if (gLogFd >= 0) {
            std::snprintf(header, sizeof header,
                          "# Log : Video Camera Control AP - STOP [%04d-%02d-%02d, %02d:%02d:%02d]\n\n", year,
                          month, day, hours, minutes, seconds);
            std::lock_guard lock(consoleMutex());
            writeAll(gLogFd, header);
            ::close(gLogFd);
            gLogFd = -1;
        }
        return 1;
    }
    char proposed[128];
    std::snprintf(proposed, sizeof proposed, "Log_%04d-%02d-%02d_%02d-%02d-%02d.txt", year, month, day, hours,
                  minutes, seconds);
    char path[1024] = "";
    const int chosen = FileSelectPopup(startFolder(gLogPath).c_str(), proposed, "*.txt", "File Name to Save",
                                       VAL_SAVE_BUTTON, 0, 1, 1, 0, path);
    if (chosen == VAL_NO_FILE_SELECTED) return 0;
    if (chosen == VAL_EXISTING_FILE_SELECTED) ::unlink(path);
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        ConsolePrintf("> - PATH = %s\n", path);
        ConsolePrintf("> - fail (file open)\n\n");
        return 0;
    }
    rememberPath(gLogPath, path);
    std::snprintf(header, sizeof header,
                  "# Log : Video Camera Control AP - START [%04d-%02d-%02d, %02d:%02d:%02d]\n\n", year, month,
                  day, hours, minutes, seconds);
    writeAll(fd, header);
    {
        std::lock_guard lock(consoleMutex());
        if (gLogFd >= 0) ::close(gLogFd);
        gLogFd = fd;
    }
    return 1;
}

int SaveConsoleMessages() {
    int year = 0, month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
    GetSystemDate(&month, &day, &year);
    CVI_GetSystemTime(&hours, &minutes, &seconds);
    char proposed[128];
    std::snprintf(proposed, sizeof proposed, "Message_%04d-%02d-%02d_%02d-%02d-%02d.txt", year, month, day, hours,
                  minutes, seconds);
    char path[1024] = "";
    const int chosen = FileSelectPopup(startFolder(gMessagePath).c_str(), proposed, "*.txt", "File Name to Save",
                                       VAL_SAVE_BUTTON, 0, 1, 1, 0, path);
    if (chosen == VAL_NO_FILE_SELECTED) return 0;
    int lines = 0;
    GetNumTextBoxLines(gConsolePanel, gConsoleControl, &lines);
    // Written beside the target and renamed over it, so a failed save never leaves half a file.
    const std::string temporary = std::string(path) + ".part";
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        ConsolePrintf("> - PATH = %s \n", path);
        ConsolePrintf("> - fail (file open)\n\n");
        return 0;
    }
    char header[kTextLimit];
    std::snprintf(header, sizeof header, "# Message : Video Camera Control AP[%04d-%02d-%02d, %02d:%02d:%02d]\n",
                  year, month, day, hours, minutes, seconds);
    std::string content = header;
    content += " - START\n\n";
    char line[kFormatRoom];
    for (int i = 0; i < lines; ++i) {
        line[0] = '\0';
        GetTextBoxLine(gConsolePanel, gConsoleControl, i, line);
        cutText(line, kTextLimit);
        content += toCp950(line, std::strlen(line));
        content += '\n';
    }
    content += " - STOP\n\n";
    const bool written = writeAll(fd, content);
    ::close(fd);
    if (!written || std::rename(temporary.c_str(), path) != 0) {
        ::unlink(temporary.c_str());
        ConsolePrintf("> - PATH = %s \n", path);
        ConsolePrintf("> - fail (file write)\n\n");
        return 0;
    }
    rememberPath(gMessagePath, path);
    return 1;
}

int Log_Callback(int panel, int control, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    int on = 0;
    GetCtrlVal(panel, control, &on);
    if (on) {
        if (StartStopLog(1) == 1) {
            ConsolePrintf(">LOG : RUNNING\n");
            ConsolePrintf("> - PATH = %s\n\n", gLogPath);
        } else {
            SetCtrlVal(panel, control, 0);
        }
    } else {
        ConsolePrintf(">LOG : STOP\n\n");
        StartStopLog(0);
    }
    return 0;
}
VCC_REGISTER_CALLBACK(Log_Callback);

int StatusMsgClear_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    std::lock_guard lock(consoleMutex());
    ResetTextBox(gConsolePanel, gConsoleControl, "");
    return 0;
}
VCC_REGISTER_CALLBACK(StatusMsgClear_Callback);

int StatusMsgSave_Callback(int, int, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    if (SaveConsoleMessages() == 1) {
        ConsolePrintf(">MESSAGE : SAVE\n");
        ConsolePrintf("> - PATH = %s \n\n", gMessagePath);
    }
    return 0;
}
VCC_REGISTER_CALLBACK(StatusMsgSave_Callback);

int MsgEn_Callback(int panel, int control, int event, void *, int, int) {
    if (event != EVENT_COMMIT) return 0;
    SetCommandBusy(panel, control, 1);
    int on = 0;
    GetCtrlVal(panel, control, &on);
    SetPanelAttribute(gPanels.main, ATTR_HEIGHT, on ? 460 : 310);
    SetPanelAttribute(gPanels.main, ATTR_WIDTH, 760);
    SetCommandBusy(panel, control, 0);
    return 0;
}
VCC_REGISTER_CALLBACK(MsgEn_Callback);
