#include "rig/html/HtmlPage.h"

#include <fmt/format.h>

#include <set>
#include <sstream>

#include "rig/html/HtmlOutcome.h"
#include "rig/html/PageFiles.h"

namespace rig::html {
namespace {

constexpr int kSecondsToRenewal = 5;
constexpr const char* kNothingIsLoaded =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'";

void AddMeta(pugi::xml_node head, const char* name, const char* value) {
    pugi::xml_node meta = head.append_child("meta");
    meta.append_attribute("name") = name;
    meta.append_attribute("content") = value;
}

/// Adds what a server would say of the page.
void AddHeader(pugi::xml_node head, const char* name, const std::string& value) {
    pugi::xml_node meta = head.append_child("meta");
    meta.append_attribute("http-equiv") = name;
    meta.append_attribute("content") = value.c_str();
}

void AddHead(pugi::xml_node html, std::string_view title) {
    pugi::xml_node head = html.append_child("head");
    head.append_child("meta").append_attribute("charset") = "utf-8";
    AddMeta(head, "viewport", "width=device-width, initial-scale=1");
    AddMeta(head, "color-scheme", "light dark");
    AddHeader(head, "Content-Security-Policy", kNothingIsLoaded);
    Add(head, "title", title);
    // Browsers take what follows literally, XML readers because of the CDATA section: the comments hide that
    // section from browsers.
    pugi::xml_node style = head.append_child("style");
    style.append_child(pugi::node_pcdata).set_value("/*");
    style.append_child(pugi::node_cdata).set_value((std::string("*/\n") + kPageStyle + "/*").c_str());
    style.append_child(pugi::node_pcdata).set_value("*/");
}

void AddScript(pugi::xml_node body) {
    pugi::xml_node script = body.append_child("script");
    script.append_child(pugi::node_pcdata).set_value("//");
    script.append_child(pugi::node_cdata).set_value((std::string("\n") + kPageScript + "//").c_str());
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
    heading_ = Add(main_, "h1", title);
    AddScript(body);
}

void HtmlPage::SetOutcome(std::string_view name) {
    pugi::xml_node band = main_.insert_child_before("header", heading_);
    Set(band, "class", std::string("band ") + LookOf(name).cssClass);
    Add(band, "p", name, "outcome");
    heading_ = band.append_move(heading_);
}

void HtmlPage::Renew(std::string_view progress) {
    AddHeader(document_.child("html").child("head"), "refresh", std::to_string(kSecondsToRenewal));
    pugi::xml_node line = Add(main_, "p", progress, "progress");
    Set(line, "role", "status");
    AddText(line, fmt::format(" This page renews itself every {} s.", kSecondsToRenewal));
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

pugi::xml_node AddInput(pugi::xml_node label, const char* type, const char* name) {
    pugi::xml_node input = label.append_child("input");
    input.append_attribute("type") = type;
    input.append_attribute("name") = name;
    return input;
}

void AddFact(pugi::xml_node list, std::string_view name, std::string_view value) {
    if (!value.empty()) {
        Add(list, "dt", name);
        Add(list, "dd", value);
    }
}

}  // namespace rig::html
