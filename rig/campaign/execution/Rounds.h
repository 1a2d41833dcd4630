#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <string>

namespace rig::campaign {

/// Notices when a dialogue goes round in circles: the same requests with the same answers, over and over.
class Rounds {
 public:
    /// Exchanges in a row that are alike, and no longer lead anywhere.
    static constexpr int kMost = 20;

    /// The harness has sent a request. @param words  what it asks for
    void Ask(const std::string& words);

    /// The DVR has sent a message. Without a request before it, it is no part of an exchange.
    void Answer(const std::string& words);

    /// @return what goes on for ever, in words; empty if nothing does
    const std::string& Endless() const { return endless_; }

 private:
    static constexpr std::size_t kLongest = 8;  // exchanges in one round

    void Close();

    std::string current_;                   // the exchange that goes on
    std::deque<std::string> past_;          // those before it, the last one first
    std::array<int, kLongest> alike_ = {};  // by length of the round: exchanges in a row that equal the one
                                            // so many before them
    std::string endless_;
};

}  // namespace rig::campaign
