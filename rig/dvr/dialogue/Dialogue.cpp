#include "rig/dvr/dialogue/Dialogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/dialogue/MessageRules.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {

Dialogue::Dialogue(const Recordings& recordings, int dialect) : recordings_(recordings), dialect_(dialect) {}

Message Dialogue::Open() const {
    return NewMessage("OK");
}

std::vector<Message> Dialogue::Handle(const Message& message) {
    CheckMessage(message, dialect_, distrusts_);
    const std::vector<std::string> allowed = AllowedMessages();
    if (std::find(allowed.begin(), allowed.end(), message.Name()) == allowed.end()) {
        if (distrusts_) {
            return Refuse(message);
        }
        Object(message.Name() + " " + Situation());
    }
    return React(message);
}

std::vector<Message> Dialogue::Refuse(const Message& message) {
    if (message.Name() != "UPDATE_CONFIGURATION") {
        throw Breach(message.Name() + " " + Situation());
    }
    std::vector<Message> answers;
    answers.push_back(NewMessage("CONFIGURATION_UPDATE_ERROR"));
    return answers;
}

std::vector<std::string> Dialogue::TakeRemarks() {
    std::vector<std::string> remarks;
    remarks.swap(remarks_);
    return remarks;
}

void Dialogue::Object(const std::string& text) {
    if (!tolerant_) {
        throw Breach(text);
    }
    Remark(text);
}

Message Dialogue::FinishTransfer() {
    if (!transfer_) {
        throw std::logic_error("no transfer to finish");
    }
    if (outstanding_.erase(*transfer_) == 1) {
        ++tally_.files;
        tally_.bytes += digest_.length;
    }
    Message complete = NewMessage("FILE_COMPLETE");
    complete.Set("reid", transfer_->first)
        .Set("file", transfer_->second)
        .Set("length", std::to_string(digest_.length))
        .Set("hashCode", digest_.hashCode);
    transfer_.reset();
    return complete;
}

void Dialogue::End(std::chrono::minutes absence) {
    absence_ = absence;
    done_ = true;
}

std::string Dialogue::Expected() const {
    const std::vector<std::string> names = AllowedMessages();
    std::string text;
    for (const std::string& name : names) {
        const char* const separator = &name == &names.front() ? "" : &name == &names.back() ? " or " : ", ";
        text += separator + name;
    }
    return text.empty() ? "no message" : text;
}

std::string Dialogue::Summary() const {
    if (configurationRefused_) {
        return "exported nothing: refused the configuration update, which ends the dialogue";
    }
    return fmt::format("exported {} of {}, {}, {}", tally_.events,
                       Counted(recordings_.Events().size(), "event"), Counted(tally_.files, "file"),
                       Counted(tally_.bytes, "byte"));
}

Message Dialogue::NewMessage(const std::string& name) const {
    Message message(name);
    const char* const version = protocol::VersionOf(dialect_);
    if (version != nullptr) {
        message.Set("protocolVersion", version);
    }
    return message;
}

void Dialogue::StartTransfer(const FileId& file, bool rehash) {
    if (rehash || digested_ != file) {
        digest_ = DigestOf(recordings_, file.first, file.second);
        digested_ = file;
    }
    transfer_ = file;
}

Message Dialogue::RefuseConfiguration(const Message& message, const char* configuration) {
    if (distrusts_) {
        return NewMessage("CONFIGURATION_UPDATE_ERROR");
    }
    const std::string text = message.Get(configuration);
    if (!IsDocument(text)) {
        throw Breach(fmt::format("{} with a '{}' that is not an XML document: '{}'", message.Name(),
                                 configuration, Excerpt(text)));
    }
    configurationRefused_ = true;
    done_ = true;
    return NewMessage("CONFIGURATION_UPDATE_ERROR");
}

std::string Dialogue::TransferSituation() const {
    return "while " + FileName(*transfer_) + " is in transfer";
}

std::string FileName(const std::pair<std::string, std::string>& file) {
    return Quoted(file.first) + "/" + Quoted(file.second);
}

std::string FilesLeft(std::size_t files) {
    return "while " + Counted(files, "file") + (files == 1 ? " is" : " are") + " still to be transferred";
}

}  // namespace rig::dvr
