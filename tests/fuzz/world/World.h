#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

/// The world of the harness: read, write, usleep, sleep, system, sendmsg and TiXmlDocument::SaveFile,
/// replaced at link time while a World exists, and the system's own otherwise. The logger is the harness's
/// real one. Checks that the harness only does what it may do at all; anything else is a finding.
///
/// One at a time.
class World {
 public:
    static constexpr int kSocket = 71;  // the DVR's

    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// @name What the harness will read, in the order fed. A read gets at most what is left of one piece.
    /// After the last, the peer has closed.
    /// @{
    void Feed(const std::string& bytes);
    void FeedError(int error);
    /// @}

    /// @return how many bytes were fed and have not been read
    std::size_t Unread() const;

    /// That write takes `taken` bytes, or fails if that is -1.
    void LimitWrite(std::size_t writesFromNow, long taken, int error);

    /// @return the writes to the DVR since this was last asked
    std::vector<std::string> TakeWrites();

    /// @return the texts of the log lines of that level since this was last asked, without "velloran:N ";
    ///         still escaped
    std::vector<std::string> TakeLog(unsigned int level);

    struct State;

 private:
    State* state_;
};

/// @return the length that a prefix announces, computed independently of the harness; -1 for one that
///         continues after its fifth byte or is incomplete
std::int64_t Announced(const std::string& prefix);

/// @return the prefix that announces a length
std::string Prefix(std::uint32_t length);

}  // namespace fuzz
