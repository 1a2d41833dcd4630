#include "rig/judge/MessageList.h"

#include <fmt/format.h>

namespace rig::judge {
namespace {

using log::Sign;
using result::Json;

std::string HexOf(std::string_view bytes) {
    std::string hex;
    for (const char byte : bytes) {
        hex += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return hex;
}

Json JsonOf(const log::Request& request, std::uint64_t line) {
    Json json = {{"line", line}, {"sender", "harness"}, {"announced", request.announced}};
    if (request.isCertain) {
        json["name"] = request.name;
    }
    if (request.statedFile) {
        json["file"] = HexOf(*request.statedFile);
        json["rehash"] = request.fault == log::Fault::Rehash;
    }
    for (const std::string& event : request.statedEvents) {
        json["events"].push_back(HexOf(event));
    }
    return json;
}

}  // namespace

bool MessageList::Add(std::uint64_t number, std::string_view line) {
    const auto statement = log::ReadStatement(line);
    if (!statement) {
        return false;
    }
    Open& run = runs_[statement->process.value_or(-1)];
    if (run.reader.StartsAnother(statement->sign)) {
        End(run);
        run = {};
    }
    Take(run, number, *statement);
    return true;
}

void MessageList::Finish() {
    for (auto& [process, run] : runs_) {
        End(run);
    }
    runs_.clear();
}

void MessageList::Take(Open& run, std::uint64_t number, const log::Statement& statement) {
    switch (statement.sign) {
        case Sign::Incoming:
            TakeSlice(run, number, statement);
            break;
        case Sign::Expecting:
            End(run);
            run.reader.Add(statement);
            break;
        case Sign::HeaderByte:
            TakePrefixByte(run, number, statement);
            break;
        case Sign::SentWrongSize: {  // NUMBER/NUMBER/NUMBER  'TEXT'
            const std::string text = log::Unescaped(statement.detail);
            const std::size_t quote = text.find('\'');
            if (!run.request.is_null() && text.size() >= quote + 2 && text.back() == '\'') {
                run.request["text"] =
                    HexOf(std::string_view(text).substr(quote + 1, text.size() - quote - 2));
            }
            break;
        }
        default:
            run.reader.Add(statement);
            break;
    }
}

void MessageList::TakePrefixByte(Open& run, std::uint64_t number, const log::Statement& statement) {
    if (run.reader.Add(statement) == log::RunReader::Event::Request) {
        EndRequest(run);
        run.request = JsonOf(run.reader.LastRequest(), number);
    }
    if (run.request.is_null()) {
        Print({{"line", number}, {"sender", "harness"}, {"isWhole", false}});
    } else {
        run.request["announced"] = run.reader.LastRequest().announced;
    }
}

void MessageList::TakeSlice(Open& run, std::uint64_t number, const log::Statement& statement) {
    EndRequest(run);
    const bool isFirst = run.reader.Arriving().Text().empty();
    run.line = isFirst ? number : run.line;
    const log::RunReader::Event event = run.reader.Add(statement);
    if (event == log::RunReader::Event::Gap) {
        Print({{"line", number}, {"sender", "DVR"}, {"isWhole", false}});
    } else if (event == log::RunReader::Event::Message) {
        Print({{"line", run.line}, {"sender", "DVR"}, {"text", HexOf(run.reader.LastMessage().text)}});
    }
}

/// The log goes on with another message, another run, or not at all.
void MessageList::End(Open& run) {
    EndRequest(run);
    const log::Incoming& arriving = run.reader.Arriving();
    if (!arriving.IsWhole() && !arriving.Text().empty()) {
        Print({{"line", run.line}, {"sender", "DVR"}, {"text", HexOf(arriving.Text())}, {"isWhole", false}});
    }
}

void MessageList::EndRequest(Open& run) {
    if (!run.request.is_null()) {
        Print(run.request);
        run.request = nullptr;
    }
}

void MessageList::Print(const Json& message) {
    out_ << message.dump() << "\n";
}

}  // namespace rig::judge
