// Splits a string at one delimiter. Flag 1: an item may stand in double or single quotes, which
// keep delimiters inside and are cut from the item. Flag 2: items and the remainder are
// trimmed. Flag 4: a backslash before the delimiter escapes it and is removed.
#pragma once

#include "core/CStdStringList.h"

class Tokenizer : public CStdStr {
public:
    enum Flags { Quotes = 1, Trim = 2, Escapes = 4 };

    Tokenizer(const CStdStr& text, char delimiter, int flags = 0)
            : CStdStr(text), mDelimiter(delimiter), mFlags(flags) {}

    bool HasMore() const { return !empty(); }
    bool GetNext(CStdStr& item);
    // Empties the list, then appends every item.
    void GetAll(CStdStringList& list);

    // The items of `text` in one call.
    static CStdStringList Split(const CStdStr& text, char delimiter, int flags = 0);

private:
    char mDelimiter;
    int mFlags;
};
