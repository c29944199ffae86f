#include "sim/ShortNames.h"

#include <cctype>
#include <map>
#include <set>

namespace sim {

namespace {

bool IsShortChar(char c) {
    auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80 || std::isalnum(byte)) {
        return true;
    }
    static const std::string allowed = "!#$%&'()-@^_`{}~";
    return allowed.find(c) != std::string::npos;
}

std::string Clean(const std::string& text, size_t limit) {
    std::string out;
    for (char c : text) {
        if (out.size() == limit) {
            break;
        }
        if (IsShortChar(c)) {
            out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return out;
}

} // namespace

bool ShortNames::IsShortName(const std::string& name) {
    auto dot = name.find('.');
    std::string base = name.substr(0, dot);
    std::string ext = dot == std::string::npos ? "" : name.substr(dot + 1);
    if (base.empty() || base.size() > 8 || ext.size() > 3 || ext.find('.') != std::string::npos) {
        return false;
    }
    for (char c : base + ext) {
        if (!IsShortChar(c) || std::islower(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return true;
}

std::vector<std::pair<std::string, std::string>>
ShortNames::Of(const std::vector<std::string>& names) {
    std::vector<std::pair<std::string, std::string>> result;
    std::set<std::string> taken;
    for (const std::string& name : names) {
        std::string upper;
        for (char c : name) {
            upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        if (IsShortName(upper)) {
            taken.insert(upper);
        }
    }
    std::map<std::string, int> nextNumber;
    for (const std::string& name : names) {
        std::string upper;
        for (char c : name) {
            upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        if (IsShortName(upper)) {
            result.emplace_back(name, upper);
            continue;
        }
        auto dot = name.rfind('.');
        std::string stem =
                Clean(dot == std::string::npos || dot == 0 ? name : name.substr(0, dot), 6);
        std::string ext =
                dot == std::string::npos || dot == 0 ? "" : Clean(name.substr(dot + 1), 3);
        if (stem.empty()) {
            stem = "_";
        }
        std::string candidate;
        int& number = nextNumber[stem + "." + ext];
        do {
            ++number;
            std::string suffix = "~" + std::to_string(number);
            std::string head = stem.substr(0, 8 - std::min<size_t>(8, suffix.size()));
            candidate = head + suffix + (ext.empty() ? "" : "." + ext);
        } while (taken.count(candidate) != 0);
        taken.insert(candidate);
        result.emplace_back(name, candidate);
    }
    return result;
}

} // namespace sim
