#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

std::size_t Number(const std::string& digits) {
    return std::stoul(digits);
}

bool EndConnection(Outgoing& outgoing, const std::string& place, Outgoing::End end) {
    outgoing.end = end;
    outgoing.cutAtRandom = place == "random";
    if (place != "all" && place != "random") {
        outgoing.cut = Number(place);
    }
    return true;
}

bool BadPrefix(Outgoing& outgoing, const DefectContext&) {
    outgoing.prefix = std::string(5, '\x80');
    return true;
}

bool NegativePrefix(Outgoing& outgoing, const DefectContext&) {
    outgoing.prefix = "\xfe\xff\xff\xff\x0f";  // 2^32 - 2, which is -2 where sizes are signed
    return true;
}

bool EmptyFrame(Outgoing& outgoing, const DefectContext&) {
    outgoing.text = "";
    return true;
}

bool LongPrefix(Outgoing& outgoing, const DefectContext& context) {
    outgoing.announcedTooMuch = static_cast<std::int64_t>(Number(context.value));
    return true;
}

bool ShortPrefix(Outgoing& outgoing, const DefectContext& context) {
    outgoing.announcedTooMuch = -static_cast<std::int64_t>(Number(context.value));
    return true;
}

bool Garble(Outgoing& outgoing, const DefectContext& context) {
    std::string text = outgoing.text.value_or(outgoing.message.Text());
    if (text.empty()) {
        return false;
    }
    std::uniform_int_distribution<std::size_t> place(0, text.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    for (std::size_t count = Number(context.value); count > 0; --count) {
        text[place(context.random)] = static_cast<char>(byte(context.random));
    }
    outgoing.text = text;
    return true;
}

bool Close(Outgoing& outgoing, const DefectContext& context) {
    return EndConnection(outgoing, context.value, Outgoing::End::Close);
}

bool Reset(Outgoing& outgoing, const DefectContext& context) {
    return EndConnection(outgoing, context.value, Outgoing::End::Reset);
}

bool SecondConnection(Outgoing& outgoing, const DefectContext&) {
    outgoing.knocks = true;
    return true;
}

bool Reconnect(Outgoing& outgoing, const DefectContext&) {
    outgoing.reconnects = true;
    return true;
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& WireDefects() {
    static const std::vector<DefectKind> kinds = {
        // Frames
        {"bad-prefix", None, "", "12", {}, false,
         "sends a prefix of five continuation bytes",
         "\"Read7BitEncodedInt:badly formatted 7 bit string length prefix\", assertion \"expectedSize not_eq -1\"",
         BadPrefix},
        {"negative-prefix", None, "", "12", {}, false,
         "announces more than 2 GiB", "\"expecting a message of -2 bytes\", aborted", NegativePrefix},
        {"empty-frame", None, "", "12", {}, false,
         "announces no text and sends none",
         "\"read success:0\", \"error: 1:\", \"row: \", assertion \"not incomingMessage.Error()\"", EmptyFrame},
        {"long-prefix", Count, "10", "12", {}, false,
         "announces more than it sends",
         "nothing until the connection ends, then \"EOF at: \", assertion \"readBytes == expectedSize\"; or the bytes of "
         "the next message are taken for the rest",
         LongPrefix},
        {"short-prefix", Count, "10", "12", {}, false,
         "announces less than it sends", "\"error: 1:\", \"row: \", assertion \"not incomingMessage.Error()\"", ShortPrefix},
        {"garble", Count, "1", "12", {}, false,
         "replaces bytes of the document at random places (see --seed)", "depends on the bytes", Garble},

        // Connections
        {"close", Place, "all", "12", {}, false,
         "closes the connection after so many bytes of the frame (a number, `all`, `random`)",
         "before or inside the prefix: nothing, the harness reads on without rest; inside the text: \"EOF at: \", assertion "
         "\"readBytes == expectedSize\"; after it: ended by SIGPIPE as it answers, or, where it does not, nothing",
         Close},
        {"reset", Place, "all", "12", {}, false,
         "resets the connection after so many bytes of the frame (a number, `all`, `random`)",
         "before or inside the prefix: \"read error: 104:\"; inside the text: \"read errored out:104:\", \"EOF at: \", "
         "assertion \"readBytes == expectedSize\"; after it: \"SendMessage: msg: size= \" and an assertion as it answers, "
         "or, where it does not, \"read error: 104:\"",
         Reset},
        {"second-connection", None, "", "12", {}, false,
         "opens a second connection after the message",
         "assertion \"FD_ISSET(g_clientFd, &readFds)\", or, with a message at the same time, \"select(g_serverFd+g_clientFd+1, "
         "&readFds, NULL, &exceptionFds, &time) == 1\"",
         SecondConnection},
        {"reconnect", None, "", "12", {"OK"}, false,
         "connects again after DONE and exports once more",
         "1.0, 2.0 with -c: the next export, without \"Connected to: \"; 2.0 otherwise: as second-connection, or nothing, as "
         "the harness reads on where the first connection was",
         Reconnect},
    };
    return kinds;
}
// clang-format on

}  // namespace rig::dvr
