// A state file in INI form (spooler.ini, processes.ini, ...), over a model that reads itself
// from an IniText and writes itself into one. A record is a section: a process that changed a
// section replaces it whole in a file another process changed meanwhile, and its other sections
// stay as that process left them.
#pragma once

#include "sim/IniText.h"
#include "sim/StateFile.h"

#include <string>

namespace sim {

// Carries the sections in which `mine` differs from `base` onto `theirs`: changed and new
// sections take mine's form, sections that mine dropped go. Sections keep theirs' order; new
// ones follow. The merged text starts with `header` as its comment.
std::string MergeIniSections(const std::string& base, const std::string& mine,
                             const std::string& theirs, const std::string& header);

template <class Model>
class IniStateFile : public StateFile {
public:
    IniStateFile(std::string fileName, const char* header)
            : StateFile(std::move(fileName), true), mHeader(header) {}

    Model& Get() { return mModel; }
    const Model& Get() const { return mModel; }
    // Call after every change of the model, so that the next commit writes it.
    void Changed() { mDirty = true; }
    bool Dirty() const override { return mDirty; }

protected:
    bool Parse(const std::string& text, std::string&) override {
        IniText ini;
        ini.Parse(text);
        mModel = Model();
        mModel.Read(ini);
        mDirty = false;
        return true;
    }
    std::string Format() const override {
        IniText ini;
        ini.SetHeaderComment(mHeader);
        mModel.Write(ini);
        return ini.Format();
    }
    bool Merge(const std::string& base, const std::string& theirs, std::string& merged,
               std::string&) const override {
        merged = MergeIniSections(base, Format(), theirs, mHeader);
        return true;
    }
    void MarkClean() override { mDirty = false; }

private:
    const char* mHeader;
    Model mModel;
    bool mDirty = false;
};

} // namespace sim
