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

namespace {

// A string export's answer, the buffer grown while the export says it is too small.
template <class Call>
int GrowingAnswer(std::string& text, Call call) {
    for (std::uint32_t size = 4096; size <= (1u << 24); size *= 4) {
        std::string buffer(size, '\0');
        int result = call(buffer.data(), size);
        if (result != ENG_BUFFER_TOO_SMALL) {
            text = buffer.c_str();
            return result;
        }
    }
    return ENG_BUFFER_TOO_SMALL;
}

} // namespace

int EngineRunner::Models(const std::string& script) {
    std::string models;
    int result = GrowingAnswer(models, [&](char* buffer, std::uint32_t size) {
        return GetAvailableModelsA(script.c_str(), buffer, size);
    });
    std::printf("%s", models.c_str());
    if (result != 0) {
        std::printf("%s: no models\n", script.c_str());
    }
    return result == 0 ? 0 : 1;
}

int EngineRunner::Model(const std::string& script, const std::string& model) {
    std::string ignored;
    GrowingAnswer(ignored, [&](char* buffer, std::uint32_t size) {
        return GetAvailableModelsA(script.c_str(), buffer, size);
    });
    std::uint32_t level = 0;
    std::string streams(4096, '\0');
    std::string folder(4096, '\0');
    int result = GetModelInfoA(model.c_str(), 7, &level, streams.data(), 4096, folder.data(), 4096);
    if (result != 0) {
        std::printf("%s: not installable on this system\n", model.c_str());
        return 1;
    }
    std::string list = streams.c_str();
    for (char& c : list) {
        c = c == '\n' ? ' ' : c;
    }
    std::printf("Model:         %s\n", model.c_str());
    std::printf("Streams:       %s\n", list.c_str());
    std::printf("INF folder:    %s\n", folder.c_str()[0] != '\0' ? folder.c_str() : "(the package's)");
    std::printf("Network level: %u\n", level);
    return 0;
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
