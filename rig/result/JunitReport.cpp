#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <pugixml.hpp>
#include <sstream>

#include "rig/base/Elements.h"
#include "rig/result/Reports.h"
#include "rig/result/Result.h"

namespace rig::result {
namespace {

const char* ElementOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Fail:
            return "failure";
        case Verdict::Environment:
        case Verdict::Inconclusive:
            return "error";
        default:
            return "skipped";
    }
}

bool Passes(const CheckResult& check) {
    return check.verdict == Verdict::Pass || check.verdict == Verdict::Warning;
}

std::string Words(const CheckResult& check) {
    return fmt::format("{}: expected {}, found {}", NameOf(check.verdict), check.expected, check.found);
}

std::string LinesOf(const CheckResult& check) {
    std::string lines;
    for (const Evidence& line : check.evidence) {
        lines += line.Words() + "\n";
    }
    return lines;
}

void AddOutcome(pugi::xml_node test, const CheckResult& check) {
    pugi::xml_node outcome = test.append_child(ElementOf(check.verdict));
    Set(outcome, "message", Words(check));
    if (outcome.name() == std::string("skipped")) {
        return;
    }
    Set(outcome, "type", NameOf(check.verdict));
    AddText(outcome, LinesOf(check));
}

void AddCase(pugi::xml_node suite, const CheckResult& check) {
    pugi::xml_node test = suite.append_child("testcase");
    Set(test, "name", std::string(check.id));
    Set(test, "classname", fmt::format("velloran.{}", check.id.substr(0, check.id.find('.'))));
    Set(test, "time", "0.000");
    if (!Passes(check)) {
        AddOutcome(test, check);
    }
}

void AddProperty(pugi::xml_node properties, const char* name, const std::string& value) {
    pugi::xml_node property = properties.append_child("property");
    Set(property, "name", name);
    Set(property, "value", value);
}

void AddCounts(pugi::xml_node suite, const RunResult& run) {
    const auto count = [&run](const std::string& element) {
        return std::to_string(
            std::count_if(run.checks.begin(), run.checks.end(), [&element](const CheckResult& check) {
                return !Passes(check) && ElementOf(check.verdict) == element;
            }));
    };
    Set(suite, "tests", std::to_string(run.checks.size()));
    Set(suite, "failures", count("failure"));
    Set(suite, "errors", count("error"));
    Set(suite, "skipped", count("skipped"));
}

/// A case that passes may have no output of its own in every schema: a warning goes into the suite's.
void AddWarnings(pugi::xml_node output, const RunResult& run) {
    std::string text;
    for (const CheckResult& check : run.checks) {
        if (check.verdict == Verdict::Warning) {
            text += fmt::format("{}: {}\n{}", check.id, Words(check), LinesOf(check));
        }
    }
    if (!text.empty()) {
        AddText(output, text);
    }
}

/// The widely used schemas differ in what they require: this satisfies all of them.
void AddSuite(pugi::xml_node suites, const RunResult& run, std::size_t number) {
    pugi::xml_node suite = suites.append_child("testsuite");
    Set(suite, "id", std::to_string(number));
    Set(suite, "package", "velloran");
    Set(suite, "name", run.name + (run.switches.empty() ? "" : " velloran " + run.switches));
    AddCounts(suite, run);
    const std::string seconds = SecondsSince(run.begin, run.end);
    Set(suite, "time", seconds.empty() ? "0.000" : seconds);
    Set(suite, "hostname", "localhost");  // the log does not name it
    if (run.begin) {
        Set(suite, "timestamp", Date(*run.begin).substr(0, std::strlen("2026-11-20T14:03:07")));
    }
    AddProperty(suite.append_child("properties"), "switches", run.switches);
    for (const CheckResult& check : run.checks) {
        AddCase(suite, check);
    }
    AddWarnings(suite.append_child("system-out"), run);
    suite.append_child("system-err");
}

}  // namespace

std::string JunitReport(const Result& result) {
    pugi::xml_document document;
    pugi::xml_node suites = document.append_child("testsuites");
    for (std::size_t number = 0; number < result.runs.size(); ++number) {
        AddSuite(suites, result.runs[number], number);
    }
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

}  // namespace rig::result
