#include "rig/html/HtmlTable.h"

#include <algorithm>
#include <iterator>

#include "rig/base/Elements.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"

namespace rig::html {
namespace {

constexpr std::size_t kFewRows = 4;
constexpr const char* kOutcome = "data-outcome";

Tally OutcomesOf(pugi::xml_node body) {
    Tally tally;
    for (const pugi::xml_node row : body.children("tr")) {
        if (row.attribute(kOutcome)) {
            ++tally[row.attribute(kOutcome).value()];
        }
    }
    return tally;
}

void AddChoices(pugi::xml_node form, const Tally& tally) {
    pugi::xml_node fields = Add(form, "fieldset");
    Add(fields, "legend", "Show");
    for (const Look& look : Looks()) {
        const auto count = tally.find(std::string(look.name));
        if (count != tally.end()) {
            pugi::xml_node label = Add(fields, "label");
            pugi::xml_node input = AddInput(label, "checkbox", "outcome");
            Set(input, "value", look.name);
            Set(input, "checked", "checked");
            AddOutcome(label, look.name);
            AddText(label, std::to_string(count->second));
        }
    }
}

}  // namespace

pugi::xml_node AddTable(pugi::xml_node parent, std::string_view caption,
                        const std::vector<std::string>& heads) {
    pugi::xml_node frame = Add(parent, "div", {}, "scrolls");
    Set(frame, "role", "region");
    Set(frame, "aria-label", caption);
    Set(frame, "tabindex", "0");
    pugi::xml_node table = Add(frame, "table");
    Add(table, "caption", caption);
    pugi::xml_node row = Add(Add(table, "thead"), "tr");
    for (const std::string& head : heads) {
        Set(Add(row, "th", head), "scope", "col");
    }
    return Add(table, "tbody");
}

pugi::xml_node AddNamedCell(pugi::xml_node row, std::string_view head, std::string_view text) {
    pugi::xml_node cell = Add(row, "td", text);
    Set(cell, "data-head", head);
    return cell;
}

pugi::xml_node AddRowHead(pugi::xml_node row, std::string_view text) {
    pugi::xml_node head = Add(row, "th", text);
    Set(head, "scope", "row");
    return head;
}

void SetOutcome(pugi::xml_node row, std::string_view name) {
    Set(row, kOutcome, name);
}

void AddFilter(pugi::xml_node body, std::string_view name) {
    const auto rows = body.children("tr");
    if (static_cast<std::size_t>(std::distance(rows.begin(), rows.end())) <= kFewRows) {
        return;
    }
    const pugi::xml_node frame = body.parent().parent();
    pugi::xml_node form = frame.parent().insert_child_before("form", frame);
    Set(form, "class", "filter");
    Set(form, "name", name);
    Set(form, "role", "search");
    Set(form, "hidden", "hidden");
    AddInput(Add(form, "label", "Rows with"), "search", "text");
    const Tally tally = OutcomesOf(body);
    if (tally.size() > 1) {
        AddChoices(form, tally);
    }
    Set(Add(form, "p", {}, "shown"), "role", "status");
}

}  // namespace rig::html
