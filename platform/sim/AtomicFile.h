// Durable replacement of a state file: the new text goes to a temporary file beside the old one,
// is flushed to disk, and takes the old name by a rename. A crash at any point leaves either the
// whole old file or the whole new one.
#pragma once

#include <string>

namespace sim {

bool WriteFileAtomically(const std::string& hostPath, const std::string& content,
                         std::string& error);
bool ReadWholeFile(const std::string& hostPath, std::string& content);

} // namespace sim
