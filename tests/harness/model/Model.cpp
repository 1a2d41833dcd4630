#include "tests/harness/model/Model.h"

#include <cstdio>
#include <cstring>

namespace model {
namespace {

constexpr std::size_t kSlice = 800;
constexpr unsigned int kPause = 250000;

std::string Hexadecimal(unsigned char byte) {
    char digits[3];
    snprintf(digits, sizeof digits, "%x", static_cast<unsigned int>(byte));
    return digits;
}

std::string ErrorText(int error) {
    return std::to_string(error) + ":" + strerror(error);
}

}  // namespace

std::string LengthPrefix(std::uint32_t length) {
    std::string prefix;
    for (int group = 0; group < 5; ++group) {
        const std::uint32_t rest = length >> (7 * group);
        prefix += static_cast<char>(rest > 127 ? 0x80 + rest % 128 : rest);
        if (rest < 128) {
            break;
        }
    }
    return prefix;
}

Reaction Model::Receive(const Element& message, const Delivery& delivery) {
    reaction_ = {};
    ReadFrame(Compact(message), delivery);
    const auto req = message.Attribute("req");
    if (req) {
        Handle(*req, message);
    } else {
        Log(1, "INVALID XML RECEIVED");
    }
    return reaction_;
}

void Model::ReadFrame(const std::string& text, const Delivery& delivery) {
    if (delivery.prefixError != 0) {
        Do(ReadFailed(1, delivery.prefixError));
        Log(1, "read error: " + ErrorText(delivery.prefixError));
    }
    for (std::size_t byte = 0; byte < LengthPrefix(static_cast<std::uint32_t>(text.size())).size(); ++byte) {
        Do(Read(1, 1));
    }
    const std::string size = std::to_string(text.size());
    Log(1, "expecting a message of " + size + " bytes");
    std::size_t left = text.size();
    for (const Delivery::Piece& piece : delivery.pieces) {
        if (piece.error != 0) {
            Do(ReadFailed(left, piece.error));
            Log(1, "read errored out:" + ErrorText(piece.error));
        }
        Do(Read(left, piece.size));
        Do(Paused(kPause));
        left -= piece.size;
    }
    Log(1, "read success:" + size);
    const std::size_t slice = text.size() < kSlice ? text.size() : kSlice;
    for (std::size_t start = 0; start < text.size(); start += kSlice) {
        Log(32, "GetMessage:incoming message, bytes " + std::to_string(start + 1) + " to " +
                    std::to_string(start + slice) + ":" + text.substr(start, slice));
    }
}

void Model::WriteFrame(const std::string& text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    const std::uint32_t announced = options_.sizeError ? size * 3 / 2 : size;
    const std::string prefix = LengthPrefix(announced);
    for (std::size_t byte = 0; byte < prefix.size(); ++byte) {
        Log(64,
            "hdr[" + std::to_string(byte) + "]= " + Hexadecimal(static_cast<unsigned char>(prefix[byte])));
    }
    Do(Wrote(prefix));
    Do(Wrote(text));
    if (options_.sizeError) {
        Log(8, "sent: size= " + std::to_string(prefix.size()) + "/" + std::to_string(announced) + "/" +
                   std::to_string(size) + "  '" + text + "'");
    }
}

void Model::Send(const std::string& req, std::vector<std::pair<std::string, std::string>> attributes,
                 std::vector<Element> children) {
    attributes.insert(attributes.begin(), {"req", req});
    lastSent_ = req;
    WriteFrame(Compact({"msg", std::move(attributes), std::nullopt, std::move(children)}));
}

void Model::SendAndSave(const Element& message) {
    Do(Saved("/mnt/hd/outgoingETCstring", Indented(message)));
    lastSent_ = "EVENT_XFER_COMPLETE";
    WriteFrame(Compact(message));
}

/// Metadata first, then all children of the first `stream` and of whatever follows it.
void Model::QueueFiles(const std::string& reid, const Element& event) {
    const Element* const video = event.Child("video");
    if (video == nullptr) {
        return;
    }
    if (const Element* const metadata = video->Child("metadata")) {
        files_.emplace_back(reid, *metadata->Attribute("name"));
    }
    const Element* const streams = video->Child("streams");
    bool isAfterFirst = false;
    for (const Element& stream : streams ? streams->children : std::vector<Element>()) {
        isAfterFirst = isAfterFirst || stream.name == "stream";
        for (const Element& file : isAfterFirst ? stream.children : std::vector<Element>()) {
            files_.emplace_back(reid, *file.Attribute("name"));
        }
    }
}

void Model::LogAnswer(bool wasAsked, const std::string& req) {
    Log(wasAsked ? 16 : 2, (wasAsked ? "Got " : "Unexpected ") + req);
}

}  // namespace model
