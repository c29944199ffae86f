// installcli: the console host of the installation engine, and the reference client of its
// exports. On Linux it also makes and inspects simulated Windows machines.
#include "CommandLine.h"
#include "EngineRunner.h"

#ifndef _WIN32
#include "MachineCommands.h"
#endif

#include <cstdio>
#include <filesystem>

namespace {

// The folder of the script when it holds a Config folder, as a package's install folder does.
std::string PackageFolderOf(const std::string& scriptArgument) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path folder = fs::absolute(scriptArgument, error).parent_path();
    for (const char* name : {"Config", "config", "CONFIG"}) {
        if (fs::is_directory(folder / name, error)) {
            return folder.string();
        }
    }
    return std::string();
}

const char* const kUsage =
        "Usage: installcli COMMAND [options] [SCRIPT]\n"
        "\n"
        "Commands:\n"
        "  validate SCRIPT          is the install script valid? (ValidateScript)\n"
        "  models SCRIPT            the models the package offers here (GetAvailableModels)\n"
        "  model SCRIPT NAME        one model's streams, INF folder, network level (GetModelInfo)\n"
        "  install SCRIPT           run the install of a script (DoInstall)\n"
        "  uninstall SCRIPT         run the uninstall of a script (DoUninstall)\n"
#ifndef _WIN32
        "  machine create DIR --os NAME [--sp N] [--locale LCID] [--computer NAME] [--user NAME]\n"
        "                           make a simulated machine (win95 ... win8-x64)\n"
        "  machine show DIR         what a simulated machine is and holds\n"
        "  machine reg DIR KEY [/s] a registry key of a simulated machine, as reg query shows it\n"
        "  machine reboot DIR       restart a simulated machine: the file operations and RunOnce\n"
        "                           batch files waiting for the start run, its programs end\n"
#endif
        "\n"
        "Options of validate, install and uninstall:\n"
#ifndef _WIN32
        "  --machine DIR            the simulated machine (else $ENGINE_MACHINE, else the default\n"
        "                           machine in $XDG_DATA_HOME/installcli/machine)\n"
#endif
        "  --log FILE               the engine's debug log\n"
        "  --var NAME=VALUE         a variable for the script's $NAME$ (repeatable)\n"
        "  --lang LANG              the language of texts (SetLanguage)\n"
        "  --workdir DIR            the application folder (SetWorkingDir); by default the\n"
        "                           script's folder when it holds a Config folder\n"
        "  --help                   this text\n"
        "\n"
        "Exit code: 0 when the engine answered true, 1 when false, 2 for a usage error.\n";

int UsageError(const std::string& message) {
    std::fprintf(stderr, "installcli: %s\n\n%s", message.c_str(), kUsage);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    CommandLine line;
    std::string error;
    if (!CommandLine::Parse(argc, argv, line, error)) {
        return UsageError(error);
    }
    if (line.help || line.command.empty() || line.command == "help") {
        std::printf("%s", kUsage);
        return line.command.empty() && !line.help ? 2 : 0;
    }
#ifndef _WIN32
    if (line.command == "machine") {
        return MachineCommands::Run(line);
    }
#endif
    bool run = line.command == "install" || line.command == "uninstall";
    bool models = line.command == "models" || line.command == "model";
    if (!run && !models && line.command != "validate") {
        return UsageError("unknown command " + line.command);
    }
    if (line.command == "model" ? line.positional.size() != 2 : line.positional.size() != 1) {
        return UsageError(line.command == "model" ? "model takes a script and a model name"
                                                  : line.command + " takes one script");
    }
#ifndef _WIN32
    std::string machine = MachineCommands::SelectMachine(line);
    std::string unreachable;
    auto view = [&](const std::string& path) {
        auto seen = MachineCommands::ToMachinePath(machine, path);
        if (!seen && unreachable.empty()) {
            unreachable = path;
        }
        return seen.value_or(std::string());
    };
    auto packageOf = [&](const std::string& script) {
        return MachineCommands::PackageFolderOf(machine, script);
    };
#else
    auto view = [](const std::string& path) { return path; };
    auto packageOf = [](const std::string&) { return std::string(); };
#endif
    std::string script = view(line.positional[0]);
    RunRequest request;
    request.uninstall = line.command == "uninstall";
    request.script = script;
    request.variables = line.JoinedVariables();
    request.outFile = line.log ? view(*line.log) : std::string();
    request.language = line.language;
    if (line.workdir) {
        request.workdir = view(*line.workdir);
    } else if (std::string package = PackageFolderOf(line.positional[0]); !package.empty()) {
        request.workdir = view(package);
    } else if (std::string folder = packageOf(script); !folder.empty()) {
        request.workdir = folder;
    }
#ifndef _WIN32
    if (!unreachable.empty()) {
        std::fprintf(stderr,
                     "installcli: %s lies outside every drive of the machine (its [Drives] confine "
                     "Z: to another folder)\n",
                     unreachable.c_str());
        return 2;
    }
#endif
    if (line.command == "validate") {
        return EngineRunner::Validate(script);
    }
    if (line.command == "models") {
        return EngineRunner::Models(script);
    }
    if (line.command == "model") {
        return EngineRunner::Model(script, line.positional[1]);
    }
    int code = EngineRunner::Run(request);
#ifndef _WIN32
    std::string log =
            request.outFile.empty()
                    ? MachineCommands::DefaultLogLocation(machine, request.workdir.value_or(""))
                    : request.outFile;
    // Only a log that is there is named.
    if (!log.empty() && MachineCommands::Exists(machine, log)) {
        std::printf("Debug log: %s\n", log.c_str());
    } else {
        std::printf("No debug log was written.\n");
    }
#endif
    return code;
}
