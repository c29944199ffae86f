// The process status group of the seam finds and ends processes as Windows does.
#include "os/ProcessStatus.h"
#include "support/TestMachine.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>

namespace {

using namespace os;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

TEST(ProcessStatusConformance, EveryRunningProgramHasItsBaseName) {
    TestMachine machine;
    std::vector<std::uint32_t> ids;
    ASSERT_EQ(error::Success, EnumProcesses(ids));
    ASSERT_FALSE(ids.empty());
    // The service control manager runs on every NT system, Wine's included.
    bool found = false;
    for (std::uint32_t id : ids) {
        std::string name;
        if (GetModuleBaseName(id, name) == error::Success) {
            EXPECT_EQ(std::string::npos, name.find('\\')) << name;
            found = found || Lower(name) == "services.exe";
        }
    }
    EXPECT_TRUE(found);
}

TEST(ProcessStatusConformance, AProcessThatIsGoneCannotBeOpened) {
    TestMachine machine;
    std::vector<std::uint32_t> ids;
    ASSERT_EQ(error::Success, EnumProcesses(ids));
    std::uint32_t unused = 0x7FFFFFF0;
    while (std::find(ids.begin(), ids.end(), unused) != ids.end()) {
        unused -= 4;
    }
    std::string name;
    EXPECT_EQ(error::InvalidParameter, GetModuleBaseName(unused, name));
    EXPECT_EQ(error::InvalidParameter, TerminateProcess(unused, 1));
}

} // namespace
