#include "sim/ShortNames.h"

#include <cctype>
#include <sys/xattr.h>

namespace sim {

namespace {

const char* const kShortNameAttribute = "user.windows.shortname";

bool IsShortChar(char c) {
    auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || std::isalnum(byte)) {
        return true;
    }
    static const std::string allowed = "!#$%&'()-@^_`{}~";
    return allowed.find(c) != std::string::npos;
}

// The characters of a long name that a short name keeps: upper case, blanks and dots dropped,
// and the characters that a long name may hold but an 8.3 name may not turned into "_".
std::string Clean(const std::string& text, size_t limit) {
    static const std::string replaced = "+,;=[]";
    std::string out;
    for (char c : text) {
        if (out.size() == limit) {
            break;
        }
        if (replaced.find(c) != std::string::npos) {
            out += '_';
        } else if (IsShortChar(c)) {
            out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return out;
}

} // namespace

bool ShortNames::IsShortName(const std::string& name) {
    if (name == "." || name == "..") {
        return true;
    }
    auto dot = name.find('.');
    std::string base = name.substr(0, dot);
    std::string ext = dot == std::string::npos ? "" : name.substr(dot + 1);
    if (base.empty() || base.size() > 8 || ext.size() > 3 || ext.find('.') != std::string::npos ||
        (dot != std::string::npos && ext.empty())) {
        return false;
    }
    for (char c : base + ext) {
        if (!IsShortChar(c)) {
            return false;
        }
    }
    return true;
}

std::string ShortNames::Generate(const std::string& longName, const std::set<std::string>& taken) {
    auto dot = longName.rfind('.');
    bool hasExtension = dot != std::string::npos && dot != 0;
    std::string stem = Clean(hasExtension ? longName.substr(0, dot) : longName, 6);
    std::string ext = hasExtension ? Clean(longName.substr(dot + 1), 3) : "";
    if (stem.empty()) {
        stem = "_";
    }
    for (unsigned number = 1;; ++number) {
        std::string suffix = "~" + std::to_string(number);
        std::string head = stem.substr(0, 8 - std::min<size_t>(8, suffix.size()));
        std::string candidate = head + suffix + (ext.empty() ? "" : "." + ext);
        if (taken.count(candidate) == 0) {
            return candidate;
        }
    }
}

std::string ShortNames::Stored(const std::string& hostPath) {
    char text[32] = {};
    ssize_t length = ::lgetxattr(hostPath.c_str(), kShortNameAttribute, text, sizeof text - 1);
    if (length <= 0) {
        return std::string();
    }
    std::string name(text, static_cast<size_t>(length));
    return IsShortName(name) ? name : std::string();
}

void ShortNames::Store(const std::string& hostPath, const std::string& shortName) {
    // A file system without extended attributes gives the name again at the next reading.
    ::lsetxattr(hostPath.c_str(), kShortNameAttribute, shortName.data(), shortName.size(), 0);
}

void ShortNames::Forget(const std::string& hostPath) {
    ::lremovexattr(hostPath.c_str(), kShortNameAttribute);
}

} // namespace sim
