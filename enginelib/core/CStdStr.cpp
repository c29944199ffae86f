#include "core/CStdStr.h"

#include "os/Locale.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace {

struct CaseTables {
    unsigned char lower[256];
    unsigned char upper[256];
};

std::mutex gTablesLock;
CaseTables gTables[2];
std::atomic<int> gActive{-1};

const CaseTables& Tables() {
    int active = gActive.load(std::memory_order_acquire);
    if (active < 0) {
        CStdStr::RefreshCaseTables();
        active = gActive.load(std::memory_order_acquire);
    }
    return gTables[active];
}

bool IsResourceNumber(const char* text) {
    return reinterpret_cast<std::uintptr_t>(text) <= 0xFFFF;
}

} // namespace

void CStdStr::RefreshCaseTables() {
    std::lock_guard<std::mutex> guard(gTablesLock);
    // Two slots: readers of the active one are never disturbed by a refresh.
    int next = gActive.load(std::memory_order_relaxed) == 0 ? 1 : 0;
    os::GetAnsiCaseTables(gTables[next].lower, gTables[next].upper);
    gActive.store(next, std::memory_order_release);
}

char CStdStr::ToLower(char c) {
    return static_cast<char>(Tables().lower[static_cast<unsigned char>(c)]);
}

char CStdStr::ToUpper(char c) {
    return static_cast<char>(Tables().upper[static_cast<unsigned char>(c)]);
}

bool CStdStr::IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

int CStdStr::CompareNoCase(std::string_view a, std::string_view b) {
    const CaseTables& tables = Tables();
    size_t length = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < length; ++i) {
        int left = tables.lower[static_cast<unsigned char>(a[i])];
        int right = tables.lower[static_cast<unsigned char>(b[i])];
        if (left != right) {
            return left - right;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

CStdStr::CStdStr(const char* text) {
    if (!IsResourceNumber(text)) {
        assign(text);
    }
}

CStdStr& CStdStr::operator=(const char* text) {
    if (IsResourceNumber(text)) {
        clear();
    } else {
        assign(text);
    }
    return *this;
}

CStdStr& CStdStr::operator=(const std::string& text) {
    assign(text);
    return *this;
}

CStdStr& CStdStr::operator=(std::string&& text) {
    std::string::operator=(std::move(text));
    return *this;
}

void CStdStr::FormatV(const char* format, va_list args) {
    if (IsResourceNumber(format)) {
        clear();
        return;
    }
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length < 0) {
        clear();
        return;
    }
    std::string buffer(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(buffer.data(), buffer.size(), format, args);
    buffer.resize(static_cast<size_t>(length));
    assign(std::move(buffer));
}

void CStdStr::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CStdStr::AppendFormat(const char* format, ...) {
    CStdStr tail;
    va_list args;
    va_start(args, format);
    tail.FormatV(format, args);
    va_end(args);
    append(tail);
}

CStdStr CStdStr::Formatted(const char* format, ...) {
    CStdStr result;
    va_list args;
    va_start(args, format);
    result.FormatV(format, args);
    va_end(args);
    return result;
}

CStdStr CStdStr::Left(int count) const {
    if (count <= 0) {
        return CStdStr();
    }
    return CStdStr(substr(0, static_cast<size_t>(count)));
}

CStdStr CStdStr::Mid(int first) const {
    if (first < 0) {
        first = 0;
    }
    if (static_cast<size_t>(first) >= size()) {
        return CStdStr();
    }
    return CStdStr(substr(static_cast<size_t>(first)));
}

CStdStr CStdStr::Mid(int first, int count) const {
    if (first < 0) {
        first = 0;
    }
    if (count <= 0 || static_cast<size_t>(first) >= size()) {
        return CStdStr();
    }
    return CStdStr(substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CStdStr CStdStr::Right(int count) const {
    if (count <= 0) {
        return CStdStr();
    }
    if (static_cast<size_t>(count) >= size()) {
        return *this;
    }
    return CStdStr(substr(size() - static_cast<size_t>(count)));
}

int CStdStr::Find(char c, int start) const {
    if (start < 0) {
        start = 0;
    }
    size_t found = find(c, static_cast<size_t>(start));
    return found == npos ? -1 : static_cast<int>(found);
}

int CStdStr::Find(const char* text, int start) const {
    if (IsResourceNumber(text)) {
        return -1;
    }
    if (start < 0) {
        start = 0;
    }
    size_t found = find(text, static_cast<size_t>(start));
    return found == npos ? -1 : static_cast<int>(found);
}

int CStdStr::ReverseFind(char c) const {
    size_t found = rfind(c);
    return found == npos ? -1 : static_cast<int>(found);
}

int CStdStr::FindOneOf(const char* characters) const {
    size_t found = find_first_of(characters);
    return found == npos ? -1 : static_cast<int>(found);
}

int CStdStr::Replace(char from, char to) {
    int count = 0;
    for (char& c : *this) {
        if (c == from) {
            c = to;
            ++count;
        }
    }
    return count;
}

int CStdStr::Replace(const char* from, const char* to) {
    if (IsResourceNumber(from) || *from == '\0') {
        return 0;
    }
    std::string replacement = IsResourceNumber(to) ? std::string() : std::string(to);
    size_t fromLength = std::strlen(from);
    int count = 0;
    std::string out;
    size_t pos = 0;
    for (;;) {
        size_t found = find(from, pos);
        if (found == npos) {
            break;
        }
        out.append(*this, pos, found - pos);
        out += replacement;
        pos = found + fromLength;
        ++count;
    }
    if (count > 0) {
        out.append(*this, pos, npos);
        assign(std::move(out));
    }
    return count;
}

int CStdStr::Remove(char c) {
    size_t before = size();
    erase(std::remove(begin(), end(), c), end());
    return static_cast<int>(before - size());
}

int CStdStr::CompareNoCase(const std::string& other) const {
    return CompareNoCase(std::string_view(*this), std::string_view(other));
}

CStdStr& CStdStr::MakeUpper() {
    for (char& c : *this) {
        c = ToUpper(c);
    }
    return *this;
}

CStdStr& CStdStr::MakeLower() {
    for (char& c : *this) {
        c = ToLower(c);
    }
    return *this;
}

CStdStr& CStdStr::TrimLeft() {
    size_t first = 0;
    while (first < size() && IsSpace((*this)[first])) {
        ++first;
    }
    erase(0, first);
    return *this;
}

CStdStr& CStdStr::TrimRight() {
    size_t last = size();
    while (last > 0 && IsSpace((*this)[last - 1])) {
        --last;
    }
    erase(last);
    return *this;
}

CStdStr& CStdStr::Trim() {
    return TrimRight().TrimLeft();
}

CStdStr& CStdStr::TrimLeft(char c) {
    size_t first = 0;
    while (first < size() && (*this)[first] == c) {
        ++first;
    }
    erase(0, first);
    return *this;
}

CStdStr& CStdStr::TrimRight(char c) {
    size_t last = size();
    while (last > 0 && (*this)[last - 1] == c) {
        --last;
    }
    erase(last);
    return *this;
}

CStdStr& CStdStr::Trim(char c) {
    return TrimRight(c).TrimLeft(c);
}
