// Main.uir: the YAML resource that describes every panel and control. Parsed once per file
// and cached; LoadPanel instantiates a panel from its definition.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ui/UiModel.h"

namespace vcc::ui {

struct UirFile {
    std::vector<Panel> panels;  // templates, resource id = index + 1
    uint64_t signature = 0;     // over panel and control names in order
};

// Parses path; on failure returns null and sets error to a one-line reason.
std::shared_ptr<const UirFile> parseUirFile(const std::string &path, std::string &error);
// The parsed file, cached across calls (reparsed when the file changes).
std::shared_ptr<const UirFile> loadUirFile(const std::string &path, std::string &error);

// The generated control ids are positions in the file the build saw; a file edited since
// must not be loaded with them. The application states the signature it was built with.
void expectUirSignature(uint64_t signature);

// "AeMode_Callback" -> "AE_MODE": the naming rule the resource follows.
std::string controlNameForCallback(const std::string &callbackName);

}  // namespace vcc::ui
