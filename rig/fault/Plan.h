#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "rig/fault/Fault.h"

namespace rig::fault {

/// A fault, and where it is to act.
struct Order {
    const Fault* fault;
    std::string value;           // empty: the fault's first
    std::string message = {};    // of the harness, or CALL; empty: the first that the fault acts on
    std::size_t occurrence = 0;  // of that message, from 1; 0: the first, or all if the fault always acts
    std::string event = {};      // only messages about this event; empty: any
    std::string file = {};       // and only about this file of it; empty: any
};

/// @return the order that "NAME[=VALUE]" stands for. Throws std::runtime_error if there is no such fault, or
/// if it does not take the value.
Order OrderOf(const std::string& fault);

/// Reads "MESSAGE[:N]". Throws std::runtime_error if it is something else, or a message that the fault does
/// not act on.
void PlaceOn(Order& order, const std::string& on);

/// Reads "EVENT[:FILE]"; what comes after the last colon is the file.
void PlaceAt(Order& order, const std::string& at);

/// The faults that a backend has, and which of them are still to come.
class Plan {
 public:
    Plan(std::vector<Order> orders, std::uint32_t seed);

    struct Played {
        const Fault& fault;
        std::string value;
        Script script;
    };

    /// @return what is to be played in place of the harness's message; nothing if it is to pass
    std::optional<Played> For(const std::string& text);

    /// @return the same for a call of the DVR
    std::optional<Played> ForCall();

    /// Takes notice of a message of the DVR: which events there are.
    void Note(const std::string& text);

    bool IsEmpty() const { return orders_.empty(); }

    std::vector<Order> Orders() const;

 private:
    struct Pending {
        Order order;
        std::size_t seen = 0;  // messages that fitted
        bool hasActed = false;
    };

    std::optional<Played> Play(Pending& pending, const std::string& text, int dialect);
    std::string OtherEventThan(const std::string& text) const;

    std::vector<Pending> orders_;
    std::vector<std::string> events_;
    std::mt19937 random_;
};

}  // namespace rig::fault
