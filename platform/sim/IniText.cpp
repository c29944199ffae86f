#include "sim/IniText.h"

#include "sim/AtomicFile.h"
#include "sim/Text.h"

#include <fstream>
#include <sstream>

namespace sim {

bool IniText::Load(const std::string& hostPath, std::string& error) {
    std::ifstream in(hostPath, std::ios::binary);
    if (!in) {
        error = "cannot read " + hostPath;
        return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    Parse(text.str());
    return true;
}

void IniText::Parse(const std::string& text) {
    mSections.clear();
    mIndex.clear();
    Section* current = nullptr;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed[0] == ';' || trimmed[0] == '#') {
            continue;
        }
        if (trimmed.front() == '[' && trimmed.back() == ']') {
            current = &GetOrAddSection(Trim(trimmed.substr(1, trimmed.size() - 2)));
            continue;
        }
        if (current == nullptr) {
            continue;
        }
        auto eq = trimmed.find('=');
        std::string key = Trim(trimmed.substr(0, eq));
        std::string value = eq == std::string::npos ? "" : Trim(trimmed.substr(eq + 1));
        current->entries.push_back({key, value});
    }
}

std::string IniText::Format() const {
    std::string out;
    if (!mHeader.empty()) {
        std::istringstream lines(mHeader);
        std::string line;
        while (std::getline(lines, line)) {
            out += "; " + line + "\n";
        }
        out += "\n";
    }
    for (const Section& section : mSections) {
        out += "[" + section.name + "]\n";
        for (const Entry& entry : section.entries) {
            out += entry.key + "=" + entry.value + "\n";
        }
        out += "\n";
    }
    return out;
}

bool IniText::Save(const std::string& hostPath, std::string& error) const {
    return WriteFileAtomically(hostPath, Format(), error);
}

IniText::Section* IniText::findSection(const std::string& name) const {
    auto found = mIndex.find(LowerAscii(name));
    return found == mIndex.end() ? nullptr : const_cast<Section*>(&mSections[found->second]);
}

const IniText::Section* IniText::FindSection(const std::string& name) const {
    return findSection(name);
}

IniText::Section& IniText::GetOrAddSection(const std::string& name) {
    if (Section* section = findSection(name)) {
        return *section;
    }
    mIndex.emplace(LowerAscii(name), mSections.size());
    mSections.push_back({name, {}});
    return mSections.back();
}

std::optional<std::string> IniText::Get(const std::string& section, const std::string& key) const {
    const Section* found = FindSection(section);
    if (found == nullptr) {
        return std::nullopt;
    }
    for (const Entry& entry : found->entries) {
        if (EqualsNoCase(entry.key, key)) {
            return entry.value;
        }
    }
    return std::nullopt;
}

std::string IniText::GetOr(const std::string& section, const std::string& key,
                           const std::string& fallback) const {
    return Get(section, key).value_or(fallback);
}

long long IniText::GetNumber(const std::string& section, const std::string& key,
                             long long fallback) const {
    auto text = Get(section, key);
    if (!text || text->empty()) {
        return fallback;
    }
    try {
        return std::stoll(*text, nullptr, 0);
    } catch (...) {
        return fallback;
    }
}

void IniText::Set(const std::string& section, const std::string& key, const std::string& value) {
    Section& target = GetOrAddSection(section);
    for (Entry& entry : target.entries) {
        if (EqualsNoCase(entry.key, key)) {
            entry.value = value;
            return;
        }
    }
    target.entries.push_back({key, value});
}

bool IniText::Remove(const std::string& section, const std::string& key) {
    Section* candidate = findSection(section);
    if (candidate == nullptr) {
        return false;
    }
    for (auto it = candidate->entries.begin(); it != candidate->entries.end(); ++it) {
        if (EqualsNoCase(it->key, key)) {
            candidate->entries.erase(it);
            return true;
        }
    }
    return false;
}

} // namespace sim
