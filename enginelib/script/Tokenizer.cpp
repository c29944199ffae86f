#include "script/Tokenizer.h"

namespace {

bool IsQuote(char c) {
    return c == '"' || c == '\'';
}

} // namespace

bool Tokenizer::GetNext(CStdStr& item) {
    item.clear();
    if ((mFlags & Trim) != 0) {
        TrimRight();
    }
    if (empty()) {
        return false;
    }
    size_t searchFrom = 0;
    if ((mFlags & Quotes) != 0 && IsQuote(front())) {
        size_t close = find(front(), 1);
        searchFrom = close == npos ? 1 : close + 1;
    }
    size_t found = find(mDelimiter, searchFrom);
    while ((mFlags & Escapes) != 0 && found != npos && found > 0 && (*this)[found - 1] == '\\') {
        erase(found - 1, 1);
        found = find(mDelimiter, found);
    }
    if (found == npos) {
        item = *this;
        clear();
    } else {
        item = substr(0, found);
        erase(0, found + 1);
    }
    if ((mFlags & Trim) != 0) {
        item.Trim();
    }
    if ((mFlags & Quotes) != 0 && item.size() >= 2 && IsQuote(item.front()) &&
        item.back() == item.front()) {
        item = item.substr(1, item.size() - 2);
    }
    if ((mFlags & Trim) != 0) {
        TrimRight();
    }
    return true;
}

void Tokenizer::GetAll(CStdStringList& list) {
    list.clear();
    CStdStr item;
    while (GetNext(item)) {
        list.Add(item);
    }
}

CStdStringList Tokenizer::Split(const CStdStr& text, char delimiter, int flags) {
    CStdStringList list;
    Tokenizer(text, delimiter, flags).GetAll(list);
    return list;
}
