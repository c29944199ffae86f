// Two installcli runs of different products into one machine at the same time, again and again:
// the uninstall log keeps the records of both, and each product's files are there.
#include "CliTest.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace {

namespace fs = std::filesystem;

class ConcurrentInstallTest : public e2e::CliTest {
protected:
    ConcurrentInstallTest() : CliTest("concurrent") {}

    // A package of one component that copies one file, for `product`; its script.
    std::string package(const std::string& slot, const std::string& product) {
        fs::path pkg = root / slot;
        e2e::WriteHostFile(pkg / "install/Config/product.ini",
                           "[GENERAL]\nLogName=" + slot + ".log\nProductKey=" + product + "\n");
        e2e::WriteHostFile(pkg / "install/Config/install.map", "[Components]\nApp=App.cif\n");
        e2e::WriteHostFile(pkg / "install/Config/App.cif",
                           "[Defines]\nPAYLOAD=$GUESSED_ROOT_DIR$\\payload\n[App]\nVersion=1.0\n"
                           "[App_Actions]\nFile,COPY,$PAYLOAD$\\app.txt,$INSTALL_DIR$\\\n");
        e2e::WriteHostFile(pkg / "payload/app.txt", product + "\n");
        e2e::WriteHostFile(pkg / "install/setup.isf",
                           "[Version]\nScriptVersion=14.0.12.0\n[Install]\nInstallDir="
                           "$PROGRAMFILES_DIR$\\" + product + "\nApp=1\n");
        return (pkg / "install/setup.isf").string();
    }
};

TEST_F(ConcurrentInstallTest, FiftyPairsOfInstallsLoseNoRecord) {
    std::string dir = machine("xp");
    fs::path log = root / "xp/drive_c/WINDOWS/system32/QorFiles.ulf";
    constexpr int kRounds = 50;
    for (int round = 0; round < kRounds; ++round) {
        std::vector<std::string> products = {"First" + std::to_string(round),
                                             "Second" + std::to_string(round)};
        std::vector<std::string> scripts = {package("a", products[0]),
                                            package("b", products[1])};
        std::vector<e2e::CliResult> results(2);
        std::vector<std::thread> runs;
        for (int who = 0; who < 2; ++who) {
            runs.emplace_back([&, who] {
                results[who] = run("install --machine '" + dir + "' '" + scripts[who] + "'");
            });
        }
        for (std::thread& runner : runs) {
            runner.join();
        }
        std::string records = e2e::ReadHostFile(log);
        for (int who = 0; who < 2; ++who) {
            ASSERT_EQ(0, results[who].code) << results[who].output;
            const std::string& product = products[who];
            EXPECT_NE(std::string::npos, records.find("App," + product + "=1"))
                    << "round " << round << ": the component of " << product << " is lost";
            EXPECT_NE(std::string::npos,
                      records.find("[App_Files," + product + "]\r\nC:\\Program Files\\" +
                                   product + "\\app.txt=1"))
                    << "round " << round << ": the files of " << product << " are lost";
            EXPECT_TRUE(fs::exists(root / "xp/drive_c/Program Files" / product / "app.txt"));
        }
        if (HasFailure()) {
            break;
        }
    }
}

} // namespace
