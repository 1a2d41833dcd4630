#include "rig/dvr/wire/Message.h"
#include "rig/dvr/wire/Style.h"
#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

using dvr::Message;

/// Blanks and newlines wherever a tag may have them.
std::string Blanks(const std::string& plain) {
    std::string text = plain;
    const std::size_t end = text.find('>');
    text.insert(end > 0 && text[end - 1] == '/' ? end - 1 : end, " \t\r\n ");
    const std::size_t name = text.find(' ');
    return text.insert(name, " \n\t ");
}

Fault Shape(const std::string& name, const std::string& does, std::string (*write)(const std::string&)) {
    return {"shape-" + name, "shape", Duty::GoesOn, "12", {}, {}, true, does, [write](const Scene& scene) {
                return Script{Send(FrameOf(write(scene.text)))};
            }};
}

/// A style in which our own DVR can write.
Fault Styled(const std::string& name, const std::string& words) {
    Fault fault = Shape(name, "writes " + words, [](const std::string& text) { return text; });
    fault.play = [name](const Scene& scene) {
        dvr::Style style;
        style.AddManner(name);
        return Script{Send(FrameOf(Message::Parse(scene.text).Text(style)))};
    };
    if (name == "cdata") {  // where there are texts
        fault.dialects = "1";
        fault.messages = {"EVENT_XFER_COMPLETE"};
    } else if (name == "reversed") {  // where there are attributes to exchange
        fault.dialects = "2";
    } else if (name == "long-form") {  // where msg is empty
        fault.messages = {"GET_XML", "GET_EVENT_LIST", "NEXT_EVENT", "GET_FILE", "DONE"};
    }
    return fault;
}

}  // namespace

const std::vector<Fault>& ShapeFaults() {
    static const std::vector<Fault> faults = [] {
        std::vector<Fault> all;
        for (const std::vector<std::string>& row : dvr::ListStyles().rows) {
            if (row[0] != "unknown-attributes") {  // which a DVR may refuse
                all.push_back(Styled(row[0], row[1]));
            }
        }
        all.push_back(Shape("blanks", "writes blanks, tabs and newlines inside tags", Blanks));
        all.push_back(Shape("newline", "writes a newline after the document, which the length counts",
                            [](const std::string& text) { return text + "\n"; }));
        all.push_back(Shape("instruction", "writes a processing instruction before the document",
                            [](const std::string& text) { return "<?backend version=\"1\"?>" + text; }));
        return all;
    }();
    return faults;
}

}  // namespace rig::fault
