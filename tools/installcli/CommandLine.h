// The arguments of installcli, taken apart.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

struct CommandLine {
    std::string command;                 // validate, install, uninstall, machine, help
    std::vector<std::string> positional; // what is not an option
    std::optional<std::string> machine;
    std::optional<std::string> log;
    std::optional<std::string> language;
    std::optional<std::string> workdir;
    std::vector<std::string> variables;         // NAME=VALUE, in order
    std::map<std::string, std::string> options; // the other --name value pairs
    bool help = false;

    // False with a message for an unknown option or a missing value.
    static bool Parse(int argc, char** argv, CommandLine& out, std::string& error);
    // The variables joined for the engine: one NAME=VALUE a line.
    std::string JoinedVariables() const;
};
