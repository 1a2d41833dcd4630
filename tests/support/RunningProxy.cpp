#include "tests/support/RunningProxy.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "rig/base/Descriptor.h"
#include "tests/support/Program.h"
#include "tests/support/Until.h"

namespace {

constexpr const char* kAddress = "\"address\":\"127.0.0.1:";

std::string Local(int port) {
    return "127.0.0.1:" + std::to_string(port);
}

std::string TextOf(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

}  // namespace

RunningProxy::RunningProxy(int harness, int listen, const std::vector<std::string>& options, Here here) {
    std::vector<std::string> all = {"--listen", Local(listen), "--harness", Local(harness)};
    all.insert(all.end(), options.begin(), options.end());
    Start(all);
    if (not Until([this] { return not Log().empty(); })) {
        FailAt(here, "the proxy does not listen: " + Errors());
        return;
    }
    const std::string first = Log().front();
    port_ = std::stoi(first.substr(first.find(kAddress) + std::string(kAddress).size()));
}

RunningProxy::RunningProxy(const std::string& command) : port_(5001) {
    Start({"--harness-command", command});
}

void RunningProxy::Start(const std::vector<std::string>& arguments) {
    const auto file = [this](const char* name) {
        return rig::Descriptor(open((folder_.Path() / name).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    };
    std::vector<std::string> all = {"proxy", "--log", (folder_.Path() / "log").string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    pid_ = StartRig(all, file("output").Number(), file("errors").Number());
}

RunningProxy::~RunningProxy() {
    if (pid_ not_eq -1) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

std::string RunningProxy::LogText() const {
    return TextOf(folder_.Path() / "log");
}

std::vector<std::string> RunningProxy::Log() const {
    std::vector<std::string> lines;
    std::istringstream log(LogText());
    // Its last line may not be whole yet.
    for (std::string line; std::getline(log, line) and not log.eof();) {
        lines.push_back(line);
    }
    return lines;
}

void RunningProxy::Pauses() const {
    kill(pid_, SIGSTOP);
    waitpid(pid_, nullptr, WUNTRACED);
}

void RunningProxy::GoesOn() const {
    kill(pid_, SIGCONT);
}

void RunningProxy::Gets(int signal) const {
    kill(pid_, signal);
}

int RunningProxy::Ends(int signal, Here here) {
    Gets(signal);
    int found = 0;
    if (not Until([&] { return waitpid(pid_, &found, WNOHANG) == pid_; })) {
        FailAt(here, "the proxy does not end");
        return -1;
    }
    pid_ = -1;
    return WIFEXITED(found) ? WEXITSTATUS(found) : -1;
}

std::string RunningProxy::Errors() const {
    return TextOf(folder_.Path() / "errors");
}

std::string RunningProxy::Output() const {
    return TextOf(folder_.Path() / "output");
}
