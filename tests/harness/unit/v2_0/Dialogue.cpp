#include "tests/harness/unit/v2_0/Dialogue.h"

#include "tests/support/Escaped.h"

namespace {

TestOptions Options() {
    TestOptions options;
    options.protocol = 2;
    return options;
}

}  // namespace

const char* const kGetEventList = R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" />)";
const char* const kUpdateSoftware =
    R"(<msg req="UPDATE_SOFTWARE" path="/mnt/hd/connectionmgr" file="upgrade.zip" protocolVersion="2.0" />)";
const char* const kUpdateConfiguration =
    R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message='&lt;FakeConfig info=&quot;)"
    R"(This is a bogus config used for protocol 2.0 testing&quot; /&gt;' />)";
const char* const kDone = R"(<msg req="DONE" protocolVersion="2.0" />)";

Dialogue::Dialogue() : protocol(Options(), kSocket) {}

VelProtocolBase::e_MsgReturn Dialogue::Say(const std::string& text) {
    Feed(text);
    return protocol.HandleMessage();
}

std::string Msg(const std::string& req, const std::string& rest, const std::string& children) {
    return R"(<msg req=")" + req + R"(")" + rest + ">" + children + "</msg>";
}

std::string EventList(const std::string& children) {
    return Msg("EVENT_LIST", R"( source="DVR 7")", "<events>" + children + "</events>");
}

std::string Event(const std::string& reid, const std::string& description) {
    return Msg("EVENT", R"( reid=")" + reid + R"(")", "<xmlFile>" + Escaped(description) + "</xmlFile>");
}

std::string FileComplete(const std::string& reid, const std::string& file, const std::string& rest) {
    return R"(<msg req="FILE_COMPLETE" reid=")" + reid + R"(" file=")" + file + R"(")" + rest + " />";
}

std::string Acknowledgement(const std::string& reid) {
    return Msg("EVENT_XFER_ACK", R"( reid=")" + reid + R"(")");
}

std::string InvalidEvent(const std::string& reid) {
    return Msg("INVALID_EVENT", R"( reid=")" + reid + R"(")");
}

std::string TransportException(const std::string& reid) {
    return Msg("TRANSPORT_EXCEPTION", R"( reid=")" + reid + R"(")");
}

std::string Description(const std::string& reid, const std::string& metadata,
                        const std::list<std::string>& files) {
    std::string children;
    for (const std::string& file : files) {
        children += R"(<file name=")" + file + R"("/>)";
    }
    return R"(<recording-event reid=")" + reid + R"("><video><metadata name=")" + metadata +
           R"("/><streams><stream>)" + children + "</stream></streams></video></recording-event>";
}

std::string NextEvent(const std::string& reid) {
    return R"(<msg req="NEXT_EVENT" reid=")" + reid + R"(" protocolVersion="2.0" />)";
}

std::string GetFile(const std::string& reid, const std::string& file) {
    return R"(<msg req="GET_FILE" reid=")" + reid + R"(" path=")" + reid + R"(" file=")" + file +
           R"(" protocolVersion="2.0" />)";
}

std::string GetFileWithNewHash(const std::string& reid, const std::string& file) {
    return R"(<msg req="GET_FILE" reid=")" + reid + R"(" path=")" + reid + R"(" file=")" + file +
           R"(" protocolVersion="2.0" rehash="true" />)";
}

std::string EventXferComplete(const std::string& reid) {
    return R"(<msg req="EVENT_XFER_COMPLETE" reid=")" + reid + R"(" protocolVersion="2.0" />)";
}

Entry GotFileComplete(const std::string& reid, const std::string& file) {
    return Logged(64, "Got FILE_COMPLETE for: reid=" + reid + "  file=" + file);
}

Entry InvalidFileComplete(const std::string& document) {
    return Logged(1, "invalid file in FILE_COMPLETE: " + document);
}

Entry IncompleteFileComplete() {
    return Logged(2, "Got FILE_COMPLETE without both reid and file");
}

Entries Joined(std::initializer_list<Entries> groups) {
    std::vector<Entry> joined;
    for (const Entries& group : groups) {
        joined.insert(joined.end(), group.begin(), group.end());
    }
    return joined;
}

Entries CompletedEvent(const std::string& reid) {
    return Joined({Logged(32, "filesToReceive size = 0"), Logged(16, "Sending EVENT_XFER_COMPLETE"),
                   Saved("/mnt/hd/outgoingETCstring", EventXferComplete(reid) + "\n"),
                   Sent(EventXferComplete(reid))});
}

Entries RequestedLastFile(const std::string& reid, const std::string& file) {
    return Joined({Logged(32, "filesToReceive size = 1"),
                   Logged(32, "calling SendFileRequest(" + reid + "/" + file + ", false)"),
                   Sent(GetFile(reid, file))});
}

Entries RequestedLastFileWithNewHash(const std::string& reid, const std::string& file) {
    return Joined({Logged(32, "filesToReceive size = 1"),
                   Logged(32, "calling SendFileRequest(" + reid + "/" + file + ", true)"),
                   Sent(GetFileWithNewHash(reid, file))});
}
