#include "sim/HostFile.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using sim::HostFile;
namespace fs = std::filesystem;

class HostFileTest : public ::testing::Test {
protected:
    HostFileTest()
            : dir((fs::temp_directory_path() / ("hostfile-" + std::to_string(::getpid())))
                          .string()) {
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    ~HostFileTest() override {
        for (const auto& entry : fs::recursive_directory_iterator(dir)) {
            ::chmod(entry.path().c_str(), 0700);
        }
        fs::remove_all(dir);
    }
    std::string write(const std::string& name, const std::string& bytes) {
        std::string path = dir + "/" + name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    static std::string read(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    std::string dir;
};

TEST_F(HostFileTest, ExamineAgreesWithTheSingleQuestions) {
    std::string plain = write("plain.txt", "12345");
    std::string marked = write("marked.txt", "x");
    ASSERT_TRUE(HostFile::SetAttributes(marked, os::attr::Hidden | os::attr::ReadOnly));
    std::string locked = write("locked.txt", "");
    ::chmod(locked.c_str(), 0444);
    for (const std::string& path : {plain, marked, locked, dir}) {
        HostFile::Facts facts;
        ASSERT_TRUE(HostFile::Examine(path, facts)) << path;
        bool isDirectory = path == dir;
        EXPECT_EQ(isDirectory, facts.isDirectory) << path;
        EXPECT_EQ(HostFile::Attributes(path, isDirectory), facts.attributes) << path;
        os::FileTimes times;
        ASSERT_TRUE(HostFile::Times(path, times));
        EXPECT_EQ(times.lastWrite, facts.times.lastWrite) << path;
        EXPECT_EQ(times.creation, facts.times.creation) << path;
        EXPECT_EQ(isDirectory ? 0u : HostFile::Size(path), facts.size) << path;
    }
    EXPECT_EQ(os::attr::Archive | os::attr::ReadOnly, HostFile::Attributes(locked, false));
    HostFile::Facts none;
    EXPECT_FALSE(HostFile::Examine(dir + "/missing", none));
}

TEST_F(HostFileTest, CopyTakesContentsTimeAndAttributesAndReplacesAReadOnlyHostFile) {
    std::string big(3 * 1024 * 1024 + 17, 'b');
    std::string source = write("source.bin", big);
    ASSERT_TRUE(HostFile::SetAttributes(source, os::attr::ReadOnly | os::attr::System));
    os::FileTimes times;
    ASSERT_TRUE(HostFile::Times(source, times));
    times.lastWrite.ticks -= 10000000ULL * 86400 * 3;
    ASSERT_TRUE(HostFile::SetTimes(source, times));

    std::string target = write("target.bin", "old and longer than nothing");
    ::chmod(target.c_str(), 0444);
    ASSERT_EQ(os::error::Success, HostFile::Copy(source, target));
    EXPECT_EQ(big, read(target));
    EXPECT_EQ(os::attr::ReadOnly | os::attr::System | os::attr::Archive,
              HostFile::Attributes(target, false));
    os::FileTimes copied;
    ASSERT_TRUE(HostFile::Times(target, copied));
    EXPECT_EQ(times.lastWrite, copied.lastWrite);
    struct stat info;
    ASSERT_EQ(0, ::stat(target.c_str(), &info));
    EXPECT_EQ(0u, info.st_mode & 0222);

    std::string empty = write("empty.txt", "");
    ASSERT_EQ(os::error::Success, HostFile::Copy(empty, dir + "/fresh.txt"));
    EXPECT_EQ("", read(dir + "/fresh.txt"));
    EXPECT_EQ(os::attr::Archive, HostFile::Attributes(dir + "/fresh.txt", false));
    EXPECT_EQ(os::error::FileNotFound, HostFile::Copy(dir + "/missing", dir + "/x"));
    EXPECT_EQ(os::error::AccessDenied, HostFile::Copy(dir, dir + "/y"));
    EXPECT_EQ(os::error::PathNotFound, HostFile::Copy(empty, dir + "/empty.txt/z"));
}

} // namespace
