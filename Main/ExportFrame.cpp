#include "ExportFrame.h"

#include "os/Machine.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace {

// Each reason is told once per process, so that a host that calls many exports is not flooded.
void Report(const std::string& why) {
    static std::mutex lock;
    static std::set<std::string> told;
    std::lock_guard<std::mutex> guard(lock);
    if (told.insert(why).second) {
        std::fprintf(stderr, "engine: %s\n", why.c_str());
    }
}

} // namespace

ExportFrame::ExportFrame() {
    std::string why;
    mReady = os::PlatformReady(why);
    if (!mReady) {
        Report(why);
    }
}

ExportFrame::~ExportFrame() {
    if (mReady) {
        os::EndOfCall();
    }
}
