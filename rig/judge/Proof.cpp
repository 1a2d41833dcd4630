#include "rig/judge/Proof.h"

#include <algorithm>
#include <utility>

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

constexpr std::size_t kShownText = 300;     // bytes of a line
constexpr std::size_t kUsualLines = 64;     // that are kept of a short run,
constexpr std::size_t kUsualTexts = 4'096;  // and their bytes

}  // namespace

result::Evidence KeptLine::Proof() const {
    return {file == nullptr ? "" : *file, line, WithoutControls(text)};
}

KeptLines::KeptLines() {
    lines_.reserve(kUsualLines);
    texts_.reserve(kUsualTexts);
}

std::uint32_t KeptLines::Keep(const Place& place) {
    const std::string& file = NameOf(place.file);
    if (lines_.empty() || lines_.back().number != place.line || lines_.back().file != &file) {
        const std::string_view text = Beginning(place.text, kShownText);
        lines_.push_back({&file, place.line, texts_.size(), text.size()});
        texts_ += text;
    }
    return static_cast<std::uint32_t>(lines_.size() - 1);
}

void KeptLines::Keep(const Place& place, KeptLine& line) {
    line.file = &NameOf(place.file);
    line.line = place.line;
    line.text = Beginning(place.text, kShownText);
}

result::Evidence KeptLines::At(std::uint32_t index) const {
    const Line& line = lines_[index];
    const auto text = std::string_view(texts_).substr(line.begin, line.size);
    return {*line.file, line.number, WithoutControls(text)};
}

bool KeptLines::IsBefore(const result::Evidence& line, const result::Evidence& other) const {
    if (line.file == other.file) {
        return line.line < other.line;
    }
    const auto file = std::find(files_.begin(), files_.end(), line.file);
    return std::find(file, files_.end(), other.file) != files_.end();
}

/// @return the name, kept for as long as the lines
const std::string& KeptLines::NameOf(const std::string& file) {
    if (files_.empty() || files_.back() != file) {
        files_.push_back(file);
    }
    return files_.back();
}

void Proof::Add(const Place& place) {
    const std::uint32_t index = place.kept->Keep(place);
    if (count_ == 0 || indices_[count_ - 1] != index) {
        kept_ = place.kept;
        indices_[count_++] = index;
    }
}

void Proof::Add(const result::Evidence& line) {
    auto made = made_ ? *made_ : std::vector<result::Evidence>();
    made.push_back(line);
    made_ = std::make_shared<const std::vector<result::Evidence>>(std::move(made));
}

std::vector<result::Evidence> Proof::Lines() const {
    auto lines = made_ ? *made_ : std::vector<result::Evidence>();
    for (std::uint32_t number = 0; number < count_; ++number) {
        lines.push_back(kept_->At(indices_[number]));
    }
    return lines;
}

}  // namespace rig::judge
