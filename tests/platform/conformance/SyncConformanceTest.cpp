// The synchronisation group of the seam: a named mutex is held by one thread at a time, taken
// again by its owner, and released only by it.
#include "os/Process.h"
#include "os/Sync.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace os;

std::uint32_t WaitElsewhere(MutexHandle handle, std::uint32_t milliseconds, Error* release) {
    std::uint32_t result = wait::Failed;
    std::thread other([&] {
        result = WaitForSingleObject(handle, milliseconds);
        *release = ReleaseMutex(handle);
    });
    other.join();
    return result;
}

TEST(SyncConformance, ANamedMutexHasOneOwningThreadThatMayTakeItAgain) {
    TestMachine machine;
    std::string name = "EngineConformanceMutex" + std::to_string(GetCurrentProcessId());
    MutexHandle first;
    MutexHandle second;
    ASSERT_EQ(error::Success, CreateMutex(name, first));
    ASSERT_EQ(error::Success, CreateMutex(name, second));

    EXPECT_EQ(wait::Object0, WaitForSingleObject(first, 0));
    EXPECT_EQ(wait::Object0, WaitForSingleObject(second, 0)); // the owner, through either handle
    Error release = error::Success;
    EXPECT_EQ(wait::Timeout, WaitElsewhere(second, 50, &release));
    EXPECT_EQ(kNotOwner, release);

    EXPECT_EQ(error::Success, ReleaseMutex(first));
    EXPECT_EQ(wait::Timeout, WaitElsewhere(first, 20, &release)); // still held once
    EXPECT_EQ(error::Success, ReleaseMutex(second));
    EXPECT_EQ(kNotOwner, ReleaseMutex(first));

    EXPECT_EQ(wait::Object0, WaitElsewhere(first, 1000, &release));
    EXPECT_EQ(error::Success, release);
    EXPECT_EQ(error::Success, CloseHandle(first));
    EXPECT_EQ(error::Success, CloseHandle(second));
}

} // namespace
