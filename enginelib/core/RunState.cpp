#include "core/RunState.h"

#include <mutex>

namespace {

struct State {
    IniFile* script = nullptr;
    CStdStr scriptPath;
    CStdStr currentComponent;
    CStdStr currentOem;
    IpcTransfer* reporter = nullptr;
    CStdStr packageDir;
    bool spoolerStopped = false;
    CStdStringList temporaryFiles;
};

std::mutex gLock;
State gState;

} // namespace

IniFile* RunState::GetScript() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.script;
}

void RunState::SetScript(IniFile* script) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.script = script;
}

CStdStr RunState::GetScriptPath() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.scriptPath;
}

void RunState::SetScriptPath(const CStdStr& path) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.scriptPath = path;
}

CStdStr RunState::GetCurrentComponent() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.currentComponent;
}

void RunState::SetCurrentComponent(const CStdStr& name) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.currentComponent = name;
}

CStdStr RunState::GetCurrentOem() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.currentOem;
}

void RunState::SetCurrentOem(const CStdStr& name) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.currentOem = name;
}

IpcTransfer* RunState::GetReporter() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.reporter;
}

void RunState::SetReporter(IpcTransfer* reporter) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.reporter = reporter;
}

CStdStr RunState::GetPackageDir() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.packageDir;
}

void RunState::SetPackageDir(const CStdStr& folder) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.packageDir = folder;
}

bool RunState::IsSpoolerStopped() {
    std::lock_guard<std::mutex> guard(gLock);
    return gState.spoolerStopped;
}

void RunState::SetSpoolerStopped() {
    std::lock_guard<std::mutex> guard(gLock);
    gState.spoolerStopped = true;
}

void RunState::AddTemporaryFile(const CStdStr& path) {
    std::lock_guard<std::mutex> guard(gLock);
    gState.temporaryFiles.Add(path);
}

CStdStringList RunState::TakeTemporaryFiles() {
    std::lock_guard<std::mutex> guard(gLock);
    CStdStringList files;
    files.swap(gState.temporaryFiles);
    return files;
}

void RunState::Reset() {
    std::lock_guard<std::mutex> guard(gLock);
    gState = State();
}
