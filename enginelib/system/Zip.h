// ZIP archives of a package, read with zlib's minizip unzip layer through the platform's file
// layer: the members are listed, or extracted below a target folder with the times they were
// stored with. A member whose name would leave the target folder ("..\", a rooted path, a drive
// letter) is refused and logged; the others are extracted.
#pragma once

#include "core/CStdStringList.h"

class Zip {
public:
    enum Operation { List = 1, Extract = 2, ListAndExtract = 3 };

    explicit Zip(const CStdStr& archive) : mArchive(archive) {}

    // Lists (1), extracts into `target` (2), or both (3). False when the archive cannot be
    // opened or walked, or a member could not be extracted; one bad member does not stop the
    // others.
    bool doOp(int operation, const CStdStr& target);
    // The members' names as stored, with backslashes, after a listing operation.
    const CStdStringList& GetList() const { return mList; }
    // The files written by the last extraction.
    const CStdStringList& GetExtracted() const { return mExtracted; }

    // The name stored of the archive's first file; false when it is not a readable archive.
    static bool FirstMemberName(const CStdStr& archive, CStdStr& name);
    // Whether a member's name stays below the folder it is extracted to.
    static bool IsSafeMemberName(const CStdStr& name);

private:
    bool extractFile(void* archive, const CStdStr& name, const CStdStr& path, bool encrypted,
                     const void* info, std::vector<char>& buffer);

    CStdStr mArchive;
    CStdStringList mList;
    CStdStringList mExtracted;
};
