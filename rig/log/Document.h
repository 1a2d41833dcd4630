#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "rig/log/WorkLists.h"

namespace rig::log {

/// What a message is about.
struct Subject {
    std::string name;  // `req`
    std::optional<std::string> reid = {};
    std::optional<std::string> file = {};
};

/// What the text of one message of the DVR says, whatever came before it.
class Document {
 public:
    enum class Form { Good, OtherEncoding, Empty, BrokenOff, NotWellFormed, NoMsg };

    explicit Document(const std::string& text);

    Form GetForm() const { return form_; }
    pugi::xml_node Root() const { return root_; }  // `msg`; none unless the harness finds it
    const std::string& Name() const { return about_->name; }

    /// @return what may be kept for longer than the document
    const std::shared_ptr<const Subject>& About() const { return about_; }

    /// @return the events and files that it lists, and what is wrong with them; nothing for a message that
    /// has none
    const WorkLists& Lists();
    const Listed* WhatIsListed() const { return &listed_; }

 private:
    pugi::xml_document document_;
    Form form_ = Form::Empty;
    pugi::xml_node root_;
    std::shared_ptr<const Subject> about_;
    std::optional<WorkLists> lists_;
    Listed listed_;
};

/// The messages of a log, parsed. A DVR says much the same in every run, and acknowledges alike in one: a
/// message whose text is that of an earlier one is not parsed again.
class Documents {
 public:
    std::shared_ptr<Document> Parsed(const std::string& text);

 private:
    struct Slot {
        std::string text;
        std::shared_ptr<Document> document;
    };

    struct Set {
        std::array<Slot, 4> slots;
        std::size_t oldest = 0;
    };

    std::array<Set, 64> sets_;  // by the hash of the text
};

}  // namespace rig::log
