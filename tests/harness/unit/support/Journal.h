#pragma once

#include <initializer_list>
#include <string>
#include <vector>

/// The journal: everything that the harness did, in order, one line each: what it logged and every platform
/// function that it called. Tests state what they expect with EXPECT_JOURNAL and the functions below, each of
/// which describes one line.

/// One expected line.
struct Entry {
    std::string text;
    unsigned int level = 0;  // of a log line; 0 for any other
};

/// Expected lines: one entry, or the several that one step of the harness leaves.
class Entries {
 public:
    Entries(Entry entry) : entries_{std::move(entry)} {}
    Entries(std::vector<Entry> entries) : entries_(std::move(entries)) {}

    std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
    std::vector<Entry>::const_iterator end() const { return entries_.end(); }

 private:
    std::vector<Entry> entries_;
};

/// A log line of that level. Expected only while the level is on in the mask; while it is off, the line must
/// be missing. Its "velloran:LINE " is already checked and is not part of `text`.
Entry Logged(unsigned int level, const std::string& text);

Entry Read(std::size_t asked, std::size_t got);
Entry ReadFailed(std::size_t asked, int error);
Entry Wrote(const std::string& bytes);
/// A write that was scripted not to take all bytes, or to fail.
Entry WroteOnly(const std::string& bytes, long result);
Entry Paused(unsigned int microseconds);  // usleep
Entry Slept(unsigned int seconds);        // sleep
Entry Ran(const std::string& command);    // system
/// A document saved. `content` is that of the file: printed with indentation, a newline after each element.
Entry Saved(const std::string& path, const std::string& content);
/// An assertion that failed in the function with that signature. Only as the second-to-last line of an
/// EXPECT_ABORT.
Entry AssertionFailed(const std::string& function, const std::string& expression);
/// An exception that nothing caught.
Entries Uncaught(const std::string& type, const std::string& what);
/// Any other line: what the harness itself printed to standard error.
Entry Printed(const std::string& line);
/// No line, for where an argument is required: EXPECT_ABORT(protocol.HandleMessage(), Nothing()).
Entries Nothing();

/// Adds a line. For the recorders only.
void AddToJournal(const std::string& line);
void AddLogLine(unsigned int level, const std::string& processName, const std::string& line);

/// The journal is full after that many lines: the process then ends at once with status kJournalFull, without
/// adding more. For EXPECT_STATUS_AT_ONCE of a harness that would never end.
void LimitJournal(std::size_t lines);
constexpr int kJournalFull = 77;

/// From now on each line is also written to standard error at once. For processes that end.
void EchoJournal();

/// Empties the journal.
/// @return its lines, each with a newline
std::string TakeJournal();

/// @return the log lines since the journal was last taken as the harness streamed them, "velloran:LINE "
/// included
const std::vector<std::string>& RawLogLines();

/// @return the expected lines, each with a newline, without log lines that the mask switches off
std::string Expected(std::initializer_list<Entries> entries);

/// @return bytes in a form that shows each of them and stays on one line
std::string Shown(const std::string& bytes);

/// Expects exactly these lines, and empties the journal: EXPECT_JOURNAL(Received(ok), Logged(1, "..."));
#define EXPECT_JOURNAL(...) EXPECT_EQ(Expected({__VA_ARGS__}), TakeJournal())
