#include "tests/support/Dialogue.h"

void Dialogue::Connect(const std::vector<std::string>& switches, const Launch& launch) {
    harness.emplace(switches, launch);
    harness->Listens();
    dvr.emplace();
    harness->LogsUpTo(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
}

void Dialogue::Reconnect() {
    dvr.emplace();
}

void Dialogue::Closes(Here here) {
    harness->Logs(16, "Closing client socket...", here);
    dvr->ReceivesEnd(here);
}

void Dialogue::Ends(Here here) {
    harness->StopsOnInterrupt(here);
    dvr->ReceivesEnd(here);
    EXPECT_EQ("", harness->StandardError());
}

void Dialogue::Dies(const std::string& function, const std::string& expression, Here here) {
    harness->FailsAssertion(function, expression, here);
    dvr->ReceivesEnd(here);
}

void Dialect10::ExportsE1(Here here) {
    Opens(here);
    Describes("E1", {"m1"}, here);
    Completes("E1", "m1", here);
}

void Dialect10::Opens(Here here) {
    dvr->Sends(Ok(), here);
    harness->Logs(1, "got an OK, sending GET_XML", here);
    dvr->Receives(v1::kGetXml, here);
}

void Dialect10::OpensUnseen() {
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
}

void Dialect10::ExportsE1Unseen() {
    OpensUnseen();
    dvr->Sends(Xml({Description("E1", {"m1"})}));
    dvr->Receives(v1::GetFile("E1", "m1"));
    dvr->Sends(FileComplete("E1", "m1"));
    dvr->Receives(v1::EventXferComplete({"E1"}));
    dvr->Receives(v1::kDone);
    dvr->ReceivesEnd();
}

void Dialect10::Describes(const std::string& reid, const std::vector<std::string>& files, Here here) {
    dvr->Sends(Xml({Description(reid, files)}), here);
    harness->Logs(32, "Found event " + reid, here);
    dvr->Receives(v1::GetFile(reid, files.at(0)), here);
}

void Dialect10::Completes(const std::string& reid, const std::string& file, Here here) {
    dvr->Sends(FileComplete(reid, file), here);
    harness->Logs(64, "Got FILE_COMPLETE for: reid=" + reid + "  file=" + file, here);
}

void Dialect10::ReportsDone(const std::vector<std::string>& ids, Here here) {
    harness->Logs(16, "Sending EVENT_XFER_COMPLETE", here);
    for (const std::string& id : ids) {
        harness->Logs(16, "HandleMessage: event = '" + id + "'", here);
    }
    dvr->Receives(v1::EventXferComplete(ids), here);
    harness->Logs(16, "Sending DONE", here);
    dvr->Receives(v1::kDone, here);
}

void Dialect10::IsDone(const std::vector<std::string>& ids, Here here) {
    ReportsDone(ids, here);
    Closes(here);
}

void Dialect20::Start(std::vector<std::string> switches, const Launch& launch) {
    switches.insert(switches.begin(), {"-p", "2"});
    Connect(switches, launch);
}

void Dialect20::Opens(Here here) {
    dvr->Sends(Ok(), here);
    harness->Logs(1, "got an OK, sending GET_EVENT_LIST", here);
    dvr->Receives(v2::kGetEventList, here);
}

void Dialect20::Lists(const std::vector<std::string>& ids, Here here) {
    dvr->Sends(EventList(ids), here);
    harness->Logs(16, "'source' attribute = 'DVR'", here);
}

void Dialect20::Describes(const std::string& reid, const std::string& description, Here here) {
    dvr->Sends(Event(reid, description), here);
    harness->Logs(16, "'reid' attribute in EVENT msg = '" + reid + "'", here);
}

void Dialect20::ReachesFirstFile(const std::string& reid, const std::vector<std::string>& files, Here here) {
    Opens(here);
    Lists({reid}, here);
    dvr->Receives(v2::NextEvent(reid), here);
    Describes(reid, Description(reid, files), here);
    dvr->Receives(v2::GetFile(reid, files.at(0)), here);
}

void Dialect20::Completes(const std::string& reid, const std::string& file, int left,
                          const std::string& attributes, Here here) {
    dvr->Sends(FileComplete(reid, file, attributes), here);
    harness->Logs(64, "Got FILE_COMPLETE for: reid=" + reid + "  file=" + file, here);
    harness->Logs(32, "filesToReceive size = " + std::to_string(left), here);
}

void Dialect20::ReceivesEventXferComplete(const std::string& reid, Here here) {
    harness->Logs(16, "Sending EVENT_XFER_COMPLETE", here);
    dvr->Receives(v2::EventXferComplete(reid), here);
}

void Dialect20::Acknowledges(const std::string& reid, Here here) {
    dvr->Sends(EventXferAck(reid), here);
    harness->Logs(32, "Got EVENT_XFER_ACK for: reid='" + reid + "'", here);
}

void Dialect20::ReceivesDone(const std::string& done, Here here) {
    harness->Logs(16, "Sending DONE", here);
    dvr->Receives(done, here);
}
