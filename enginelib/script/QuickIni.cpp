#include "script/QuickIni.h"

#include "os/Files.h"
#include "script/TextFile.h"
#include "system/DebugLogger.h"

bool QuickReadIniString(const CStdStr& path, const CStdStr& section, const CStdStr& key,
                        CStdStr& value) {
    if (path.empty() || section.empty() || key.empty()) {
        return false;
    }
    value.clear();
    std::uint32_t attributes = 0;
    if (os::GetFileAttributes(path, attributes) != os::error::Success) {
        ENGINE_LOG(0, "File %s does not exist.", path.c_str());
        return false;
    }
    TextFile file;
    if (!file.Open(path, TextFile::Read, TextFile::Detect)) {
        ENGINE_LOG(0, "could not open file %s for reading.", path.c_str());
        return false;
    }
    bool inSection = false;
    CStdStr line;
    while (file.ReadString(line)) {
        line.Trim();
        if (line.empty() || line[0] == '#' || line[0] == ';') {
            continue;
        }
        if (line.front() == '[' && line.back() == ']') {
            CStdStr name = line.Mid(1, line.GetLength() - 2);
            inSection = name.Trim().EqualsNoCase(section);
            continue;
        }
        if (!inSection) {
            continue;
        }
        int equals = line.Find('=');
        if (equals == 0) {
            continue;
        }
        CStdStr name = equals < 0 ? line : line.Left(equals);
        if (!name.Trim().EqualsNoCase(key)) {
            continue;
        }
        CStdStr found = equals < 0 ? CStdStr() : line.Mid(equals + 1);
        found.Trim();
        if (found.size() >= 2 && found.front() == '"' && found.back() == '"') {
            found = found.Mid(1, found.GetLength() - 2);
        }
        value = found;
        return true;
    }
    return false;
}
