#include "system/ProtectedFolder.h"

#include "os/Files.h"
#include "os/Process.h"
#include "system/Registry.h"

#include <string_view>

namespace {

constexpr const char* kCurrentVersion = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr const char* kProfileList = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool StartsWithNoCase(const CStdStr& text, const char* prefix) {
    CStdStr head = text.Left(static_cast<int>(std::char_traits<char>::length(prefix)));
    return head.EqualsNoCase(prefix);
}

// Windows drops trailing blanks and dots from a name: "Windows. " opens "Windows".
CStdStr TrimName(CStdStr name) {
    while (!name.empty() && (name.back() == ' ' || name.back() == '.')) {
        name.pop_back();
    }
    return name;
}

// `root` (a drive's "C:\" or a share's "\\server\share") followed by the names of `rest`, with
// "." and ".." folded; ".." never climbs above the root.
CStdStr FoldNames(const CStdStr& root, const CStdStr& rest) {
    std::vector<CStdStr> names;
    size_t start = 0;
    while (start <= rest.size()) {
        size_t end = rest.find('\\', start);
        if (end == std::string::npos) {
            end = rest.size();
        }
        std::string_view piece(rest.data() + start, end - start);
        start = end + 1;
        if (piece == "..") {
            if (!names.empty()) {
                names.pop_back();
            }
            continue;
        }
        CStdStr name = TrimName(CStdStr(piece));
        if (!name.empty()) {
            names.push_back(name);
        }
    }
    CStdStr full = root;
    for (const CStdStr& name : names) {
        if (!full.empty() && full.back() != '\\') {
            full += '\\';
        }
        full += name;
    }
    return full;
}

// A path that names its root: a drive ("C:\...") or a share ("\\server\share\...").
CStdStr NormalizeAbsolute(const CStdStr& path) {
    if (path.size() >= 3 && IsLetter(path[0]) && path[1] == ':' && path[2] == '\\') {
        CStdStr root = CStdStr(1, CStdStr::ToUpper(path[0])) + ":\\";
        return FoldNames(root, path.Mid(3));
    }
    if (StartsWithNoCase(path, "\\\\")) {
        CStdStr rest = path.Mid(2);
        int server = rest.Find('\\');
        if (server < 0) {
            return "\\\\" + TrimName(rest);
        }
        int share = rest.Find('\\', server + 1);
        CStdStr root = "\\\\" + rest.Left(server) + "\\" +
                       TrimName(share < 0 ? rest.Mid(server + 1)
                                          : rest.Mid(server + 1, share - server - 1));
        return share < 0 ? root : FoldNames(root, rest.Mid(share + 1));
    }
    return CStdStr();
}

CStdStr Environment(const char* name) {
    std::string value;
    return os::GetEnvironmentVariable(name, value) == os::error::Success ? CStdStr(value)
                                                                         : CStdStr();
}

CStdStr Expanded(const CStdStr& text) {
    std::string value;
    return os::ExpandEnvironmentStrings(text, value) == os::error::Success ? CStdStr(value) : text;
}

CStdStr ParentOf(const CStdStr& normalized) {
    int slash = normalized.ReverseFind('\\');
    if (slash < 0) {
        return CStdStr();
    }
    // The parent of "C:\a" is the root "C:\", which keeps its backslash.
    return slash == 2 && normalized[1] == ':' ? normalized.Left(3) : normalized.Left(slash);
}

bool IsDriveRoot(const CStdStr& normalized) {
    return normalized.size() == 3 && normalized[1] == ':' && normalized[2] == '\\';
}

bool IsShareRoot(const CStdStr& normalized) {
    if (!StartsWithNoCase(normalized, "\\\\")) {
        return false;
    }
    int server = normalized.Find('\\', 2);
    return server < 0 || normalized.Find('\\', server + 1) < 0;
}

// Whether `folder` is `inner` or holds it.
bool Contains(const CStdStr& folder, const CStdStr& inner) {
    if (folder.empty() || inner.empty()) {
        return false;
    }
    if (inner.size() == folder.size()) {
        return inner.EqualsNoCase(folder);
    }
    return inner.size() > folder.size() && inner[folder.size()] == '\\' &&
           inner.Left(folder.GetLength()).EqualsNoCase(folder);
}

} // namespace

CStdStr ProtectedFolder::Normalize(const CStdStr& path) {
    CStdStr text = path;
    text.Replace('/', '\\');
    text.TrimLeft();
    // "\\?\C:\..." and "\\.\C:\..." name the same file as "C:\...", "\\?\UNC\server\..." the
    // same as "\\server\...".
    if (StartsWithNoCase(text, "\\\\?\\") || StartsWithNoCase(text, "\\\\.\\")) {
        text = text.Mid(4);
        if (StartsWithNoCase(text, "UNC\\")) {
            text = "\\\\" + text.Mid(4);
        }
    }
    if (text.size() >= 2 && IsLetter(text[0]) && text[1] == ':' &&
        (text.size() == 2 || text[2] != '\\') && TrimName(text.Mid(2)).empty()) {
        // A bare drive: a listing of "C:" lists "C:\*", its root.
        return CStdStr(1, CStdStr::ToUpper(text[0])) + ":\\";
    }
    CStdStr absolute = NormalizeAbsolute(text);
    if (!absolute.empty()) {
        return absolute;
    }
    // Relative to the current folder, or to the current folder of a drive ("C:folder").
    std::string full;
    if (os::GetFullPathName(text, full) != os::error::Success) {
        return CStdStr();
    }
    CStdStr resolved(full);
    resolved.Replace('/', '\\');
    return NormalizeAbsolute(resolved);
}

std::vector<ProtectedFolder::Named> ProtectedFolder::systemFolders() {
    std::vector<Named> folders;
    std::string windows;
    if (os::GetWindowsDirectory(windows) == os::error::Success) {
        folders.push_back({windows, "the Windows folder"});
        folders.push_back({CStdStr(windows) + "\\SysWOW64", "the system folder"});
    }
    std::string system;
    if (os::GetSystemDirectory(system) == os::error::Success) {
        folders.push_back({system, "the system folder"});
    }
    folders.push_back({Environment("SystemRoot"), "the Windows folder"});
    Registry registry;
    for (const char* value : {"ProgramFilesDir", "ProgramFilesDir (x86)"}) {
        folders.push_back({registry.ReadStringValue("HKLM", kCurrentVersion, value),
                           "a program files folder"});
    }
    for (const char* name : {"ProgramFiles", "ProgramFiles(x86)", "ProgramW6432"}) {
        folders.push_back({Environment(name), "a program files folder"});
    }
    for (const char* name : {"USERPROFILE", "ALLUSERSPROFILE", "PUBLIC"}) {
        folders.push_back({Environment(name), "a user's profile"});
    }
    return folders;
}

std::vector<ProtectedFolder::Named> ProtectedFolder::profileRoots() {
    std::vector<Named> roots;
    Registry registry;
    roots.push_back({Expanded(registry.ReadStringValue("HKLM", kProfileList, "ProfilesDirectory")),
                     "the users' profiles folder"});
    for (const char* name : {"USERPROFILE", "ALLUSERSPROFILE", "PUBLIC"}) {
        CStdStr profile = Normalize(Environment(name));
        if (!profile.empty()) {
            roots.push_back({ParentOf(profile), "the users' profiles folder"});
        }
    }
    return roots;
}

CStdStr ProtectedFolder::WhyProtected(const CStdStr& path) {
    CStdStr target = Normalize(path);
    if (target.empty()) {
        return "a path that can't be resolved";
    }
    if (IsDriveRoot(target)) {
        return "a drive's root";
    }
    if (IsShareRoot(target)) {
        return "a network share's root";
    }
    // What the target is, when it is a protected folder; what it holds, when it is above one.
    auto judge = [&target](const CStdStr& folder, const char* what) -> CStdStr {
        if (!Contains(target, folder)) {
            return CStdStr();
        }
        return Contains(folder, target) ? CStdStr(what) : "a folder that holds " + CStdStr(what);
    };
    for (const Named& named : systemFolders()) {
        CStdStr folder = named.folder.empty() ? CStdStr() : Normalize(named.folder);
        if (CStdStr why = judge(folder, named.what); !why.empty()) {
            return why;
        }
    }
    for (const Named& named : profileRoots()) {
        CStdStr folder = named.folder.empty() ? CStdStr() : Normalize(named.folder);
        if (folder.empty() || IsDriveRoot(folder)) {
            continue;
        }
        if (CStdStr why = judge(folder, named.what); !why.empty()) {
            return why;
        }
        if (ParentOf(target).EqualsNoCase(folder)) {
            return "a user's profile";
        }
    }
    return CStdStr();
}
