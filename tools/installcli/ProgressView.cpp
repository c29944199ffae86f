#include "ProgressView.h"

#include <algorithm>

namespace {
const int kBarWidth = 30;
const size_t kTitleWidth = 40;
} // namespace

int ProgressView::Percent(std::uint32_t total, std::uint32_t current) {
    if (total == 0) {
        return 0;
    }
    std::uint64_t done = std::min(current, total);
    return static_cast<int>(done * 100 / total);
}

std::string ProgressView::Bar(std::uint32_t total, std::uint32_t current, int width) {
    int filled = Percent(total, current) * width / 100;
    return "[" + std::string(static_cast<size_t>(filled), '#') +
           std::string(static_cast<size_t>(width - filled), '.') + "]";
}

void ProgressView::Update(std::uint32_t total, std::uint32_t current, const std::string& title) {
    int percent = Percent(total, current);
    if (percent == mLastPercent && title == mLastTitle) {
        return;
    }
    if (mTerminal) {
        std::string shown =
                title.size() > kTitleWidth ? title.substr(0, kTitleWidth - 3) + "..." : title;
        std::fprintf(mOut, "\r%s %3d%%  %-*s", Bar(total, current, kBarWidth).c_str(), percent,
                     static_cast<int>(kTitleWidth), shown.c_str());
        mDrawn = true;
    } else if (title != mLastTitle || percent / 10 != mLastPercent / 10) {
        std::fprintf(mOut, "progress %3d%% %s\n", percent, title.c_str());
    }
    std::fflush(mOut);
    mLastPercent = percent;
    mLastTitle = title;
}

void ProgressView::Finish() {
    if (mDrawn) {
        std::fprintf(mOut, "\n");
        std::fflush(mOut);
        mDrawn = false;
    }
}
