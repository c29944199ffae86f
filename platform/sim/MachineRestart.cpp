#include "sim/MachineRestart.h"

#include "sim/AtomicFile.h"
#include "sim/HostFile.h"
#include "sim/MachineLock.h"
#include "sim/MachinePreset.h"
#include "sim/SimMachine.h"
#include "sim/Text.h"

#include <cstdio>
#include <unistd.h>

namespace sim {

namespace {

const char* const kSessionManager =
        "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Session Manager";
const char* const kPendingValue = "PendingFileRenameOperations";
const char* const kRunOnce =
        "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce";

// A path of the machine's own drives, from UTF-8 text.
bool Locate(SimMachine& machine, const std::string& utf8, HostLocation& out) {
    WindowsPath parsed;
    if (WindowsPath::Parse(utf8, "C:\\", false, parsed) != os::error::Success ||
        parsed.kind != WindowsPath::Kind::Drive) {
        return false;
    }
    return machine.Paths().Locate(parsed, out) == os::error::Success;
}

// Deletes a file, or a folder when it is empty, as the system does at its start: attributes
// do not hold it back.
std::string Delete(SimMachine& machine, const std::string& path) {
    HostLocation location;
    if (!Locate(machine, path, location) || !location.exists) {
        return "not found: " + path;
    }
    if (location.isDirectory) {
        return ::rmdir(location.hostPath.c_str()) == 0 ? "removed folder " + path
                                                       : "folder not empty, left: " + path;
    }
    return ::unlink(location.hostPath.c_str()) == 0 ? "deleted " + path
                                                    : "could not delete " + path;
}

// Moves `from` to `to`; an existing target is replaced only when `replace` is set.
std::string Rename(SimMachine& machine, const std::string& from, const std::string& to,
                   bool replace) {
    HostLocation source;
    HostLocation target;
    if (!Locate(machine, from, source) || !source.exists) {
        return "not found: " + from;
    }
    if (!Locate(machine, to, target) || !target.parentExists) {
        return "no folder for " + to;
    }
    if (target.exists) {
        if (!replace || target.isDirectory) {
            return "target exists, left: " + from + " -> " + to;
        }
        ::unlink(target.hostPath.c_str());
    }
    if (HostFile::Move(source.hostPath, target.hostPath) != os::error::Success) {
        return "could not move " + from + " to " + to;
    }
    return target.exists ? "replaced " + to + " with " + from : "renamed " + from + " to " + to;
}

// The strings of a REG_MULTI_SZ value, empty ones included, up to the closing empty string
// where a source name is due.
std::vector<std::string> PendingStrings(const RegValue& value) {
    std::vector<std::string> strings;
    std::u16string current;
    for (size_t i = 0; i + 1 < value.data.size(); i += 2) {
        char16_t unit = static_cast<char16_t>(value.data[i] | (value.data[i + 1] << 8));
        if (unit != 0) {
            current += unit;
            continue;
        }
        strings.push_back(Utf16ToUtf8(current));
        current.clear();
    }
    if (!current.empty()) {
        strings.push_back(Utf16ToUtf8(current));
    }
    return strings;
}

std::string WithoutNtPrefix(const std::string& path) {
    return path.rfind("\\??\\", 0) == 0 ? path.substr(4) : path;
}

void RunPendingOperations(SimMachine& machine, std::vector<std::string>& report) {
    RegKey* session = machine.Registry().Find(kSessionManager);
    const RegValue* pending = session == nullptr ? nullptr : session->Value(kPendingValue);
    if (pending == nullptr) {
        return;
    }
    std::vector<std::string> strings = PendingStrings(*pending);
    for (size_t i = 0; i < strings.size() && !strings[i].empty(); i += 2) {
        std::string from = WithoutNtPrefix(strings[i]);
        std::string to = i + 1 < strings.size() ? strings[i + 1] : std::string();
        if (to.empty()) {
            report.push_back(Delete(machine, from));
            continue;
        }
        bool replace = to[0] == '!';
        report.push_back(
                Rename(machine, from, WithoutNtPrefix(replace ? to.substr(1) : to), replace));
    }
    session->RemoveValue(kPendingValue);
    machine.Registry().SetDirty(true);
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::string line;
    for (char c : text) {
        if (c == '\n') {
            lines.push_back(line);
            line.clear();
        } else if (c != '\r') {
            line += c;
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

void RunWinInit(SimMachine& machine, std::vector<std::string>& report) {
    if (machine.Identity().IsNT()) {
        return;
    }
    std::string path = machine.Identity().windowsDirectory + "\\WININIT.INI";
    HostLocation location;
    std::string text;
    if (!Locate(machine, path, location) || !location.exists || location.Openable() != 0 ||
        !ReadWholeFile(location.hostPath, text)) {
        return;
    }
    bool inRename = false;
    for (const std::string& raw : Lines(machine.ToUtf8(text))) {
        std::string line = Trim(raw);
        if (!line.empty() && line[0] == '[') {
            inRename = EqualsNoCase(line, "[Rename]");
            continue;
        }
        auto equals = line.find('=');
        if (!inRename || equals == std::string::npos) {
            continue;
        }
        std::string target = Trim(line.substr(0, equals));
        std::string source = Trim(line.substr(equals + 1));
        report.push_back("WININIT.INI: " + (EqualsNoCase(target, "NUL")
                                                    ? Delete(machine, source)
                                                    : Rename(machine, source, target, true)));
    }
    std::string backup =
            location.hostPath.substr(0, location.hostPath.rfind('/') + 1) + "WININIT.BAK";
    HostFile::Move(location.hostPath, backup);
    report.push_back("WININIT.INI done, kept as WININIT.BAK");
}

// The words of a command line; quotes group and are dropped.
std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    bool any = false;
    for (char c : line) {
        if (c == '"') {
            quoted = !quoted;
            any = true;
        } else if ((c == ' ' || c == '\t') && !quoted) {
            if (any) {
                words.push_back(word);
            }
            word.clear();
            any = false;
        } else {
            word += c;
            any = true;
        }
    }
    if (any) {
        words.push_back(word);
    }
    return words;
}

std::string BaseName(const std::string& path) {
    auto cut = path.find_last_of("\\/");
    return LowerAscii(cut == std::string::npos ? path : path.substr(cut + 1));
}

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The batch file that a RunOnce command runs, or empty when it runs a program.
std::string BatchOf(const std::string& command) {
    std::vector<std::string> words = Words(command);
    if (words.empty()) {
        return std::string();
    }
    size_t at = 0;
    std::string program = BaseName(words[0]);
    if (program == "command.com" || program == "cmd.exe" || program == "command" ||
        program == "cmd") {
        at = 1;
        while (at < words.size() && words[at].rfind("/", 0) == 0) {
            ++at;
        }
    }
    if (at >= words.size()) {
        return std::string();
    }
    std::string name = BaseName(words[at]);
    return EndsWith(name, ".bat") || EndsWith(name, ".cmd") ? words[at] : std::string();
}

void RunBatch(SimMachine& machine, const std::string& batch, std::vector<std::string>& report) {
    HostLocation location;
    std::string text;
    if (!Locate(machine, batch, location) || !location.exists || location.Openable() != 0 ||
        !ReadWholeFile(location.hostPath, text)) {
        report.push_back("batch file not found: " + batch);
        return;
    }
    report.push_back("ran " + batch);
    bool deleteItself = false;
    for (const std::string& raw : Lines(machine.ToUtf8(text))) {
        std::string line = Trim(raw);
        if (!line.empty() && line[0] == '@') {
            line = Trim(line.substr(1));
        }
        std::vector<std::string> words = Words(line);
        if (words.empty()) {
            continue;
        }
        std::string verb = LowerAscii(words[0]);
        if (verb == "rem" || verb == "echo" || verb == "::") {
            continue;
        }
        std::vector<std::string> arguments;
        for (size_t i = 1; i < words.size(); ++i) {
            if (words[i].rfind("/", 0) != 0) {
                arguments.push_back(words[i]);
            }
        }
        bool remove = verb == "del" || verb == "erase";
        bool removeFolder = verb == "rmdir" || verb == "rd";
        if ((!remove && !removeFolder) || arguments.size() != 1 ||
            arguments[0].find_first_of("*?%") != std::string::npos) {
            report.push_back("  left: " + line);
            continue;
        }
        HostLocation target;
        if (remove && Locate(machine, arguments[0], target) && target.exists &&
            target.hostPath == location.hostPath) {
            deleteItself = true;
            continue;
        }
        HostLocation found;
        bool isFolder = Locate(machine, arguments[0], found) && found.exists && found.isDirectory;
        if (remove && isFolder) {
            report.push_back("  left: " + line);
            continue;
        }
        report.push_back("  " + Delete(machine, arguments[0]));
    }
    if (deleteItself) {
        ::unlink(location.hostPath.c_str());
        report.push_back("  deleted " + batch);
    }
}

void RunOnceEntries(SimMachine& machine, std::vector<std::string>& report) {
    RegKey* key = machine.Registry().Find(kRunOnce);
    if (key == nullptr) {
        return;
    }
    std::vector<RegValue> values = key->Values();
    for (const RegValue& value : values) {
        std::string command = value.AsText();
        std::string batch = BatchOf(command);
        if (batch.empty()) {
            report.push_back("RunOnce \"" + value.name + "\" not run (a program): " + command);
            continue;
        }
        RunBatch(machine, batch, report);
        key->RemoveValue(value.name);
        machine.Registry().SetDirty(true);
    }
}

// faults.ini without its [Files] section; the rest of the text, comments included, stays.
bool ClearFileLocks(SimMachine& machine, std::vector<std::string>& report, std::string& why) {
    std::string path = machine.Directory() + "/faults.ini";
    std::string text;
    if (!ReadWholeFile(path, text)) {
        return true;
    }
    std::string kept;
    bool inFiles = false;
    size_t removed = 0;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        std::string line = text.substr(start, end == std::string::npos ? end : end - start + 1);
        start = end == std::string::npos ? text.size() : end + 1;
        std::string trimmed = Trim(line);
        if (!trimmed.empty() && trimmed[0] == '[') {
            inFiles = EqualsNoCase(trimmed.substr(0, trimmed.find(']') + 1), "[Files]");
        }
        if (inFiles) {
            removed += !trimmed.empty() && trimmed[0] != '[' && trimmed[0] != ';' ? 1 : 0;
            continue;
        }
        kept += line;
    }
    if (kept == text) {
        return true;
    }
    if (!WriteFileAtomically(path, kept, why)) {
        return false;
    }
    report.push_back("file locks of faults.ini ended: " + std::to_string(removed));
    return true;
}

} // namespace

bool MachineRestart::Run(SimMachine& machine, std::vector<std::string>& report, std::string& why) {
    // No other process changes the machine while it restarts.
    MachineLock lock(machine.Directory());
    RunPendingOperations(machine, report);
    RunWinInit(machine, report);
    RunOnceEntries(machine, report);
    if (!ClearFileLocks(machine, report, why)) {
        return false;
    }
    machine.Processes() = MachinePreset::StartupProcesses(machine.Identity());
    machine.ProcessesChanged();
    report.push_back("programs of a fresh start: " +
                     std::to_string(machine.Processes().Processes().size()));
    if (!machine.Commit()) {
        why = "the state of " + machine.Directory() + " could not be written";
        return false;
    }
    return true;
}

} // namespace sim
