#include "CommandLine.h"

#include <set>

namespace {

const std::set<std::string> kValueOptions = {"--machine",  "--log", "--var", "--lang",
                                             "--workdir",  "--os",  "--sp",  "--locale",
                                             "--computer", "--user"};

} // namespace

bool CommandLine::Parse(int argc, char** argv, CommandLine& out, std::string& error) {
    out = CommandLine();
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--help" || argument == "-h") {
            out.help = true;
            continue;
        }
        if (argument.rfind("--", 0) != 0 || argument == "--") {
            if (out.command.empty()) {
                out.command = argument;
            } else {
                out.positional.push_back(argument);
            }
            continue;
        }
        std::string name = argument;
        std::string value;
        bool inlineValue = false;
        auto equals = argument.find('=');
        if (equals != std::string::npos) {
            name = argument.substr(0, equals);
            value = argument.substr(equals + 1);
            inlineValue = true;
        }
        if (kValueOptions.count(name) == 0) {
            error = "unknown option " + name;
            return false;
        }
        if (!inlineValue) {
            if (i + 1 >= argc) {
                error = name + " needs a value";
                return false;
            }
            value = argv[++i];
        }
        if (name == "--machine") {
            out.machine = value;
        } else if (name == "--log") {
            out.log = value;
        } else if (name == "--lang") {
            out.language = value;
        } else if (name == "--workdir") {
            out.workdir = value;
        } else if (name == "--var") {
            if (value.find('=') == std::string::npos) {
                error = "--var takes NAME=VALUE, not " + value;
                return false;
            }
            out.variables.push_back(value);
        } else {
            out.options[name] = value;
        }
    }
    return true;
}

std::string CommandLine::JoinedVariables() const {
    std::string joined;
    for (const std::string& variable : variables) {
        if (!joined.empty()) {
            joined += '\n';
        }
        joined += variable;
    }
    return joined;
}
