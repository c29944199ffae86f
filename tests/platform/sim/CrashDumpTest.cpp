// The crash filter on the simulated machine: a fatal signal of the install's thread still writes
// its dump, a stack overflow included.
#include "os/Crash.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string gDumpPath;

long WriteDump(void* exceptionPointers) {
    os::DumpStep failed = os::DumpStep::WriteDump;
    os::MiniDumpWriteDump(gDumpPath, exceptionPointers, failed);
    return 0;
}

volatile int gDeeper = 1;

// Each call keeps a frame of its own, so that the stack runs out.
int Overflow(int depth) {
    volatile char frame[512];
    frame[0] = static_cast<char>(depth);
    if (gDeeper == 0) {
        return frame[0];
    }
    return Overflow(depth + 1) + frame[0];
}

TEST(CrashDumpDeathTest, AStackOverflowStillWritesTheDump) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer runtime takes a stack overflow for itself";
#endif
    TestMachine machine;
    gDumpPath = machine.Path("engine.dmp");
    // The child is a fork of this process, on the same simulated machine.
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_DEATH(
            {
                os::SetUnhandledExceptionFilter(WriteDump);
                Overflow(0);
            },
            "");
    std::string dump = TestMachine::ReadFile(gDumpPath);
    EXPECT_NE(std::string::npos, dump.find("signal: 11")) << dump;
}

} // namespace
