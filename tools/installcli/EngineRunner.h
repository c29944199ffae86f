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
    // GetAvailableModels of the script: one model a line. 0, or 1 when there is none.
    static int Models(const std::string& script);
    // GetModelInfo of one model after GetAvailableModels of the script has filled the model
    // table: its streams, INF folder and network level. 0, or 1 when it is not installable.
    static int Model(const std::string& script, const std::string& model);
    // DoInstall or DoUninstall on a worker thread, while this thread polls the progress.
    static int Run(const RunRequest& request);
};
