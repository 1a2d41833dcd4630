#pragma once

#include <ostream>
#include <string>
#include <vector>

/// What the DVR sends and what the harness answers, in bytes.
struct Step {
    std::string sent;
    std::string received;
};

/// A dialogue whose steps and log are the same every time.
struct Script {
    std::string name;
    std::vector<std::string> switches;
    std::vector<Step> steps;
};

std::ostream& operator<<(std::ostream& out, const Script& script);

/// Dialogues that end when the harness closes the connection.
const std::vector<Script>& ScriptsToTheEnd();

/// Dialogues that end the harness.
const std::vector<Script>& FatalScripts();
