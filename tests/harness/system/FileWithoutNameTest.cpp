#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

struct Nameless {
    std::string name;
    std::string video;  // content of the element of that name
};

std::ostream& operator<<(std::ostream& out, const Nameless& row) {
    return out << row.video;
}

class FileWithoutName : public Dialect20, public testing::WithParamInterface<Nameless> {
 protected:
    static std::string Event1() {
        return "<recording-event reid=\"E1\"><video>" + GetParam().video + "</video></recording-event>";
    }
};

TEST_P(FileWithoutName, Ends10) {
    Connect();
    dvr->Sends(Xml({Event1()}));
    harness->Logs(32, "Found event E1");
    DiesOfAMissingName();
}

TEST_P(FileWithoutName, Ends20) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Describes("E1", Event1());
    DiesOfAMissingName();
}

INSTANTIATE_TEST_SUITE_P(
    Being, FileWithoutName,
    testing::Values(Nameless{"Metadata", "<metadata/>"},
                    Nameless{"AChildOfAStream",
                             "<streams><stream><file name=\"a\"/><file/></stream></streams>"},
                    Nameless{"ACommentInAStream", "<streams><stream><!--file--></stream></streams>"},
                    Nameless{"TextInAStream", "<streams><stream>file</stream></streams>"},
                    Nameless{"AChildOfALaterSibling",
                             "<metadata name=\"m\"/><streams><stream/><other><file/></other></streams>"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
