#pragma once

#include <pugixml.hpp>
#include <string>
#include <vector>

#include "rig/base/Listing.h"

namespace rig::dvr {

/// How a DVR writes its XML: every manner is well formed, and says the same.
class Style {
 public:
    enum Manner : unsigned int {
        Indented = 1U << 0,
        Crlf = 1U << 1,
        Declaration = 1U << 2,
        ByteOrderMark = 1U << 3,
        SingleQuotes = 1U << 4,
        Reversed = 1U << 5,
        Unknown = 1U << 6,
        Comments = 1U << 7,
        References = 1U << 8,
        Cdata = 1U << 9,
        LongForm = 1U << 10,
    };

    /// Adds the manner of that name, or each of them for "all". Throws Failure (Unusable), listing the names,
    /// if there is none.
    void AddManner(const std::string& name);

    bool IsPlain() const { return manners_ == 0; }

    /// @return the document in this style
    std::string Print(const pugi::xml_document& document) const;

 private:
    bool Has(Manner manner) const { return (manners_ & manner) != 0; }
    void PrintElement(std::string& text, const pugi::xml_node& element, std::size_t depth) const;
    void PrintAttributes(std::string& text, const pugi::xml_node& element) const;
    void PrintText(std::string& text, const std::string& value, std::size_t depth) const;
    void BreakLine(std::string& text, std::size_t depth) const;
    std::string Escaped(const std::string& value, bool isText) const;

    unsigned int manners_ = 0;
};

/// @return all manners, for --list-styles and the documentation
Listing ListStyles();

}  // namespace rig::dvr
