// What the host shows of a run while the engine works: a bar on a terminal, plain lines when
// the output goes elsewhere.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

class ProgressView {
public:
    ProgressView(std::FILE* out, bool terminal) : mOut(out), mTerminal(terminal) {}

    // One poll of the engine. The current units are clamped to the total.
    void Update(std::uint32_t total, std::uint32_t current, const std::string& title);
    // Ends the bar's line.
    void Finish();

    static std::string Bar(std::uint32_t total, std::uint32_t current, int width);
    static int Percent(std::uint32_t total, std::uint32_t current);

private:
    std::FILE* mOut;
    bool mTerminal;
    bool mDrawn = false;
    int mLastPercent = -1;
    std::string mLastTitle;
};
