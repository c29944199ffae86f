#include "sim/IniStateFile.h"

#include "sim/Text.h"

#include <map>
#include <set>

namespace sim {

namespace {

std::string SectionText(const IniText::Section& section) {
    std::string text;
    for (const IniText::Entry& entry : section.entries) {
        text += entry.key + "=" + entry.value + "\n";
    }
    return text;
}

// Folded section name -> the section of `ini`.
std::map<std::string, const IniText::Section*> ByName(const IniText& ini) {
    std::map<std::string, const IniText::Section*> sections;
    for (const IniText::Section& section : ini.Sections()) {
        sections.emplace(FoldName(section.name), &section);
    }
    return sections;
}

} // namespace

std::string MergeIniSections(const std::string& base, const std::string& mine,
                             const std::string& theirs, const std::string& header) {
    IniText baseIni;
    IniText mineIni;
    IniText theirsIni;
    baseIni.Parse(base);
    mineIni.Parse(mine);
    theirsIni.Parse(theirs);
    auto baseSections = ByName(baseIni);
    auto mineSections = ByName(mineIni);

    // Folded name -> mine's section, or null for one that mine dropped.
    std::map<std::string, const IniText::Section*> changed;
    for (const auto& [name, section] : baseSections) {
        auto found = mineSections.find(name);
        if (found == mineSections.end()) {
            changed[name] = nullptr;
        } else if (SectionText(*found->second) != SectionText(*section) ||
                   found->second->name != section->name) {
            changed[name] = found->second;
        }
    }
    for (const auto& [name, section] : mineSections) {
        if (baseSections.count(name) == 0) {
            changed[name] = section;
        }
    }

    IniText merged;
    merged.SetHeaderComment(header);
    std::set<std::string> written;
    auto emit = [&](const IniText::Section& section) {
        IniText::Section& target = merged.GetOrAddSection(section.name);
        target.entries = section.entries;
        written.insert(FoldName(section.name));
    };
    for (const IniText::Section& section : theirsIni.Sections()) {
        auto change = changed.find(FoldName(section.name));
        if (change == changed.end()) {
            emit(section);
        } else if (change->second != nullptr) {
            emit(*change->second);
        }
    }
    for (const IniText::Section& section : mineIni.Sections()) {
        auto change = changed.find(FoldName(section.name));
        if (change != changed.end() && change->second != nullptr &&
            written.count(change->first) == 0) {
            emit(section);
        }
    }
    return merged.Format();
}

} // namespace sim
