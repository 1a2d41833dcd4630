#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rig/result/Result.h"

namespace rig::judge {

/// How many lines prove one thing, at most.
constexpr std::size_t kProofLines = 4;

class KeptLines;

/// Where a line is and its text, while the line is current.
struct Place {
    const std::string& file;
    std::uint64_t line;
    std::string_view text;
    KeptLines* kept = nullptr;  // takes the lines of this run that prove something; the run sets it
};

/// A line that is kept by itself.
struct KeptLine {
    const std::string* file = nullptr;
    std::uint64_t line = 0;
    std::string text;  // no more of it than a report shows

    result::Evidence Proof() const;
};

/// The lines of one run that prove something, one after another: almost every line of a short run does, and
/// few of them are ever shown.
class KeptLines {
 public:
    KeptLines();

    /// @return the line's index. A line that is kept already gets no other
    std::uint32_t Keep(const Place& place);

    /// Keeps a line elsewhere, instead of what was there.
    void Keep(const Place& place, KeptLine& line);

    result::Evidence At(std::uint32_t index) const;

    /// @return whether a line came before another one, in this file or in an earlier one. A line that was not
    ///         kept came before none
    bool IsBefore(const result::Evidence& line, const result::Evidence& other) const;

 private:
    struct Line {
        const std::string* file;
        std::uint64_t number;
        std::size_t begin;  // in texts_
        std::size_t size;
    };

    const std::string& NameOf(const std::string& file);

    std::list<std::string> files_;  // their names; the last is the current one
    std::vector<Line> lines_;
    std::string texts_;
};

/// The first few lines that prove something.
class Proof {
 public:
    Proof() = default;
    Proof(std::vector<result::Evidence> made)
        : made_(std::make_shared<const std::vector<result::Evidence>>(std::move(made))) {}

    bool IsFull() const { return count_ + (made_ ? made_->size() : 0) >= kProofLines; }

    /// Adds a line, unless it was the last one that was added.
    void Add(const Place& place);
    void Add(const result::Evidence& line);

    /// @return the lines as reports show them
    std::vector<result::Evidence> Lines() const;

 private:
    const KeptLines* kept_ = nullptr;
    std::array<std::uint32_t, kProofLines> indices_{};
    std::uint32_t count_ = 0;
    std::shared_ptr<const std::vector<result::Evidence>> made_;  // lines with a note of their own: few have
};

}  // namespace rig::judge
