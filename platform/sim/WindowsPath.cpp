#include "sim/WindowsPath.h"

#include <cctype>

namespace sim {

namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool IsDriveLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool IsInvalidNameChar(char c, bool allowWildcards) {
    auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20) {
        return true;
    }
    switch (c) {
    case '<':
    case '>':
    case ':':
    case '"':
    case '|':
        return true;
    case '*':
    case '?':
        return !allowWildcards;
    default:
        return false;
    }
}

std::vector<std::string> SplitNames(std::string_view text) {
    std::vector<std::string> names;
    std::string current;
    for (char c : text) {
        if (IsSeparator(c)) {
            names.push_back(current);
            current.clear();
        } else {
            current += c;
        }
    }
    names.push_back(current);
    return names;
}

// Applies one name of a path: ".", "..", and the stripping of trailing dots and blanks.
os::Error ApplyName(std::string name, bool isLast, bool allowWildcards,
                    std::vector<std::string>& parts) {
    if (name.empty() || name == ".") {
        return os::error::Success;
    }
    if (name == "..") {
        if (!parts.empty()) {
            parts.pop_back();
        }
        return os::error::Success;
    }
    while (!name.empty() && (name.back() == '.' || name.back() == ' ')) {
        name.pop_back();
    }
    if (name.empty()) {
        return os::error::Success;
    }
    for (char c : name) {
        if (IsInvalidNameChar(c, allowWildcards && isLast)) {
            return os::error::InvalidName;
        }
    }
    parts.push_back(name);
    return os::error::Success;
}

} // namespace

std::string DeviceName(std::string_view name) {
    std::string base(name.substr(0, name.find('.')));
    while (!base.empty() && base.back() == ' ') {
        base.pop_back();
    }
    for (char& c : base) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    if (base == "CON" || base == "PRN" || base == "AUX" || base == "NUL") {
        return base;
    }
    bool numbered = base.size() == 4 && (base.rfind("COM", 0) == 0 || base.rfind("LPT", 0) == 0) &&
                    base[3] >= '1' && base[3] <= '9';
    return numbered ? base : std::string();
}

bool HasWildcard(std::string_view name) {
    return name.find_first_of("*?") != std::string_view::npos;
}

std::string WindowsPath::Root() const {
    if (kind == Kind::Unc) {
        return "\\\\" + server + "\\" + share;
    }
    return std::string(1, drive) + ":";
}

std::string WindowsPath::ToString() const {
    std::string text = Root();
    if (parts.empty()) {
        return kind == Kind::Drive ? text + "\\" : text;
    }
    for (const std::string& part : parts) {
        text += "\\" + part;
    }
    return text;
}

WindowsPath WindowsPath::Parent() const {
    WindowsPath parent = *this;
    if (!parent.parts.empty()) {
        parent.parts.pop_back();
    }
    return parent;
}

os::Error WindowsPath::Parse(std::string_view path, std::string_view currentDir,
                             bool allowWildcards, WindowsPath& out) {
    out = WindowsPath();
    std::string text(path);
    if (text.empty()) {
        return os::error::PathNotFound;
    }
    // The "\\?\" prefix turns off normalisation on Windows; the names below it are the same.
    if (text.rfind("\\\\?\\UNC\\", 0) == 0) {
        text = "\\\\" + text.substr(8);
    } else if (text.rfind("\\\\?\\", 0) == 0) {
        text = text.substr(4);
    }

    std::string rest;
    if (text.size() >= 2 && IsSeparator(text[0]) && IsSeparator(text[1])) {
        std::vector<std::string> names = SplitNames(std::string_view(text).substr(2));
        if (names.size() < 2 || names[0].empty() || names[1].empty() || names[0] == "." ||
            names[0] == "?") {
            return os::error::BadNetPath;
        }
        out.kind = Kind::Unc;
        out.server = names[0];
        out.share = names[1];
        for (size_t i = 2; i < names.size(); ++i) {
            rest += "\\" + names[i];
        }
    } else if (text.size() >= 2 && text[1] == ':' && IsDriveLetter(text[0])) {
        out.drive = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
        rest = text.substr(2);
        bool driveRelative = rest.empty() || !IsSeparator(rest[0]);
        if (driveRelative) {
            WindowsPath current;
            bool sameDrive = !currentDir.empty() &&
                             WindowsPath::Parse(currentDir, "", false, current) == 0 &&
                             current.kind == Kind::Drive && current.drive == out.drive;
            out.parts = sameDrive ? current.parts : std::vector<std::string>{};
        }
    } else {
        WindowsPath current;
        os::Error error = WindowsPath::Parse(currentDir, "", false, current);
        if (error != os::error::Success) {
            return error;
        }
        out = current;
        if (IsSeparator(text[0])) {
            out.parts.clear();
        }
        rest = text;
    }

    std::vector<std::string> names = SplitNames(rest);
    for (size_t i = 0; i < names.size(); ++i) {
        os::Error error = ApplyName(names[i], i + 1 == names.size(), allowWildcards, out.parts);
        if (error != os::error::Success) {
            return error;
        }
    }
    return os::error::Success;
}

} // namespace sim
