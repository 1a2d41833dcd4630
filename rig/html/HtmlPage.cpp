#include "rig/html/HtmlPage.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

#include "rig/html/PageFiles.h"

namespace rig::html {
namespace {

constexpr const char* kNothingIsLoaded =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'";

void AddMeta(pugi::xml_node head, const char* name, const char* value) {
    pugi::xml_node meta = head.append_child("meta");
    meta.append_attribute("name") = name;
    meta.append_attribute("content") = value;
}

void AddHead(pugi::xml_node html, std::string_view title) {
    pugi::xml_node head = html.append_child("head");
    head.append_child("meta").append_attribute("charset") = "utf-8";
    AddMeta(head, "viewport", "width=device-width, initial-scale=1");
    AddMeta(head, "color-scheme", "light dark");
    pugi::xml_node policy = head.append_child("meta");
    policy.append_attribute("http-equiv") = "Content-Security-Policy";
    policy.append_attribute("content") = kNothingIsLoaded;
    Add(head, "title", title);
    // Browsers take what follows literally, XML readers because of the CDATA section: the comments hide that
    // section from browsers.
    pugi::xml_node style = head.append_child("style");
    style.append_child(pugi::node_pcdata).set_value("/*");
    style.append_child(pugi::node_cdata).set_value((std::string("*/\n") + kReportStyle + "/*").c_str());
    style.append_child(pugi::node_pcdata).set_value("*/");
}

void AddScript(pugi::xml_node body) {
    pugi::xml_node script = body.append_child("script");
    script.append_child(pugi::node_pcdata).set_value("//");
    script.append_child(pugi::node_cdata).set_value((std::string("\n") + kReportScript + "//").c_str());
}

/// Browsers take "<td/>" for an open element: gives each element without content an empty text, so that a tag
/// closes it, except those that have no closing tag.
class ClosedElements : public pugi::xml_tree_walker {
 public:
    bool for_each(pugi::xml_node& node) override {
        static const std::set<std::string_view> kVoid = {"br", "hr", "input", "meta", "wbr"};
        if (node.type() == pugi::node_element && !node.first_child() && kVoid.count(node.name()) == 0) {
            node.append_child(pugi::node_pcdata);
        }
        return true;
    }
};

}  // namespace

HtmlPage::HtmlPage(std::string_view title) {
    document_.append_child(pugi::node_doctype).set_value("html");
    pugi::xml_node html = document_.append_child("html");
    html.append_attribute("lang") = "en";
    AddHead(html, title);
    pugi::xml_node body = html.append_child("body");
    main_ = body.append_child("main");
    Add(main_, "h1", title);
    AddScript(body);
}

std::string HtmlPage::Text() {
    ClosedElements closed;
    document_.traverse(closed);
    std::ostringstream text;
    document_.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return text.str();
}

pugi::xml_node AddLink(pugi::xml_node parent, std::string_view target, std::string_view text) {
    pugi::xml_node link = Add(parent, "a", text);
    Set(link, "href", target);
    return link;
}

pugi::xml_node AddVerdict(pugi::xml_node parent, result::Verdict verdict) {
    return Add(parent, "span", result::NameOf(verdict), "verdict " + ClassOf(verdict));
}

void AddVerdictLetter(pugi::xml_node parent, result::Verdict verdict, std::string_view target) {
    pugi::xml_node link = AddLink(parent, target, std::string(1, *result::NameOf(verdict)));
    Set(link, "class", "letter verdict " + ClassOf(verdict));
    Set(link, "title", result::NameOf(verdict));
    Set(link, "aria-label", result::NameOf(verdict));
}

void AddLetterLegend(pugi::xml_node parent) {
    Add(parent, "p",
        "P pass, W warning, F fail, I inconclusive, N not reached, E environment, K known failure", "hint");
}

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

void AddFact(pugi::xml_node list, std::string_view name, std::string_view value) {
    if (!value.empty()) {
        Add(list, "dt", name);
        Add(list, "dd", value);
    }
}

pugi::xml_node AddRowHead(pugi::xml_node row, std::string_view text) {
    pugi::xml_node head = Add(row, "th", text);
    Set(head, "scope", "row");
    return head;
}

std::string ClassOf(result::Verdict verdict) {
    std::string name = result::NameOf(verdict);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char letter) {
        return static_cast<char>(letter == ' ' ? '-' : std::tolower(letter));
    });
    return name;
}

}  // namespace rig::html
