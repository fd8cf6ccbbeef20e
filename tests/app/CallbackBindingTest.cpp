// Every callback Main.uir names must have a function behind it. The names still waiting for
// theirs are listed in unbound-callbacks.txt; the list may only shrink: a new unbound name
// fails, and so does a listed name that has meanwhile been bound (strike it from the list).
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "ui/CallbackRegistry.h"
#include "ui/UirFile.h"

namespace {

std::set<std::string> listedUnbound() {
    std::ifstream in(std::string(VCC_TEST_SOURCE_DIR) + "/app/unbound-callbacks.txt");
    std::set<std::string> names;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#') names.insert(line);
    return names;
}

TEST(CallbackBinding, EveryCallbackInTheResourceIsBoundOrListedAsPending) {
    std::string error;
    auto file = vcc::ui::parseUirFile(std::string(VCC_TEST_SOURCE_DIR) + "/../app/Main.uir", error);
    ASSERT_NE(file, nullptr) << error;
    std::set<std::string> unbound;
    for (const auto &panel : file->panels) {
        if (!panel.callbackName.empty() && !vcc::ui::findCallback(panel.callbackName))
            unbound.insert(panel.callbackName);
        for (const auto &control : panel.controls)
            if (!control.callbackName.empty() && !vcc::ui::findCallback(control.callbackName))
                unbound.insert(control.callbackName);
    }
    const std::set<std::string> listed = listedUnbound();
    for (const auto &name : unbound) EXPECT_TRUE(listed.count(name)) << name << " is unbound and not listed";
    for (const auto &name : listed) EXPECT_TRUE(unbound.count(name)) << name << " is bound now: strike it from the list";
}

}  // namespace
