#include "rig/report/JunitReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>

namespace rig::report {
namespace {

const char* ElementOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Fail:
            return "failure";
        case Verdict::Environment:
            return "error";
        default:
            return "skipped";
    }
}

void AddCase(pugi::xml_node suite, const CheckResult& check) {
    pugi::xml_node test = suite.append_child("testcase");
    test.append_attribute("name") = check.id.c_str();
    const std::string group = check.id.substr(0, check.id.find('.'));
    test.append_attribute("classname") = ("velloran." + group).c_str();
    test.append_attribute("time") = "0";
    if (check.verdict == Verdict::Pass) {
        return;
    }
    pugi::xml_node outcome = test.append_child(ElementOf(check.verdict));
    const std::string message =
        fmt::format("{}: expected {}, found {}", NameOf(check.verdict), check.expected, check.found);
    outcome.append_attribute("message") = message.c_str();
    if (outcome.name() == std::string("skipped")) {
        return;
    }
    outcome.append_attribute("type") = NameOf(check.verdict);
    std::string lines;
    for (const Evidence& line : check.evidence) {
        lines += fmt::format("{}:{}: {}\n", line.file, line.line, line.text);
    }
    outcome.text() = lines.c_str();
}

void AddSuite(pugi::xml_node suites, const RunResult& run) {
    const auto count = [&run](const std::string& element) {
        return std::count_if(run.checks.begin(), run.checks.end(), [&element](const CheckResult& check) {
            return check.verdict != Verdict::Pass && ElementOf(check.verdict) == element;
        });
    };
    const double seconds = run.begin && run.end ? static_cast<double>(*run.end - *run.begin) / 1e6 : 0;
    pugi::xml_node suite = suites.append_child("testsuite");
    suite.append_attribute("name") = (run.name + " velloran " + run.switches).c_str();
    suite.append_attribute("tests") = static_cast<unsigned long long>(run.checks.size());
    suite.append_attribute("failures") = static_cast<long long>(count("failure"));
    suite.append_attribute("errors") = static_cast<long long>(count("error"));
    suite.append_attribute("skipped") = static_cast<long long>(count("skipped"));
    suite.append_attribute("time") = fmt::format("{:.3f}", seconds).c_str();
    for (const CheckResult& check : run.checks) {
        AddCase(suite, check);
    }
}

}  // namespace

std::string JunitReport(const Result& result) {
    pugi::xml_document document;
    pugi::xml_node suites = document.append_child("testsuites");
    for (const RunResult& run : result.runs) {
        AddSuite(suites, run);
    }
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

}  // namespace rig::report
