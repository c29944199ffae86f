#include "EngineRunner.h"

#include "EngineExports.h"
#include "ProgressView.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#ifdef _WIN32
#include <io.h>
#define ENGINE_ISATTY(fd) _isatty(fd)
#define ENGINE_FILENO(f) _fileno(f)
#else
#include <unistd.h>
#define ENGINE_ISATTY(fd) isatty(fd)
#define ENGINE_FILENO(f) fileno(f)
#endif

namespace {

void Prepare(const RunRequest& request) {
    if (request.workdir) {
        SetWorkingDirA(request.workdir->c_str());
    }
    if (request.language) {
        SetLanguageA(request.language->c_str());
    }
}

void Poll(ProgressView& view) {
    std::uint32_t total = 0;
    std::uint32_t current = 0;
    char title[1000] = {};
    GetTotalUnits(&total);
    GetCurrentUnits(&current);
    GetCurrentTitle(title);
    view.Update(total, current, title);
}

} // namespace

int EngineRunner::Validate(const std::string& script) {
    bool valid = ValidateScriptA(script.c_str());
    std::printf("%s: %s\n", script.c_str(), valid ? "valid" : "not valid");
    return valid ? 0 : 1;
}

int EngineRunner::Run(const RunRequest& request) {
    Prepare(request);
    std::atomic<bool> done{false};
    bool result = false;
    std::thread worker([&] {
        const char* outFile = request.outFile.empty() ? nullptr : request.outFile.c_str();
        result = request.uninstall
                         ? DoUninstallA(request.script.c_str(), request.variables.c_str(), outFile)
                         : DoInstallA(request.script.c_str(), request.variables.c_str(), outFile);
        done = true;
    });
    ProgressView view(stdout, ENGINE_ISATTY(ENGINE_FILENO(stdout)) != 0);
    while (!done) {
        Poll(view);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    worker.join();
    Poll(view);
    view.Finish();
    std::printf("%s %s\n", request.uninstall ? "Uninstall" : "Install",
                result ? "finished." : "failed; the debug log tells why.");
    if (GetRebootAlert() != 0) {
        std::printf("A restart of the machine is needed to finish.\n");
    }
    return result ? 0 : 1;
}
