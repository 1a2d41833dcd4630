#include "rig/log/Document.h"

#include <cstdint>
#include <cstring>

#include "rig/log/HarnessText.h"
#include "rig/log/Xml.h"

namespace rig::log {
namespace {

constexpr std::size_t kLongestKept = 4'096;  // bytes of a text

/// @return whether the text ends with a tag, but for blanks
bool EndsAsXml(const std::string& text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last != std::string::npos && text[last] == '>';
}

/// @param isRead  the harness can parse it
Document::Form FormOf(const std::string& text, bool isRead) {
    using Form = Document::Form;
    const auto fault = FaultIn(text);
    if (fault && fault->isEncodingOnly) {
        return Form::OtherEncoding;
    }
    if (!fault && isRead) {
        return Form::Good;
    }
    return text.empty() ? Form::Empty : isRead || EndsAsXml(text) ? Form::NotWellFormed : Form::BrokenOff;
}

/// @return a hash, eight bytes at a time: every message is looked up
std::size_t HashOf(std::string_view text) {
    constexpr std::uint64_t kOdd = 0x9e3779b97f4a7c15;
    std::uint64_t hash = text.size();
    std::uint64_t word = 0;
    for (; text.size() >= sizeof word; text.remove_prefix(sizeof word)) {
        std::memcpy(&word, text.data(), sizeof word);
        hash = (hash ^ word) * kOdd;
        hash ^= hash >> 32U;
    }
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * kOdd;
    }
    return static_cast<std::size_t>(hash ^ (hash >> 32U));
}

std::optional<std::string> AttributeOf(const pugi::xml_node& message, const char* name) {
    const pugi::xml_attribute attribute = message.attribute(name);
    return attribute ? std::optional<std::string>(attribute.value()) : std::nullopt;
}

}  // namespace

Document::Document(const std::string& text) {
    const bool isRead = LoadAsTheHarness(text, document_);
    root_ = document_.child("msg");
    form_ = isRead && !root_ ? Form::NoMsg : FormOf(text, isRead);
    about_ = std::make_shared<const Subject>(
        Subject{root_.attribute("req").value(), AttributeOf(root_, "reid"), AttributeOf(root_, "file")});
}

const WorkLists& Document::Lists() {
    if (!lists_) {
        lists_.emplace();
        listed_ = Name() == "EVENT_LIST" ? lists_->TakeEventList(root_)
                  : Name() == "XML"      ? lists_->TakeXml(root_)
                  : Name() == "EVENT"    ? lists_->TakeEvent(root_)
                                         : Listed();
    }
    return *lists_;
}

std::shared_ptr<Document> Documents::Parsed(const std::string& text) {
    if (text.size() > kLongestKept) {
        return std::make_shared<Document>(text);
    }
    Set& set = sets_[HashOf(text) % sets_.size()];
    for (const Slot& slot : set.slots) {
        if (slot.document != nullptr && slot.text == text) {
            return slot.document;
        }
    }
    Slot& slot = set.slots[set.oldest++ % set.slots.size()];
    slot = {text, std::make_shared<Document>(text)};
    return slot.document;
}

}  // namespace rig::log
