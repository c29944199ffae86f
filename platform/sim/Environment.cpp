#include "sim/Environment.h"

#include "sim/Text.h"

namespace sim {

std::optional<std::string> Environment::Get(const std::string& name) const {
    for (const auto& [key, value] : mVariables) {
        if (NamesEqual(key, name)) {
            return value;
        }
    }
    return std::nullopt;
}

void Environment::Set(const std::string& name, const std::string& value) {
    for (auto it = mVariables.begin(); it != mVariables.end(); ++it) {
        if (NamesEqual(it->first, name)) {
            if (value.empty()) {
                mVariables.erase(it);
            } else {
                it->second = value;
            }
            return;
        }
    }
    if (!value.empty()) {
        mVariables.emplace_back(name, value);
    }
}

std::string Environment::Expand(const std::string& text) const {
    std::string out;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t open = text.find('%', pos);
        if (open == std::string::npos) {
            out += text.substr(pos);
            break;
        }
        size_t close = text.find('%', open + 1);
        if (close == std::string::npos) {
            out += text.substr(pos);
            break;
        }
        out += text.substr(pos, open - pos);
        std::string name = text.substr(open + 1, close - open - 1);
        auto value = name.empty() ? std::nullopt : Get(name);
        if (value) {
            out += *value;
            pos = close + 1;
        } else {
            // An unknown name stays as it is, and its closing "%" may open the next reference.
            out += text.substr(open, close - open);
            pos = close;
        }
    }
    return out;
}

} // namespace sim
