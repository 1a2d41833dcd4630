#include "rig/log/Document.h"

#include <functional>

#include "rig/log/HarnessText.h"

namespace rig::log {
namespace {

constexpr std::size_t kLongestKept = 4'096;  // bytes of a text

/// @return whether the text ends with a tag, but for blanks
bool EndsAsXml(const std::string& text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last != std::string::npos && text[last] == '>';
}

}  // namespace

void Document::Parse(const std::string& text) {
    lists_.reset();
    name_.clear();
    root_ = {};
    condensedRoot_ = {};
    if (!document_.load_string(text.c_str(), kAsTheHarness)) {
        form_ = text.empty() ? Form::Empty : !EndsAsXml(text) ? Form::BrokenOff : Form::NotWellFormed;
        return;
    }
    root_ = document_.child("msg");
    form_ = root_ ? Form::Good : Form::NoMsg;
    if (root_) {
        name_ = root_.attribute("req").value();
        Condense(text);
    }
}

void Document::Condense(const std::string& text) {
    condensedRoot_ = root_;
    if (!root_.first_child()) {
        return;
    }
    const std::string condensed = log::Condensed(text);
    if (condensed != text) {
        condensed_.load_string(condensed.c_str(), kAsTheHarness);
        condensedRoot_ = condensed_.child("msg");
    }
}

const WorkLists& Document::Lists() {
    if (!lists_) {
        lists_.emplace();
        listed_ = name_ == "EVENT_LIST" ? lists_->TakeEventList(condensedRoot_)
                  : name_ == "XML"      ? lists_->TakeXml(condensedRoot_)
                  : name_ == "EVENT"    ? lists_->TakeEvent(condensedRoot_)
                                        : Listed();
    }
    return *lists_;
}

std::shared_ptr<Document> Documents::Parsed(const std::string& text) {
    if (text.size() > kLongestKept) {
        auto document = std::make_shared<Document>();
        document->Parse(text);
        return document;
    }
    Slot& slot = slots_[std::hash<std::string>()(text) % slots_.size()];
    if (slot.document == nullptr || slot.text != text) {
        slot.document = std::make_shared<Document>();
        slot.document->Parse(text);
        slot.text = text;
    }
    return slot.document;
}

}  // namespace rig::log
