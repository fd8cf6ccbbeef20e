#include "ui/CallbackRegistry.h"

#include <map>
#include <mutex>

namespace vcc::ui {
namespace {
// Function-local so registrations from static initialisers in any order find it built.
std::map<std::string, CtrlCallbackPtr> &registry() {
    static std::map<std::string, CtrlCallbackPtr> map;
    return map;
}
std::mutex &registryMutex() {
    static std::mutex m;
    return m;
}
}  // namespace

bool registerCallback(const char *name, CtrlCallbackPtr function) {
    std::lock_guard lock(registryMutex());
    registry()[name] = function;
    return true;
}

CtrlCallbackPtr findCallback(const std::string &name) {
    std::lock_guard lock(registryMutex());
    auto it = registry().find(name);
    return it == registry().end() ? nullptr : it->second;
}

std::vector<std::string> registeredCallbacks() {
    std::lock_guard lock(registryMutex());
    std::vector<std::string> names;
    for (const auto &entry : registry()) names.push_back(entry.first);
    return names;
}
}  // namespace vcc::ui
