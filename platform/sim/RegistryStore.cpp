#include "sim/RegistryStore.h"

#include "sim/Text.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace sim {

namespace {

const char* const kHeader5 = "Windows Registry Editor Version 5.00";
const char* const kHeader4 = "REGEDIT4";
const char* const kSecurityTag = "; security: ";

std::vector<std::uint8_t> Utf16Bytes(const std::u16string& text, bool terminate) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve((text.size() + 1) * 2);
    for (char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    if (terminate) {
        bytes.push_back(0);
        bytes.push_back(0);
    }
    return bytes;
}

std::u16string Utf16FromBytes(const std::vector<std::uint8_t>& bytes) {
    std::u16string text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8));
    }
    return text;
}

std::vector<std::string> SplitPath(const std::string& path) {
    std::vector<std::string> names;
    std::string current;
    for (char c : path) {
        if (c == '\\') {
            if (!current.empty()) {
                names.push_back(current);
            }
            current.clear();
        } else {
            current += c;
        }
    }
    if (!current.empty()) {
        names.push_back(current);
    }
    return names;
}

std::string Escape(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\\' || c == '"') {
            out += '\\';
        }
        out += c;
    }
    return out;
}

// A string value that regedit can show in quotes: terminated, no inner NUL, no line breaks.
bool IsPlainString(const RegValue& value) {
    if (value.type != regtype::String || value.data.size() < 2 || value.data.size() % 2 != 0) {
        return false;
    }
    std::u16string text = Utf16FromBytes(value.data);
    if (text.back() != 0) {
        return false;
    }
    text.pop_back();
    return text.find_first_of(u"\r\n", 0) == std::u16string::npos &&
           text.find(char16_t(0)) == std::u16string::npos;
}

void AppendHex(std::string& line, std::string& out, const std::vector<std::uint8_t>& data) {
    for (size_t i = 0; i < data.size(); ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, "%02x", data[i]);
        line += byte;
        if (i + 1 < data.size()) {
            line += ',';
            if (line.size() > 76) {
                out += line + "\\\n";
                line = "  ";
            }
        }
    }
}

std::string FormatValue(const RegValue& value) {
    std::string line = value.name.empty() ? "@=" : "\"" + Escape(value.name) + "\"=";
    if (IsPlainString(value)) {
        return line + "\"" + Escape(value.AsText()) + "\"\n";
    }
    if (value.type == regtype::Dword && value.data.size() == 4) {
        char number[16];
        std::snprintf(number, sizeof number, "dword:%08x",
                      value.data[0] | (value.data[1] << 8) | (value.data[2] << 16) |
                              (static_cast<std::uint32_t>(value.data[3]) << 24));
        return line + number + "\n";
    }
    if (value.type == regtype::Binary) {
        line += "hex:";
    } else {
        char prefix[20];
        std::snprintf(prefix, sizeof prefix, "hex(%x):", value.type);
        line += prefix;
    }
    std::string out;
    AppendHex(line, out, value.data);
    return out + line + "\n";
}

// Writes a key and its subtree, depth first, with a stack of its own: the depth of a tree read
// from a file is limited, but not by the size of the thread's stack.
void FormatTree(const RegKey& top, const std::string& topPath, std::string& out) {
    std::vector<std::pair<const RegKey*, std::string>> pending{{&top, topPath}};
    while (!pending.empty()) {
        auto [key, path] = std::move(pending.back());
        pending.pop_back();
        out += "[" + path + "]\n";
        if (!key->Security().empty()) {
            out += kSecurityTag + key->Security() + "\n";
        }
        for (const RegValue& value : key->Values()) {
            out += FormatValue(value);
        }
        out += "\n";
        std::vector<const RegKey*> children = key->Children();
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            pending.emplace_back(*child, path + "\\" + (*child)->Name());
        }
    }
}

bool ValidKeyName(const std::string& name) {
    return Utf8ToUtf16(name).size() <= RegistryStore::kMaxKeyNameLength;
}

// Reads a quoted string starting at `pos` (on the opening quote); leaves `pos` after the closing.
bool ReadQuoted(const std::string& line, size_t& pos, std::string& text) {
    if (pos >= line.size() || line[pos] != '"') {
        return false;
    }
    ++pos;
    text.clear();
    while (pos < line.size()) {
        char c = line[pos++];
        if (c == '\\' && pos < line.size()) {
            text += line[pos++];
        } else if (c == '"') {
            return true;
        } else {
            text += c;
        }
    }
    return false;
}

bool ParseHexBytes(const std::string& text, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    std::string digits;
    for (char c : text) {
        if (c == ',' || c == ' ' || c == '\t') {
            if (!digits.empty()) {
                bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
                digits.clear();
            }
            continue;
        }
        if (!std::isxdigit(static_cast<unsigned char>(c)) || digits.size() == 2) {
            return false;
        }
        digits += c;
    }
    if (!digits.empty()) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
    }
    return true;
}

bool ParseData(const std::string& text, RegValue& value) {
    if (!text.empty() && text[0] == '"') {
        size_t pos = 0;
        std::string content;
        if (!ReadQuoted(text, pos, content)) {
            return false;
        }
        value = RegValue::Text(value.name, content);
        return true;
    }
    if (text.rfind("dword:", 0) == 0) {
        std::string digits = Trim(text.substr(6));
        if (digits.empty() || digits.size() > 8 ||
            digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            return false;
        }
        value = RegValue::Number(value.name,
                                 static_cast<std::uint32_t>(std::stoul(digits, nullptr, 16)));
        return true;
    }
    if (text.rfind("hex", 0) == 0) {
        size_t colon = text.find(':');
        if (colon == std::string::npos) {
            return false;
        }
        std::string kind = text.substr(3, colon - 3);
        value.type = regtype::Binary;
        if (!kind.empty()) {
            if (kind.size() < 3 || kind.front() != '(' || kind.back() != ')') {
                return false;
            }
            unsigned long long type = std::stoull(kind.substr(1, kind.size() - 2), nullptr, 16);
            if (type > 0xFFFFFFFFULL) {
                return false;
            }
            value.type = static_cast<std::uint32_t>(type);
        }
        return ParseHexBytes(text.substr(colon + 1), value.data);
    }
    return false;
}

std::string DecodeFileText(const std::string& bytes) {
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE) {
        std::u16string text;
        for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
            text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          (static_cast<unsigned char>(bytes[i + 1]) << 8));
        }
        return Utf16ToUtf8(text);
    }
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) {
        return bytes.substr(3);
    }
    return bytes;
}

// Joins the lines that regedit continues with a trailing backslash (hex data only).
std::vector<std::string> LogicalLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string raw;
    std::string pending;
    while (std::getline(in, raw)) {
        if (!raw.empty() && raw.back() == '\r') {
            raw.pop_back();
        }
        std::string line = pending.empty() ? raw : pending + Trim(raw);
        std::string trimmed = Trim(line);
        bool continues = !trimmed.empty() && trimmed.back() == '\\' &&
                         trimmed.find("=hex") != std::string::npos;
        if (continues) {
            pending = trimmed.substr(0, trimmed.size() - 1);
            continue;
        }
        pending.clear();
        lines.push_back(line);
    }
    if (!pending.empty()) {
        lines.push_back(pending);
    }
    return lines;
}

} // namespace

RegValue RegValue::Text(const std::string& name, const std::string& utf8, std::uint32_t type) {
    RegValue value;
    value.name = name;
    value.type = type;
    value.data = Utf16Bytes(Utf8ToUtf16(utf8), true);
    return value;
}

RegValue RegValue::Number(const std::string& name, std::uint32_t number) {
    RegValue value;
    value.name = name;
    value.type = regtype::Dword;
    value.data = {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
                  static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 24)};
    return value;
}

RegValue RegValue::Multi(const std::string& name, const std::vector<std::string>& utf8) {
    RegValue value;
    value.name = name;
    value.type = regtype::MultiString;
    std::u16string text;
    for (const std::string& item : utf8) {
        text += Utf8ToUtf16(item);
        text += char16_t(0);
    }
    text += char16_t(0);
    value.data = Utf16Bytes(text, false);
    return value;
}

std::string RegValue::AsText() const {
    std::u16string text = Utf16FromBytes(data);
    auto end = text.find(char16_t(0));
    if (end != std::u16string::npos) {
        text.resize(end);
    }
    return Utf16ToUtf8(text);
}

std::vector<std::string> RegValue::AsMulti() const {
    std::vector<std::string> items;
    std::u16string text = Utf16FromBytes(data);
    std::u16string current;
    for (char16_t unit : text) {
        if (unit == 0) {
            if (current.empty()) {
                break;
            }
            items.push_back(Utf16ToUtf8(current));
            current.clear();
        } else {
            current += unit;
        }
    }
    if (!current.empty()) {
        items.push_back(Utf16ToUtf8(current));
    }
    return items;
}

RegKey* RegKey::Child(const std::string& name) const {
    auto found = mChildren.find(FoldName(name));
    return found == mChildren.end() ? nullptr : found->second.get();
}

RegKey& RegKey::AddChild(const std::string& name) {
    auto& slot = mChildren[FoldName(name)];
    if (!slot) {
        slot = std::make_unique<RegKey>(name);
    }
    return *slot;
}

bool RegKey::RemoveChild(const std::string& name) {
    return mChildren.erase(FoldName(name)) != 0;
}

std::vector<const RegKey*> RegKey::Children() const {
    std::vector<const RegKey*> children;
    children.reserve(mChildren.size());
    for (const auto& entry : mChildren) {
        children.push_back(entry.second.get());
    }
    return children;
}

const RegValue* RegKey::Value(const std::string& name) const {
    for (const RegValue& value : mValues) {
        if (NamesEqual(value.name, name)) {
            return &value;
        }
    }
    return nullptr;
}

void RegKey::SetValue(RegValue value) {
    for (RegValue& existing : mValues) {
        if (NamesEqual(existing.name, value.name)) {
            // The name keeps the spelling of its first writer, as on Windows.
            value.name = existing.name;
            existing = std::move(value);
            return;
        }
    }
    mValues.push_back(std::move(value));
}

bool RegKey::RemoveValue(const std::string& name) {
    for (auto it = mValues.begin(); it != mValues.end(); ++it) {
        if (NamesEqual(it->name, name)) {
            mValues.erase(it);
            return true;
        }
    }
    return false;
}

RegistryStore::RegistryStore()
        : mMachine(std::make_unique<RegKey>("HKEY_LOCAL_MACHINE")),
          mUsers(std::make_unique<RegKey>("HKEY_USERS")) {}

RegKey* RegistryStore::Hive(const std::string& name) const {
    if (EqualsNoCase(name, "HKEY_LOCAL_MACHINE")) {
        return mMachine.get();
    }
    if (EqualsNoCase(name, "HKEY_USERS")) {
        return mUsers.get();
    }
    return nullptr;
}

RegKey* RegistryStore::Find(const std::string& path) const {
    std::vector<std::string> names = SplitPath(path);
    if (names.empty()) {
        return nullptr;
    }
    RegKey* key = Hive(names[0]);
    for (size_t i = 1; key != nullptr && i < names.size(); ++i) {
        key = key->Child(names[i]);
    }
    return key;
}

RegKey* RegistryStore::Create(const std::string& path) {
    std::vector<std::string> names = SplitPath(path);
    if (names.empty()) {
        return nullptr;
    }
    if (names.size() - 1 > kMaxDepth) {
        return nullptr;
    }
    for (size_t i = 1; i < names.size(); ++i) {
        if (!ValidKeyName(names[i])) {
            return nullptr;
        }
    }
    RegKey* key = Hive(names[0]);
    for (size_t i = 1; key != nullptr && i < names.size(); ++i) {
        key = &key->AddChild(names[i]);
    }
    if (key != nullptr) {
        mDirty = true;
    }
    return key;
}

bool RegistryStore::Remove(const std::string& path) {
    auto cut = path.rfind('\\');
    if (cut == std::string::npos) {
        return false;
    }
    RegKey* parent = Find(path.substr(0, cut));
    if (parent == nullptr || !parent->RemoveChild(path.substr(cut + 1))) {
        return false;
    }
    mDirty = true;
    return true;
}

namespace {

std::string ExpandRootName(const std::string& path, const std::string& currentUserPath) {
    auto cut = path.find('\\');
    std::string root = path.substr(0, cut);
    std::string rest = cut == std::string::npos ? "" : path.substr(cut);
    if (EqualsNoCase(root, "HKEY_LOCAL_MACHINE") || EqualsNoCase(root, "HKLM")) {
        return "HKEY_LOCAL_MACHINE" + rest;
    }
    if (EqualsNoCase(root, "HKEY_USERS") || EqualsNoCase(root, "HKU")) {
        return "HKEY_USERS" + rest;
    }
    if (EqualsNoCase(root, "HKEY_CURRENT_USER") || EqualsNoCase(root, "HKCU")) {
        return currentUserPath + rest;
    }
    if (EqualsNoCase(root, "HKEY_CLASSES_ROOT") || EqualsNoCase(root, "HKCR")) {
        return "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes" + rest;
    }
    if (EqualsNoCase(root, "HKEY_CURRENT_CONFIG") || EqualsNoCase(root, "HKCC")) {
        return "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current" + rest;
    }
    return "";
}

} // namespace

bool RegistryStore::Parse(const std::string& fileBytes, const std::string& currentUserPath,
                          std::string& error) {
    std::vector<std::string> lines = LogicalLines(DecodeFileText(fileBytes));
    size_t index = 0;
    while (index < lines.size() && Trim(lines[index]).empty()) {
        ++index;
    }
    if (index == lines.size() ||
        (Trim(lines[index]) != kHeader5 && Trim(lines[index]) != kHeader4)) {
        error = "not a registry export: the first line must be \"" + std::string(kHeader5) + "\"";
        return false;
    }
    RegKey* current = nullptr;
    for (++index; index < lines.size(); ++index) {
        const std::string& raw = lines[index];
        std::string line = Trim(raw);
        std::string where = " (line " + std::to_string(index + 1) + ")";
        if (line.empty()) {
            continue;
        }
        if (line.rfind(kSecurityTag, 0) == 0) {
            if (current != nullptr) {
                current->SetSecurity(Trim(line.substr(std::string(kSecurityTag).size())));
            }
            continue;
        }
        if (line[0] == ';') {
            continue;
        }
        if (line[0] == '[') {
            if (line.back() != ']') {
                error = "unterminated key name" + where;
                return false;
            }
            bool remove = line.size() > 2 && line[1] == '-';
            std::string path = ExpandRootName(
                    line.substr(remove ? 2 : 1, line.size() - (remove ? 3 : 2)), currentUserPath);
            if (path.empty()) {
                error = "unknown root key" + where;
                return false;
            }
            if (remove) {
                Remove(path);
                current = nullptr;
                continue;
            }
            current = Create(path);
            if (current == nullptr) {
                error = SplitPath(path).size() - 1 > kMaxDepth
                                ? "key nested deeper than " + std::to_string(kMaxDepth) +
                                          " levels" + where
                                : "key name longer than " + std::to_string(kMaxKeyNameLength) +
                                          " characters" + where;
                return false;
            }
            continue;
        }
        if (current == nullptr) {
            error = "value outside of a key" + where;
            return false;
        }
        RegValue value;
        size_t pos = 0;
        if (line[0] == '@') {
            pos = 1;
        } else if (!ReadQuoted(line, pos, value.name)) {
            error = "malformed value name" + where;
            return false;
        }
        while (pos < line.size() && line[pos] == ' ') {
            ++pos;
        }
        if (pos >= line.size() || line[pos] != '=') {
            error = "missing \"=\"" + where;
            return false;
        }
        std::string data = Trim(line.substr(pos + 1));
        if (data == "-") {
            current->RemoveValue(value.name);
            continue;
        }
        bool parsed = false;
        try {
            parsed = ParseData(data, value);
        } catch (const std::exception&) {
            parsed = false; // a number out of range
        }
        if (!parsed) {
            error = "malformed value data" + where;
            return false;
        }
        current->SetValue(std::move(value));
    }
    mDirty = false;
    return true;
}

std::string RegistryStore::Format() const {
    std::string out = std::string(kHeader5) + "\n\n";
    for (const RegKey* hive : {mMachine.get(), mUsers.get()}) {
        if (!hive->Values().empty() || !hive->Security().empty()) {
            FormatTree(*hive, hive->Name(), out);
            continue;
        }
        for (const RegKey* child : hive->Children()) {
            FormatTree(*child, hive->Name() + "\\" + child->Name(), out);
        }
    }
    return out;
}

namespace {

// A list of strings that `mine` only lengthened (as PendingFileRenameOperations grows by a pair
// with each delayed move): the strings it added, as UTF-16 bytes with their terminators but
// without the list's closing NUL; empty when mine did anything else to it.
std::vector<std::uint8_t> AppendedStrings(const RegValue& before, const RegValue& mine) {
    if (before.type != regtype::MultiString || mine.type != regtype::MultiString ||
        before.data.size() < 2 || mine.data.size() <= before.data.size() ||
        !std::equal(before.data.begin(), before.data.end() - 2, mine.data.begin())) {
        return {};
    }
    return std::vector<std::uint8_t>(mine.data.begin() + (before.data.size() - 2),
                                     mine.data.end() - 2);
}

} // namespace

void RegistryStore::ApplyChanges(const RegistryStore& base, const RegistryStore& mine) {
    // One step of the walk: the same key in both trees (either may lack it) and its path.
    struct Step {
        const RegKey* base;
        const RegKey* mine;
        std::string path;
    };
    std::vector<Step> pending;
    for (const char* hive : {"HKEY_LOCAL_MACHINE", "HKEY_USERS"}) {
        pending.push_back({base.Hive(hive), mine.Hive(hive), hive});
    }
    while (!pending.empty()) {
        Step step = std::move(pending.back());
        pending.pop_back();
        if (step.mine == nullptr) {
            Remove(step.path);
            continue;
        }
        RegKey* target = Find(step.path);
        auto here = [&]() -> RegKey* {
            if (target == nullptr) {
                target = Create(step.path);
            }
            return target;
        };
        if (step.base == nullptr || step.base->Security() != step.mine->Security()) {
            if (RegKey* key = here()) {
                key->SetSecurity(step.mine->Security());
            }
        }
        for (const RegValue& value : step.mine->Values()) {
            const RegValue* before = step.base != nullptr ? step.base->Value(value.name) : nullptr;
            if (before == nullptr || before->type != value.type || before->data != value.data) {
                RegKey* key = here();
                if (key == nullptr) {
                    continue;
                }
                // What both appended to a list, both keep.
                const RegValue* now = key->Value(value.name);
                std::vector<std::uint8_t> added =
                        before != nullptr ? AppendedStrings(*before, value)
                                          : std::vector<std::uint8_t>();
                if (!added.empty() && now != nullptr && now->type == regtype::MultiString &&
                    now->data.size() >= 2 && now->data != before->data) {
                    RegValue joined = *now;
                    joined.data.insert(joined.data.end() - 2, added.begin(), added.end());
                    key->SetValue(std::move(joined));
                } else {
                    key->SetValue(value);
                }
            }
        }
        if (step.base != nullptr) {
            for (const RegValue& value : step.base->Values()) {
                if (step.mine->Value(value.name) == nullptr && target != nullptr) {
                    target->RemoveValue(value.name);
                }
            }
            for (const RegKey* child : step.base->Children()) {
                if (step.mine->Child(child->Name()) == nullptr) {
                    pending.push_back({child, nullptr, step.path + "\\" + child->Name()});
                }
            }
        }
        for (const RegKey* child : step.mine->Children()) {
            pending.push_back({step.base != nullptr ? step.base->Child(child->Name()) : nullptr,
                               child, step.path + "\\" + child->Name()});
        }
    }
    mDirty = true;
}

} // namespace sim
