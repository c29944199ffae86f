// The INI text of the machine's state files: sections found by name whatever their number, in
// the order of the file.
#include "sim/IniText.h"

#include <ctime>
#include <gtest/gtest.h>
#include <string>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kBudget = 10.0;
#else
constexpr double kBudget = 2.0;
#endif

TEST(IniText, AHundredThousandSectionsReadAndKeepTheirOrder) {
    constexpr int kSections = 100000;
    std::string text;
    for (int index = 0; index < kSections; ++index) {
        text += "[Section" + std::to_string(index) + "]\nKey=" + std::to_string(index) + "\n";
    }
    // A section named again continues the first of its name.
    text += "[SECTION7]\nMore=yes\n";

    std::clock_t start = std::clock();
    sim::IniText ini;
    ini.Parse(text);
    for (int index = 0; index < kSections; index += 7) {
        ini.Set("section" + std::to_string(index), "Seen", "1");
    }
    double spent = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_LT(spent, kBudget);

    ASSERT_EQ(static_cast<size_t>(kSections), ini.Sections().size());
    EXPECT_EQ("Section0", ini.Sections().front().name);
    EXPECT_EQ("Section99999", ini.Sections().back().name);
    EXPECT_EQ("yes", ini.GetOr("section7", "more", ""));
    EXPECT_EQ("1", ini.GetOr("SECTION70", "seen", ""));
    EXPECT_FALSE(ini.Get("Section8", "Seen").has_value());
    EXPECT_EQ(nullptr, ini.FindSection("Section100000"));

    // A section added later goes at the end, and the ones before stay where they were.
    const sim::IniText::Section* first = ini.FindSection("Section0");
    ini.Set("Added", "K", "v");
    EXPECT_EQ(first, ini.FindSection("section0"));
    EXPECT_EQ("Added", ini.Sections().back().name);
    EXPECT_TRUE(ini.Remove("ADDED", "k"));
    EXPECT_FALSE(ini.Remove("Added", "k"));

    ini.Parse("[Only]\nA=1\n");
    EXPECT_EQ(1u, ini.Sections().size());
    EXPECT_EQ(nullptr, ini.FindSection("Section0"));
}

} // namespace
