#include "tests/rig/result/MadeUp.h"

#include <gtest/gtest.h>

namespace rig {
namespace {

constexpr std::int64_t kBegin = 1'795'212'187'123'456;  // 2026-11-20T22:03:07Z

result::CheckResult Check(const std::string& id, result::Verdict verdict) {
    return {result::LastingId(id),        "What is required.",       verdict,
            "what was expected of " + id, "what was found of " + id, {}};
}

}  // namespace

result::Result MadeUp() {
    result::RunResult run;
    run.name = "made-up.log:1";
    run.switches = "-p 2 -e";
    run.begin = kBegin;
    run.end = kBegin + 2'500'000;
    run.checks = {Check("made-up.pass", result::Verdict::Pass),
                  Check("made-up.known", result::Verdict::KnownFailure),
                  Check("made-up.not-reached", result::Verdict::NotReached),
                  Check("made-up.inconclusive", result::Verdict::Inconclusive),
                  Check("made-up.environment", result::Verdict::Environment),
                  Check("made-up.fail", result::Verdict::Fail)};
    run.checks.back().evidence = {{"made-up.log", 3, "Sending DONE"}, {"made-up.log", 99, "not of this run"}};
    run.timings = {{"GET_FILE", 3, 1.04, 2.5, 2.5, 2.5}};
    run.steps = {{result::Step::Kind::FromDvr, kBegin + 1000, "OK", 1},
                 {result::Step::Kind::Fault, kBegin + 250'000, "processing 'invalidEvent' option [event]", 2},
                 {result::Step::Kind::FromHarness, kBegin + 2'500'000, "DONE", 3},
                 {result::Step::Kind::Note, std::nullopt, "shutting down", 4}};
    run.log = {{1, kBegin + 1000, 1, "got an OK"},
               {2, kBegin + 250'000, 32, "processing 'invalidEvent' option [event]"},
               {3, kBegin + 2'500'000, 16, "Sending DONE"},
               {4, std::nullopt, std::nullopt, "shutting down"}};
    return {{run}};
}

result::Result With(result::Verdict verdict) {
    result::RunResult run;
    run.name = "made-up.log:1";
    run.checks = {Check("made-up.check", verdict)};
    return {{run}};
}

pugi::xml_document Read(const std::string& page) {
    pugi::xml_document document;
    const auto result =
        document.load_string(page.c_str(), pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata);
    EXPECT_TRUE(result) << result.description() << " at "
                        << page.substr(static_cast<std::size_t>(result.offset), 80);
    return document;
}

pugi::xml_node ById(const pugi::xml_node& page, const std::string& id) {
    return page.find_node([&id](const pugi::xml_node& node) { return node.attribute("id").value() == id; });
}

std::string TextOf(const pugi::xml_node& node) {
    std::string text = node.value();
    for (const pugi::xml_node& child : node.children()) {
        text += TextOf(child);
    }
    return text;
}

}  // namespace rig
