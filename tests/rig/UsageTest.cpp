#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/rig/dvr/HarnessLog.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

// Each row of usage.txt.
namespace {

struct UsageRow {
    std::string line;
    std::string arguments;
    std::string errors;
};

void PrintTo(const UsageRow& row, std::ostream* out) {
    *out << row.line;
}

std::vector<UsageRow> ReadUsage() {
    std::ifstream table(VELLORAN_USAGE);
    std::vector<UsageRow> rows;
    for (std::string line; std::getline(table, line);) {
        const std::size_t cell = line.find("| ");
        if (!line.empty() && line.front() != '#') {
            rows.push_back({line, line.substr(0, cell), line.substr(cell + 2)});
        }
    }
    return rows;
}

std::string Replaced(std::string text, const std::string& part, const std::string& other) {
    const std::size_t start = text.find(part);
    return start == std::string::npos ? text : text.replace(start, part.size(), other);
}

class Usage : public testing::TestWithParam<UsageRow> {};

TEST_P(Usage, EndsWithStatus64AndOneLine) {
    const TemporaryFolder folder;
    folder.Write("log", HarnessLog("rig velloran[7]: ").Connected().Received(R"(<msg req="OK"/>)").Text());
    const std::string log = (folder.Path() / "log").string();
    std::vector<std::string> arguments;
    std::istringstream words(GetParam().arguments);
    for (std::string word; words >> word;) {
        arguments.push_back(word == "''" ? "" : Replaced(Replaced(word, "\\n", "\n"), "$LOG", log));
    }
    std::string program = "velloran-rig";
    if (!arguments.empty() &&
        std::string("dvr judge run merge diff history proxy").find(arguments[0]) != std::string::npos) {
        program += " " + arguments[0];
    }
    const std::string hint = "(" + program + " --help tells more)";

    const ProgramResult result = RunRig(arguments);
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors,
              program + ": " + Replaced(Replaced(GetParam().errors, "$LOG", log), "(--help)", hint) + "\n");
    EXPECT_EQ(result.output, "");
}

std::string NameOf(const testing::TestParamInfo<UsageRow>& tested) {
    std::string name = std::to_string(tested.index);
    for (const char letter : tested.param.arguments) {
        const bool isOfWord = std::isalnum(static_cast<unsigned char>(letter)) != 0;
        name += isOfWord ? letter : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Each, Usage, testing::ValuesIn(ReadUsage()), NameOf);

}  // namespace
