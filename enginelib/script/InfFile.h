// A printer or device INF file: the INI model read in the public INF syntax, its strings, and
// the answers the engine needs of it: which models it holds, which install section serves the
// running system, which files a driver takes and where they lie and go.
#pragma once

#include "script/IniFile.h"
#include "script/InfResolver.h"
#include "script/OSInfo.h"

#include <map>
#include <memory>
#include <vector>

// One model line of a model section: `"Name" = install-section, hardware-id, compatible-ids`.
struct InfDriver {
    CStdStr name;           // resolved through the strings
    CStdStr installSection; // as the line names it, before the OS decoration is applied
    CStdStr hardwareId;
    CStdStringList compatibleIds;
    CStdStr manufacturer;   // the resolved key of the Manufacturer line
    CStdStr modelSection;   // the model section the line stands in
};

// One file of a CopyFiles list, with where it comes from and where it goes.
struct InfCopyFile {
    CStdStr name;         // the name at the destination
    CStdStr sourceName;   // the name on the source disk
    CStdStr sourcePath;   // full path of the source file
    CStdStr destination;  // full path of the destination folder; empty when the dirid is unknown
    bool namedBySource = true; // false when no SourceDisksFiles line names the file
};

class InfFile : public IniFile {
public:
    InfFile();
    // Reads the file and its strings in the run's language. With `redirect`, a location that
    // the registry gives for the product's drivers takes the place of the path.
    InfFile(const CStdStr& fileName, bool redirect);
    ~InfFile() override;

    // The strings of Strings, then Strings.<primary language>, then Strings.<language>, each
    // overriding the earlier; the run's language (IS_LANG) when no id is given.
    void LoadStrings();
    void LoadStrings(std::uint32_t languageId);
    const std::map<CStdStr, CStdStr>& GetStrings() const { return mStrings; }
    const InfResolver& GetResolver() const { return mResolver; }
    CStdStr Resolve(const CStdStr& text) const { return mResolver.Resolved(text); }

    // Class of Version, resolved.
    CStdStr GetClass() const;
    // The system whose sections are chosen; the running one unless set.
    void SetOS(const OSInfo& os) { mOS = os; }
    const OSInfo& GetOS() const { return mOS; }

    // Every model of the file. `allModels` takes the model sections of every decoration;
    // otherwise only the one that serves this system. False when the file names no model.
    bool GetDriversList(std::vector<InfDriver>& list, bool allModels);
    // The model section that a Manufacturer value names for this system; empty when none exists.
    CStdStr FindModelSection(const CStdStr& manufacturerValue) const;
    // `section.NT<arch>`, `section.NT`, `section`: the first that exists (only `section` on
    // Windows 9x); empty when none does.
    CStdStr FindInstallSection(const CStdStr& section) const;

    // An INF that an Include line names, read on first use from this INF's folder or else the
    // system's INF folder, by its name alone. Null, with a log line, when it is in neither.
    InfFile* GetInclude(const CStdStr& name);
    // The install section itself and every section its Needs names (here or in an INF its
    // Include names), each with the file that holds it. False when the install section does not
    // exist.
    bool GetNeededSections(const CStdStr& installSection,
                           std::vector<std::pair<InfFile*, CStdStr>>& sections);
    // Every value of `key` in the install section and the sections it needs, resolved, each
    // comma list split into its items.
    CStdStringList GetInstallValues(const CStdStr& installSection, const CStdStr& key);

    // The files of every CopyFiles of the install section and of what it needs. False, with a
    // log line, when a list is missing or a destination folder is unknown; `files` then holds
    // what could be found.
    bool GetCopyFiles(const CStdStr& installSection, std::vector<InfCopyFile>& files);
    // The folder of a DestinationDirs entry ("dirid[,subdir]"); false for an unknown dirid.
    bool GetDestinationFolder(const CStdStr& fileListSection, CStdStr& folder) const;
    // The folder of a dirid; false when the id is unknown.
    static bool DirIdFolder(long dirId, CStdStr& folder);
    // Where the source of a file lies: SourceDisksFiles and SourceDisksNames (platform-decorated
    // sections first), below the INF's folder. False, with the INF's folder, when no line names
    // the file, or when its disk path would leave the INF's folder.
    bool GetSourcePath(const CStdStr& fileName, CStdStr& path);

    // A file named with a relative path: found in the INF's folder by its name alone, or else in
    // the folders of DevicePath. False when it is nowhere.
    bool stripRelativePath(const CStdStr& fileName, CStdStr& foundPath);
    // The folder of the product's drivers of a type ("Image" for scanners) from product.ini.
    static CStdStr GetLocalDriverDir(const CStdStr& type);

private:
    void checkSourceRedirection(CStdStr& path);
    // The platform word of this system in decorations: "x86", "amd64".
    CStdStr platformWord() const;
    // Whether a decoration such as "NTamd64.6.0" applies here; `rank` orders those that do.
    bool decorationApplies(const CStdStr& decoration, long& rank) const;
    CStdStr sectionForPlatform(const CStdStr& base) const;
    IniSection* findNeeded(const CStdStr& name, const CStdStringList& includes, InfFile*& owner);
    bool addFileList(InfFile& owner, const CStdStr& item, std::vector<InfCopyFile>& files);
    void addCopyFile(InfFile& owner, const CStdStr& destinationFolder, const CStdStr& line,
                     std::vector<InfCopyFile>& files);

    std::map<CStdStr, CStdStr> mStrings; // lower-case name -> value
    InfResolver mResolver{mStrings};
    CStdStr mClassName;
    std::uint32_t mLanguageId = 0;
    OSInfo mOS;
    std::map<CStdStr, std::unique_ptr<InfFile>, NoCaseLess> mIncludes; // null: not found
};
