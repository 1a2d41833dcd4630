#include <map>

#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

using Values = std::map<std::string, std::string>;

/// How a message leaves the switches, the counters, the flags and the lists. All of them are set to values
/// that a handler which forgets something would not leave, and all that are not named must stay.
class State : public Dialogue {
 protected:
    State() { Set({{"E1", "a"}, {"E1", "b"}, {"E1", "c"}}); }

    void Set(const Files& files) {
        protocol.closeEarly = 3;
        protocol.doneDuration = 30;
        protocol.sleepForGetFile = 7;
        for (const auto& [name, flag] : kFlags) {
            protocol.*flag = true;
        }
        protocol.invalidFileCount = 5;
        protocol.fileRequestPending = true;
        protocol.eventRequestPending = true;
        protocol.rehashPending = true;
        protocol.filesToReceive = files;
        protocol.events = {"E1", "E2", "E3"};
    }

    Values Now() const {
        Values values = {{"closeEarly", std::to_string(protocol.closeEarly)},
                         {"doneDuration", std::to_string(protocol.doneDuration)},
                         {"sleepForGetFile", std::to_string(protocol.sleepForGetFile)},
                         {"invalidFileCount", std::to_string(protocol.invalidFileCount)},
                         {"fileRequestPending", OnOff(protocol.fileRequestPending)},
                         {"eventRequestPending", OnOff(protocol.eventRequestPending)},
                         {"rehashPending", OnOff(protocol.rehashPending)},
                         {"files", ""},
                         {"events", ""}};
        for (const auto& [name, flag] : kFlags) {
            values[name] = OnOff(protocol.*flag);
        }
        for (const auto& [reid, file] : protocol.filesToReceive) {
            values["files"] += reid + "/" + file + " ";
        }
        for (const std::string& event : protocol.events) {
            values["events"] += event + " ";
        }
        return values;
    }

    /// The DVR says `text`, which changes these values and no others. Other tests check what it makes the
    /// harness log and send.
    void ExpectChanges(const std::string& text, const Values& changes) {
        SCOPED_TRACE(text);
        Values expected = changes;
        expected.merge(Now());
        Say(text);
        TakeJournal();
        EXPECT_EQ(Now(), expected);
    }

 private:
    static std::string OnOff(bool value) { return value ? "on" : "off"; }

    const std::map<std::string, bool VelProtocolBase::*> kFlags = {
        {"rehash", &VelProtocolBase::rehash},
        {"invalidEvent", &VelProtocolBase::invalidEvent},
        {"invalidFile", &VelProtocolBase::invalidFile},
        {"transportException", &VelProtocolBase::transportException},
        {"xferInProgress", &VelProtocolBase::xferInProgress},
        {"upgrade", &VelProtocolBase::upgrade},
        {"sizeError", &VelProtocolBase::sizeError},
        {"configUpdate", &VelProtocolBase::configUpdate}};
};

TEST_F(State, IsLeftAloneByMessagesThatAreOnlyAnsweredOrLogged) {
    for (const std::string& text :
         {Msg("OK"), Msg("XFER_IN_PROGRESS", R"( reid="E1")"), Msg("SOFTWARE_UPDATE_CONFIRM"),
          Msg("CONFIGURATION_UPDATE_ERROR"), Msg("HELLO"), std::string("<msg />"), Msg("EVENT_XFER_ACK"),
          Acknowledgement("E2")}) {
        ExpectChanges(text, {});
    }
}

TEST_F(State, IsLeftAloneByACompletionThatIsNone) {
    for (const std::string& text : {Msg("FILE_COMPLETE"), FileComplete("E1", "b", R"( hashCode="H")")}) {
        protocol.fileRequestPending = true;
        ExpectChanges(text, {{"fileRequestPending", "off"}});
    }
}

TEST_F(State, GainsTheEventsOfAListAndTheDamagedOne) {
    ExpectChanges(EventList("<event>E4</event>"), {{"events", " E1 E2 E3 E4 "}});
}

TEST_F(State, GainsTheFilesOfAnEvent) {
    ExpectChanges(Event("E1", R"(<recording-event><video><metadata name="m"/></video></recording-event>)"),
                  {{"files", "E1/a E1/b E1/c E1/m "}, {"eventRequestPending", "off"}});
}

TEST_F(State, LosesTheFileReportedOn) {
    ExpectChanges(FileComplete("E1", "a"), {{"files", "E1/b E1/c "}});
    Set({{"E1", "a"}, {"E1", "b"}, {"E1", "c"}});
    ExpectChanges(InvalidEvent("E1"), {{"files", "E1/b E1/c "}, {"invalidFileCount", "6"}});
    Set({{"E1", "a"}, {"E1", "b"}, {"E1", "c"}});
    ExpectChanges(TransportException("E1"), {{"files", "E1/b E1/c "}, {"transportException", "off"}});
}

TEST_F(State, LosesTheLastFileOfAnEventAndKeepsWhatIsForTheNext) {
    Set({{"E1", "c"}});
    ExpectChanges(FileComplete("E1", "c"),
                  {{"files", ""}, {"fileRequestPending", "off"}, {"rehashPending", "off"}});
    Set({{"E1", "c"}});
    ExpectChanges(InvalidEvent("E1"), {{"files", ""}, {"invalidFileCount", "6"}});
    Set({{"E1", "c"}});
    ExpectChanges(TransportException("E1"), {{"files", ""}, {"transportException", "off"}});
}

TEST_F(State, LosesTheEventRefused) {
    Set({});
    ExpectChanges(InvalidEvent("E1"), {{"events", "E2 E3 "}, {"invalidEvent", "off"}});
}

TEST_F(State, LosesTheEventAcknowledged) {
    ExpectChanges(Acknowledgement("E1"), {{"events", "E2 E3 "}, {"closeEarly", "2"}});
    ExpectChanges(Acknowledgement("E2"), {{"events", "E3 "}, {"closeEarly", "1"}});
    ExpectChanges(Acknowledgement("E3"), {{"events", ""}});
}

}  // namespace
