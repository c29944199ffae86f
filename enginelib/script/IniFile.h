// The in-memory model of every INI-shaped file of the engine: scripts, product.ini,
// install.map, CIF and INF files, uninstall logs.
#pragma once

#include "script/IniSection.h"

#include <map>
#include <memory>
#include <unordered_map>

class IniFile {
public:
    explicit IniFile(bool keepKeylessLines = false);
    // Reads the file at once; a failed read leaves an empty model.
    explicit IniFile(const CStdStr& fileName, bool keepKeylessLines = false);
    virtual ~IniFile();
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;

    // The section of that name, made (as a plain IniSection here) when there is none.
    virtual IniSection* GetOrCreateSection(const CStdStr& name);

    // Adds the file's sections to the model. False only when the file is missing or cannot be
    // opened; a malformed line is logged and skipped.
    bool Read(const CStdStr& fileName, bool merge = false);
    // Writes the whole model; an empty name means the name given at construction.
    bool Write(const CStdStr& fileName = CStdStr());
    // The text that Write writes: every section, its lines, and an empty line after each.
    CStdStr FormatText() const;

    // Takes ownership. A null section is refused.
    void AddSection(IniSection* section);
    IniSection* FindSection(const CStdStr& name) const;
    // With `detach` the caller receives the section and owns it; otherwise it is destroyed.
    IniSection* RemoveSection(const CStdStr& name, bool detach);
    bool RenameSection(const CStdStr& name, const CStdStr& newName);
    int SectionCount() const { return static_cast<int>(mSections.size()); }
    CStdStr GetSectionName(int index) const;
    IniSection* GetSection(int index) const;

    CStdStr GetValue(const CStdStr& section, const CStdStr& name) const;
    void SetValue(const CStdStr& section, const CStdStr& name, const CStdStr& value);
    void Clear();
    // The folder of the file name, with its trailing backslash.
    const CStdStr& GetDirectory();
    const CStdStr& GetFileName() const { return mFileName; }
    void SetFileName(const CStdStr& fileName);
    // For every section and every pair of the map, in map order: ReplaceText(from, to).
    void ReplaceInAll(const std::map<CStdStr, CStdStr>& replacements, bool withNames);

    int GetEncoding() const { return mEncoding; }
    void SetEncoding(int encoding) { mEncoding = encoding; }
    bool KeepsKeylessLines() const { return mKeepKeylessLines; }

protected:
    // The public INF syntax, which differs in two points from other files: a `;` outside double
    // quotes starts a comment also after a value, and a name in double quotes (a model name
    // with blanks) is the name without them. Neither file kind continues lines.
    void UseInfSyntax() { mInfSyntax = true; }

private:
    friend class IniSection;
    // Splits a line that is no header: the name before the first '=' (outside quotes in INF
    // syntax) and the value after it. -1: no '='.
    int findEquals(const CStdStr& line) const;
    void sectionRenamed(IniSection* section, const CStdStr& oldName);
    void indexAdd(IniSection* section);
    void indexRemove(IniSection* section, const CStdStr& name);
    void addLine(IniSection* section, const CStdStr& name, const CStdStr& value, bool merge);

    CStdStr mFileName;
    CStdStr mDirectory;
    bool mDirectoryKnown = false;
    std::vector<std::unique_ptr<IniSection>> mSections;
    // Sections by folded name, in order of addition, so that a lookup is not a walk.
    std::unordered_map<std::string, std::vector<IniSection*>> mIndex;
    int mEncoding = 1;
    bool mKeepKeylessLines;
    bool mInfSyntax = false;
    std::uint32_t mKeylessCounter = 0;
};
