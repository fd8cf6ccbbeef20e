// Build step: checks Main.uir and writes the header of panel and control ids the tool's code
// uses, so a control the code names but the resource lacks fails the build, not a user.
#include <cstdio>
#include <fstream>
#include <iostream>

#include "ui/UirFile.h"

int main(int argc, char **argv) {
    if (argc != 3) {
        std::cerr << "usage: uirgen Main.uir MainUir.h\n";
        return 2;
    }
    std::string error;
    auto file = vcc::ui::parseUirFile(argv[1], error);
    if (!file) {
        std::cerr << error << "\n";
        return 1;
    }
    std::string out;
    out += "// Generated from Main.uir by uirgen; do not edit.\n#pragma once\n#include <cstdint>\n\n";
    char line[512];
    std::snprintf(line, sizeof line, "inline constexpr uint64_t kMainUirSignature = 0x%016llXULL;\n\n",
                  static_cast<unsigned long long>(file->signature));
    out += line;
    for (const auto &panel : file->panels) {
        std::snprintf(line, sizeof line, "inline constexpr int PNL_%s = %d;\n", panel.name.c_str(), panel.resourceId);
        out += line;
    }
    for (const auto &panel : file->panels) {
        out += "\n";
        for (const auto &control : panel.controls) {
            std::snprintf(line, sizeof line, "inline constexpr int %s_%s = %d;\n", panel.name.c_str(),
                          control.name.c_str(), control.id);
            out += line;
        }
    }
    std::ifstream existing(argv[2]);
    std::string old((std::istreambuf_iterator<char>(existing)), std::istreambuf_iterator<char>());
    if (old == out) return 0;  // keep the timestamp: nothing that includes it needs rebuilding
    std::ofstream header(argv[2], std::ios::trunc);
    header << out;
    return header ? 0 : 1;
}
