#include "rig/fault/Plan.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <pugixml.hpp>
#include <stdexcept>
#include <utility>

#include "rig/base/Holds.h"
#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"

namespace rig::fault {
namespace {

/// @return the messages of both dialects that the fault acts on
std::vector<std::string> AllMessagesOf(const Fault& fault) {
    std::vector<std::string> all = MessagesOf(fault, 1);
    for (const std::string& message : MessagesOf(fault, 2)) {
        if (!Holds(all, message)) {
            all.push_back(message);
        }
    }
    return all;
}

bool Fits(const Order& order, const std::string& name, const pugi::xml_node& message, int dialect) {
    if (!Holds(MessagesOf(*order.fault, dialect), name) ||
        (!order.message.empty() && name != order.message)) {
        return false;
    }
    const std::string event =
        message.attribute("reid") ? message.attribute("reid").value() : message.attribute("path").value();
    return (order.event.empty() || order.event == event) &&
           (order.file.empty() || order.file == message.attribute("file").value());
}

}  // namespace

Order OrderOf(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const Fault* const fault = Find(name);
    if (fault == nullptr) {
        throw std::runtime_error("--fault: expected a fault that --list-faults gives, found " + Quoted(name));
    }
    Order order{fault, equals == std::string::npos ? "" : text.substr(equals + 1)};
    if (equals != std::string::npos && (!Takes(*fault, order.value) || fault->values.empty())) {
        throw std::runtime_error(fmt::format(
            "--fault {}: expected {}, found {}", name,
            fault->values.empty() ? "no value" : fmt::format("{}", fmt::join(fault->values, ", ")),
            Quoted(order.value)));
    }
    if (order.value.empty() && !fault->values.empty()) {
        order.value = fault->values.front();
    }
    return order;
}

void PlaceOn(Order& order, const std::string& on) {
    const std::size_t colon = on.find(':');
    order.message = on.substr(0, colon);
    order.occurrence =
        colon == std::string::npos ? 0 : ParseNumber<std::size_t>(on.substr(colon + 1)).value_or(0);
    const std::vector<std::string> messages = AllMessagesOf(*order.fault);
    if (!Holds(messages, order.message) || (colon != std::string::npos && order.occurrence == 0)) {
        throw std::runtime_error(
            fmt::format("--on: expected REQUEST or REQUEST:N with N above 0 and one of {}, found {}",
                        fmt::join(messages, ", "), Quoted(on)));
    }
}

void PlaceAt(Order& order, const std::string& at) {
    const std::size_t colon = at.rfind(':');
    order.event = at.substr(0, colon);
    order.file = colon == std::string::npos ? "" : at.substr(colon + 1);
}

Plan::Plan(std::vector<Order> orders, std::uint32_t seed) : random_(seed) {
    for (Order& order : orders) {
        orders_.push_back({std::move(order)});
    }
}

std::optional<Plan::Played> Plan::For(const std::string& text) {
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    const pugi::xml_node message = document.child("msg");
    const std::string name = message.attribute("req").value();
    const int dialect = message.attribute("protocolVersion") ? 2 : 1;
    for (Pending& pending : orders_) {
        const Order& order = pending.order;
        const bool isOpen = !pending.hasActed || (order.fault->always && order.occurrence == 0);
        if (!isOpen || !Fits(order, name, message, dialect) ||
            ++pending.seen < std::max<std::size_t>(order.occurrence, 1)) {
            continue;
        }
        if (std::optional<Played> played = Play(pending, text, dialect)) {
            return played;
        }
    }
    return std::nullopt;
}

std::optional<Plan::Played> Plan::ForCall() {
    for (Pending& pending : orders_) {
        const Order& order = pending.order;
        if (!pending.hasActed && Holds(order.fault->messages, kCall) &&
            ++pending.seen >= std::max<std::size_t>(order.occurrence, 1)) {
            return Play(pending, "", 1);
        }
    }
    return std::nullopt;
}

std::optional<Plan::Played> Plan::Play(Pending& pending, const std::string& text, int dialect) {
    const Order& order = pending.order;
    const std::string other = OtherEventThan(text);
    Script script = order.fault->play({text, dialect, order.value, other, random_});
    if (script.empty()) {
        return std::nullopt;
    }
    pending.hasActed = true;
    return Played{*order.fault, order.value, std::move(script)};
}

/// @return an event that the harness's message does not name
std::string Plan::OtherEventThan(const std::string& text) const {
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    const std::string event = document.child("msg").attribute("reid").value();
    const auto other = std::find_if(events_.begin(), events_.end(),
                                    [&event](const std::string& one) { return one != event; });
    return other == events_.end() ? "" : *other;
}

void Plan::Note(const std::string& text) {
    if (orders_.empty()) {
        return;
    }
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size());
    const pugi::xml_node message = document.child("msg");
    if (std::string(message.attribute("req").value()) == "EVENT_LIST") {
        for (const pugi::xml_node event : message.child("events").children("event")) {
            events_.emplace_back(event.text().get());
        }
    }
}

std::vector<Order> Plan::Orders() const {
    std::vector<Order> orders;
    for (const Pending& pending : orders_) {
        orders.push_back(pending.order);
    }
    return orders;
}

}  // namespace rig::fault
