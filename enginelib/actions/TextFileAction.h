// The action of keyword TextFile: appends a text to a plain text file, or drops or replaces the
// lines that hold a text. Its line is
//   TextFile,<operation>,<file>,<text>,<replacement>
// with the operations APPEND, DELETE and REPLACE. Text is matched by its exact bytes; a
// replaced line is replaced whole. Nothing goes to the uninstall log.
#pragma once

#include "actions/Action.h"
#include "core/CStdStringList.h"

class TextFileAction : public Action {
public:
    enum Operation { Append = 0, Delete = 1, Replace = 2, Unknown = 3 };

    explicit TextFileAction(CStdStringList params);

    bool Perform(CStdStr title) override;
    bool IsSameAction(const Action* other) override;

    int GetOperation() const { return mOperation; }

private:
    bool appendToFile();
    // DELETE and REPLACE, through a work file beside the file that then takes its place.
    bool operate();

    std::int32_t mOperation = Unknown;
    CStdStr mFile;
    CStdStr mText;
    CStdStr mReplacement;
};
