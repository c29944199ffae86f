// The simulated machine's own state files (machine.ini, faults.ini, ...) are plain INI text that
// a user edits by hand. This small model keeps their order and comments out of the way; it is not
// the engine's INI model, which lives above the seam.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace sim {

class IniText {
public:
    struct Entry {
        std::string key;
        std::string value;
    };
    struct Section {
        std::string name;
        std::vector<Entry> entries;
    };

    // False when the file cannot be read; a missing file is an error too.
    bool Load(const std::string& hostPath, std::string& error);
    void Parse(const std::string& text);
    std::string Format() const;
    // Writes through a temporary file and a rename, so that a crash leaves the old file whole.
    bool Save(const std::string& hostPath, std::string& error) const;

    std::optional<std::string> Get(const std::string& section, const std::string& key) const;
    std::string GetOr(const std::string& section, const std::string& key,
                      const std::string& fallback) const;
    long long GetNumber(const std::string& section, const std::string& key,
                        long long fallback) const;
    void Set(const std::string& section, const std::string& key, const std::string& value);
    bool Remove(const std::string& section, const std::string& key);

    const Section* FindSection(const std::string& name) const;
    // The reference stays valid while the model lives: sections are only ever added.
    Section& GetOrAddSection(const std::string& name);
    const std::deque<Section>& Sections() const { return mSections; }

    // A header comment written before the first section.
    void SetHeaderComment(const std::string& comment) { mHeader = comment; }

private:
    Section* findSection(const std::string& name) const;

    // In file order; a deque, so that adding a section moves none of the others.
    std::deque<Section> mSections;
    // Positions of the sections by their name folded to lower case: a state file may hold a
    // great many of them.
    std::unordered_map<std::string, size_t> mIndex;
    std::string mHeader;
};

} // namespace sim
