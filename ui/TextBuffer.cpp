#include "ui/UiModel.h"

namespace vcc::ui {

void TextBuffer::append(std::string_view text) {
    const size_t base = text_.size();
    text_.append(text);
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\n') lineStarts_.push_back(base + i + 1);
    ++revision_;
}

void TextBuffer::clear() {
    text_.clear();
    lineStarts_.assign(1, 0);
    ++revision_;
}

size_t TextBuffer::lineCount() const {
    // The last start opens an unfinished line; it counts only once it holds text.
    return lineStarts_.back() == text_.size() ? lineStarts_.size() - 1 : lineStarts_.size();
}

std::string_view TextBuffer::line(size_t index) const {
    if (index >= lineCount()) return {};
    const size_t start = lineStarts_[index];
    size_t end = index + 1 < lineStarts_.size() ? lineStarts_[index + 1] - 1 : text_.size();
    return std::string_view(text_).substr(start, end - start);
}

}  // namespace vcc::ui
