// The journal of a simulated machine: journal.log in its folder, one line for each thing the
// machine was asked to do that leaves no other trace (broadcast messages, programs started),
// with the local time, so that a packager can read what an install set in motion.
#pragma once

#include <string>

namespace sim {

class Journal {
public:
    // Appends "time<TAB>kind<TAB>text" to DIR/journal.log. The line is written whole with one
    // append, so that a crash loses at most that line.
    static void Append(const std::string& machineDir, const std::string& kind,
                       const std::string& text);
};

} // namespace sim
