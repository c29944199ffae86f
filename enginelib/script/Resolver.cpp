#include "script/Resolver.h"

#include "script/NlsFile.h"

namespace {
// Values that name each other would otherwise be expanded without end.
constexpr int kMaxDepth = 16;
} // namespace

bool Resolver::Lookup(CStdStr& value, const CStdStr& name) const {
    CStdStr text = NlsFile::GetText(name);
    if (text.empty()) {
        return false;
    }
    value = text;
    return true;
}

void Resolver::Resolve(CStdStr& out, const CStdStr& text) const {
    out = text;
    resolve(out, 0);
}

void Resolver::resolve(CStdStr& text, int depth) const {
    int position = 0;
    while (true) {
        int open = text.Find('%', position);
        if (open < 0) {
            return;
        }
        int close = text.Find('%', open + 1);
        if (close < 0) {
            return;
        }
        CStdStr name = text.Mid(open + 1, close - open - 1);
        CStdStr value;
        if (name.empty() || depth >= kMaxDepth || !Lookup(value, name)) {
            position = close + 1;
            continue;
        }
        resolve(value, depth + 1);
        text.Replace(("%" + name + "%").c_str(), value.c_str());
        position = open + value.GetLength();
    }
}
