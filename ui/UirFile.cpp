#include "ui/UirFile.h"

#include <yaml-cpp/yaml.h>

#include <cctype>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>

namespace vcc::ui {
namespace {

const std::map<std::string, int> kStyles = {
    {"numeric", CTRL_NUMERIC}, {"ring", CTRL_RING},       {"string", CTRL_STRING},
    {"textbox", CTRL_TEXT_BOX}, {"led", CTRL_LED},        {"switch", CTRL_SWITCH},
    {"checkbox", CTRL_CHECK_BOX}, {"button", CTRL_COMMAND_BUTTON}, {"canvas", CTRL_CANVAS},
    {"timer", CTRL_TIMER},     {"label", CTRL_TEXT_MSG},  {"progress", CTRL_PROGRESS},
    {"frame", CTRL_FRAME},
};

// Sizes a control gets when the resource leaves them out.
void defaultSize(Control &c) {
    struct Size { int w, h; };
    static const std::map<int, Size> sizes = {
        {CTRL_NUMERIC, {80, 22}}, {CTRL_RING, {110, 22}},  {CTRL_STRING, {140, 22}},
        {CTRL_TEXT_BOX, {400, 120}}, {CTRL_LED, {18, 18}}, {CTRL_SWITCH, {60, 22}},
        {CTRL_CHECK_BOX, {90, 20}}, {CTRL_COMMAND_BUTTON, {90, 24}}, {CTRL_CANVAS, {200, 150}},
        {CTRL_TIMER, {0, 0}},      {CTRL_TEXT_MSG, {120, 18}}, {CTRL_PROGRESS, {200, 18}},
        {CTRL_FRAME, {200, 100}},
    };
    auto it = sizes.find(c.style);
    if (c.width <= 0) c.width = it->second.w;
    if (c.height <= 0) c.height = it->second.h;
}

bool isUpperSnake(const std::string &name) {
    if (name.empty() || !std::isupper(static_cast<unsigned char>(name[0]))) return false;
    for (char ch : name)
        if (!(std::isupper(static_cast<unsigned char>(ch)) || std::isdigit(static_cast<unsigned char>(ch)) ||
              ch == '_'))
            return false;
    return true;
}

int parseColor(const std::string &text) {
    if (text.size() == 7 && text[0] == '#') return static_cast<int>(std::stoul(text.substr(1), nullptr, 16));
    throw std::runtime_error("colour must be #RRGGBB: " + text);
}

uint64_t fnv1a(uint64_t hash, const std::string &text) {
    for (unsigned char ch : text) {
        hash ^= ch;
        hash *= 1099511628211ULL;
    }
    return hash;
}

Control parseControl(const YAML::Node &node, const std::string &where) {
    Control c;
    c.name = node["name"].as<std::string>("");
    if (!isUpperSnake(c.name)) throw std::runtime_error(where + ": control name '" + c.name + "' is not UPPER_SNAKE");
    const std::string type = node["type"].as<std::string>("");
    auto style = kStyles.find(type);
    if (style == kStyles.end()) throw std::runtime_error(where + "." + c.name + ": unknown control type '" + type + "'");
    c.style = style->second;
    c.label = node["label"].as<std::string>("");
    c.x = node["x"].as<int>(0);
    c.y = node["y"].as<int>(0);
    c.width = node["width"].as<int>(0);
    c.height = node["height"].as<int>(0);
    defaultSize(c);
    c.callbackName = node["callback"].as<std::string>("");
    c.isDouble = node["double"].as<bool>(false);
    if (c.style == CTRL_SWITCH || c.style == CTRL_LED || c.style == CTRL_CHECK_BOX) {
        c.minValue = 0;
        c.maxValue = 1;
    }
    if (node["min"]) c.minValue = node["min"].as<double>();
    if (node["max"]) c.maxValue = node["max"].as<double>();
    if (node["default"]) c.defaultValue = node["default"].as<double>();
    if (c.style == CTRL_PROGRESS && !node["max"]) {
        c.minValue = 0;
        c.maxValue = 100;
    }
    const std::string format = node["format"].as<std::string>("dec");
    if (format != "dec" && format != "hex") throw std::runtime_error(where + "." + c.name + ": format must be dec or hex");
    c.format = format == "hex" ? VAL_HEX_FORMAT : VAL_DECIMAL_FORMAT;
    if (const YAML::Node items = node["items"]) {
        for (const auto &item : items) {
            if (!item.IsSequence() || item.size() != 2)
                throw std::runtime_error(where + "." + c.name + ": a ring item is [label, value]");
            c.items.push_back({item[0].as<std::string>(), item[1].as<int>()});
        }
        if (!c.items.empty()) c.ringIndex = 0;
    }
    if (const YAML::Node value = node["value"]) {
        if (c.style == CTRL_STRING || c.style == CTRL_TEXT_MSG || c.style == CTRL_FRAME) {
            c.textValue = value.as<std::string>();
        } else if (c.style == CTRL_TEXT_BOX) {
            c.textBox.append(value.as<std::string>());
        } else if (c.isDouble) {
            c.doubleValue = value.as<double>();
        } else {
            c.intValue = value.as<long long>();
            if (c.style == CTRL_RING)
                for (size_t i = 0; i < c.items.size(); ++i)
                    if (c.items[i].value == c.intValue) c.ringIndex = static_cast<int>(i);
        }
    } else if (c.style == CTRL_RING && !c.items.empty()) {
        c.intValue = c.items[0].value;
    }
    c.onText = node["on_text"].as<std::string>("");
    c.offText = node["off_text"].as<std::string>("");
    c.dimmed = node["dimmed"].as<bool>(false);
    c.visible = node["visible"].as<bool>(true);
    c.interval = node["interval"].as<double>(0.1);
    c.maxLength = node["max_length"].as<int>(255);
    c.keyDriven = node["keys"].as<bool>(false);
    if (node["color"]) c.onColor = parseColor(node["color"].as<std::string>());
    if (c.style == CTRL_TIMER) c.visible = false;
    return c;
}

}  // namespace

std::shared_ptr<const UirFile> parseUirFile(const std::string &path, std::string &error) {
    auto file = std::make_shared<UirFile>();
    try {
        if (!std::filesystem::is_regular_file(path)) {
            error = path + ": no such resource file";
            return nullptr;
        }
        const YAML::Node root = YAML::LoadFile(path);
        const YAML::Node panels = root["panels"];
        if (!panels || !panels.IsSequence() || panels.size() == 0) {
            error = path + ": no 'panels' list";
            return nullptr;
        }
        uint64_t signature = 14695981039346656037ULL;
        std::set<std::string> panelNames;
        for (const auto &pnode : panels) {
            Panel p;
            p.name = pnode["name"].as<std::string>("");
            if (!isUpperSnake(p.name)) throw std::runtime_error("panel name '" + p.name + "' is not UPPER_SNAKE");
            if (!panelNames.insert(p.name).second) throw std::runtime_error("duplicate panel " + p.name);
            p.resourceId = static_cast<int>(file->panels.size()) + 1;
            p.title = pnode["title"].as<std::string>("");
            p.width = pnode["width"].as<int>(400);
            p.height = pnode["height"].as<int>(300);
            p.top = pnode["top"].as<int>(40);
            p.left = pnode["left"].as<int>(40);
            p.callbackName = pnode["callback"].as<std::string>("");
            if (pnode["color"]) p.backColor = parseColor(pnode["color"].as<std::string>());
            signature = fnv1a(signature, p.name + ":");
            std::set<std::string> names;
            if (const YAML::Node controls = pnode["controls"]) {
                for (const auto &cnode : controls) {
                    Control c = parseControl(cnode, p.name);
                    if (!names.insert(c.name).second)
                        throw std::runtime_error(p.name + ": duplicate control name " + c.name);
                    c.id = static_cast<int>(p.controls.size()) + 1;
                    signature = fnv1a(signature, c.name + ",");
                    p.controls.push_back(std::move(c));
                }
            }
            file->panels.push_back(std::move(p));
        }
        file->signature = signature;
    } catch (const YAML::Exception &e) {
        error = path + ": " + e.what();
        return nullptr;
    } catch (const std::exception &e) {
        error = path + ": " + e.what();
        return nullptr;
    }
    return file;
}

namespace {
struct Cache {
    std::mutex mutex;
    std::map<std::string, std::pair<std::filesystem::file_time_type, std::shared_ptr<const UirFile>>> files;
    uint64_t expected = 0;
};
Cache &cache() {
    static Cache c;
    return c;
}
}  // namespace

void expectUirSignature(uint64_t signature) {
    std::lock_guard lock(cache().mutex);
    cache().expected = signature;
}

std::shared_ptr<const UirFile> loadUirFile(const std::string &path, std::string &error) {
    auto &c = cache();
    std::error_code ec;
    const auto stamp = std::filesystem::last_write_time(path, ec);
    {
        std::lock_guard lock(c.mutex);
        auto it = c.files.find(path);
        if (!ec && it != c.files.end() && it->second.first == stamp) return it->second.second;
    }
    auto file = parseUirFile(path, error);
    if (!file) return nullptr;
    std::lock_guard lock(c.mutex);
    if (c.expected != 0 && file->signature != c.expected) {
        error = path + ": its panels and controls differ from those this program was built with";
        return nullptr;
    }
    c.files[path] = {stamp, file};
    return file;
}

std::string controlNameForCallback(const std::string &callbackName) {
    std::string base = callbackName;
    const std::string suffix = "_Callback";
    if (base.size() > suffix.size() && base.compare(base.size() - suffix.size(), suffix.size(), suffix) == 0)
        base.resize(base.size() - suffix.size());
    if (base.rfind("PeT77K_", 0) == 0) base = base.substr(7);
    std::string out;
    for (size_t i = 0; i < base.size(); ++i) {
        const char ch = base[i];
        const bool upper = std::isupper(static_cast<unsigned char>(ch));
        if (upper && i > 0) {
            const char prev = base[i - 1];
            const bool prevLowerOrDigit = std::islower(static_cast<unsigned char>(prev)) ||
                                          std::isdigit(static_cast<unsigned char>(prev));
            const bool acronymEnd = std::isupper(static_cast<unsigned char>(prev)) && i + 1 < base.size() &&
                                    std::islower(static_cast<unsigned char>(base[i + 1]));
            if ((prevLowerOrDigit || acronymEnd) && out.back() != '_') out += '_';
        }
        out += ch == '_' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    }
    return out;
}

}  // namespace vcc::ui
