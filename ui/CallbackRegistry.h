// Callback names of Main.uir are bound to functions through this registry. Each callback
// registers itself where it is defined, so adding a feature never touches a central list.
#pragma once

#include <string>
#include <vector>

#include "ui/UserInterface.h"

namespace vcc::ui {
bool registerCallback(const char *name, CtrlCallbackPtr function);
CtrlCallbackPtr findCallback(const std::string &name);
std::vector<std::string> registeredCallbacks();
}  // namespace vcc::ui

#define VCC_REGISTER_CALLBACK(fn) \
    [[maybe_unused]] static const bool vccRegistered_##fn = ::vcc::ui::registerCallback(#fn, fn)
