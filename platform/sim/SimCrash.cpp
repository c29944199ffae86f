// The crash dump group of the seam on the host: fatal signals stand for unhandled exceptions,
// and the dump is a text file with the signal and the stack of the thread that failed.
#include "os/Crash.h"

#include "os/Files.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <unistd.h>

namespace os {

namespace {

std::atomic<CrashFilter> gFilter{nullptr};

void OnFatalSignal(int signal, siginfo_t* info, void*) {
    if (CrashFilter filter = gFilter.load()) {
        filter(info);
    }
    // SA_RESETHAND restored the default action: the signal ends the process as it would have.
    ::raise(signal);
}

// A stack overflow leaves no stack for the handler: it runs on a stack of its own, one for each
// thread that installs the filter (the thread that runs the install). The stack is never freed,
// since a signal may come at any time until the thread ends.
void UseAlternateSignalStack() {
    constexpr size_t kSize = 256 * 1024;
    thread_local void* stack = nullptr;
    if (stack != nullptr) {
        return;
    }
    stack = std::malloc(kSize);
    if (stack == nullptr) {
        return;
    }
    stack_t alternate{};
    alternate.ss_sp = stack;
    alternate.ss_size = kSize;
    if (::sigaltstack(&alternate, nullptr) != 0) {
        std::free(stack);
        stack = nullptr;
    }
}

} // namespace

void SetUnhandledExceptionFilter(CrashFilter filter) {
    gFilter.store(filter);
    UseAlternateSignalStack();
    struct sigaction action {};
    action.sa_sigaction = OnFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_RESETHAND | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        ::sigaction(signal, &action, nullptr);
    }
}

Error MiniDumpWriteDump(const std::string& path, void* exceptionPointers, DumpStep& failedStep) {
    std::FILE* file = nullptr;
    Error rc = fsopen(path, "wb", Share::DenyReadWrite, file);
    if (rc != error::Success) {
        failedStep = DumpStep::CreateFile;
        return rc;
    }
    auto* info = static_cast<siginfo_t*>(exceptionPointers);
    std::fprintf(file, "Engine crash dump\nsignal: %d (%s)\naddress: %p\nstack:\n",
                 info != nullptr ? info->si_signo : 0,
                 info != nullptr ? ::strsignal(info->si_signo) : "unknown",
                 info != nullptr ? info->si_addr : nullptr);
    std::fflush(file);
    void* frames[64];
    int count = ::backtrace(frames, 64);
    ::backtrace_symbols_fd(frames, count, ::fileno(file));
    std::fclose(file);
    return error::Success;
}

} // namespace os
