#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "protocol/VelProtocolBase.h"
#include "tests/harness/model/Element.h"
#include "tests/harness/unit/support/Journal.h"

namespace model {

/// How one message reaches the harness: its text in pieces, each of which may be preceded by a failing read.
struct Delivery {
    struct Piece {
        std::size_t size = 0;
        int error = 0;  // of a read before it; 0: none
    };
    std::vector<Piece> pieces;
    int prefixError = 0;  // of a read before the prefix; 0: none
};

/// What one message makes the harness do, in order, and what it tells its driver.
struct Reaction {
    std::vector<Entry> entries;
    bool closes = false;
};

/// The required behaviour of the harness, written a second time: a message goes in as a tree, and what the
/// journal must show comes out. Uses neither the harness's code nor its XML library.
class Model {
 public:
    explicit Model(const TestOptions& options) : options_(options) {}
    virtual ~Model() = default;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    Reaction Receive(const Element& message, const Delivery& delivery);

    // For dialogues that play a good DVR.
    const std::deque<std::string>& Events() const { return events_; }
    const std::deque<std::pair<std::string, std::string>>& Files() const { return files_; }
    const std::string& LastSent() const { return lastSent_; }  // `req` of the last message

 protected:
    virtual void Handle(const std::string& req, const Element& message) = 0;

    void Log(unsigned int level, const std::string& text) {
        reaction_.entries.push_back(Logged(level, text));
    }
    void Do(Entry entry) { reaction_.entries.push_back(std::move(entry)); }
    void Close() { reaction_.closes = true; }
    void Send(const std::string& req, std::vector<std::pair<std::string, std::string>> attributes = {},
              std::vector<Element> children = {});
    void SendAndSave(const Element& message);
    void QueueFiles(const std::string& reid, const Element& event);
    void LogAnswer(bool wasAsked, const std::string& req);
    std::string FrontEvent() const { return events_.empty() ? "" : events_.front(); }

    TestOptions options_;
    std::deque<std::string> events_;
    std::deque<std::pair<std::string, std::string>> files_;

 private:
    void ReadFrame(const std::string& text, const Delivery& delivery);
    void WriteFrame(const std::string& text);

    Reaction reaction_;
    std::string lastSent_;
};

std::unique_ptr<Model> NewModel(const TestOptions& options);

/// @return the bytes that announce a length
std::string LengthPrefix(std::uint32_t length);

}  // namespace model
