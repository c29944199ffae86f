// Runs the engine through its exports only, in the order a setup host calls them.
#pragma once

#include <optional>
#include <string>

struct RunRequest {
    bool uninstall = false;
    std::string script;
    std::string variables;
    std::string outFile;
    std::optional<std::string> language;
    std::optional<std::string> workdir;
};

class EngineRunner {
public:
    // Exit codes: 0 when the export returned true, 1 when false.
    static int Validate(const std::string& script);
    // DoInstall or DoUninstall on a worker thread, while this thread polls the progress.
    static int Run(const RunRequest& request);
};
