#include "core/DriverSearch.h"

#include "core/DriversIni.h"
#include "os/Files.h"
#include "script/InfFile.h"
#include "script/OSInfo.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"

namespace {

CStdStr WithBackslash(const CStdStr& folder) {
    return folder.empty() || folder.back() == '\\' ? folder : CStdStr(folder + "\\");
}

// " (PS)" and " (PCL)" go, so that the streams of one model meet in one row.
CStdStr ModelName(CStdStr name) {
    for (const char* cut : {" (PS)", " (PCL)"}) {
        int at = name.Find(cut);
        if (at >= 0) {
            name.erase(static_cast<size_t>(at), std::char_traits<char>::length(cut));
        }
    }
    return name;
}

bool StartsWithNoCase(const CStdStr& text, const CStdStr& prefix) {
    return text.size() >= prefix.size() && text.Left(static_cast<int>(prefix.size()))
                                                   .EqualsNoCase(prefix);
}

} // namespace

CStdStr DriverSearch::InfOsWord(InfFile& inf, const OSInfo& os) {
    CStdStr word = inf.GetValue("VERSION", "QM_DRV_OS");
    word.Trim();
    if (word.EqualsNoCase("MERGED")) {
        CStdStr merged = inf.GetValue("VERSION", "QM_DRV_MERGED_OS");
        if (merged.empty()) {
            word = os.Is64Bit() ? "X64" : "2000";
        } else {
            const char* wanted = os.Is64Bit() ? (os.IsAtLeastVista() ? "V64" : "X64")
                                              : (os.IsAtLeastVista() ? "V32" : "2000");
            for (const CStdStr& token : Tokenizer::Split(merged, ',', Tokenizer::Trim)) {
                if (token.EqualsNoCase(wanted)) {
                    word = token;
                }
            }
        }
    }
    word.MakeUpper();
    if (word == "2000") {
        word = "2K";
    } else if (word == "9X") {
        word = "95";
    }
    for (const char* known : {"2K", "NT", "95", "X64", "V64", "V32"}) {
        if (word == known) {
            return word;
        }
    }
    return CStdStr();
}

bool DriverSearch::AddInf(InfFile& inf, const CStdStr& relativePath, const OSInfo& os) {
    CStdStr suffix = InfOsWord(inf, os);
    if (suffix.empty()) {
        ENGINE_LOG(1, "Inf <%s> serves no system of the model table", inf.GetFileName().c_str());
        inf.Clear();
        return false;
    }
    IniFile& table = DriversIni::Table();
    std::vector<InfDriver> drivers;
    inf.GetDriversList(drivers, false);
    bool added = false;
    for (const InfDriver& driver : drivers) {
        CStdStr model = ModelName(driver.name);
        CStdStr hardwareId = driver.hardwareId;
        if (StartsWithNoCase(hardwareId, "USBPRINT\\")) {
            hardwareId = "USBPRINT\\" + hardwareId;
        }
        CStdStr install = inf.FindInstallSection(driver.installSection);
        CStdStr dataName = install.empty() ? CStdStr() : inf.GetValue(install, "QM_DRV_INFO");
        IniSection* data = dataName.empty() ? nullptr : inf.FindSection(dataName);
        if (data == nullptr) {
            ENGINE_LOG(1, "Driver <%s> of inf <%s> has no QM_DRV_INFO data", driver.name.c_str(),
                       inf.GetFileName().c_str());
            continue;
        }
        CStdStr stream;
        data->GetValue("QM_DRV_TYPE", stream);
        stream.Trim();
        if (stream.empty()) {
            continue;
        }
        table.SetValue("Printer", model, "");
        CStdStr network;
        if (data->GetValue("QM_DRV_NETSUPPORT", network) && std::atoi(network.c_str()) >= 1) {
            table.SetValue(model, "NWLevel", network);
        }
        table.SetValue(model, stream + "PNPId", hardwareId);
        for (const auto& [key, value] : data->Lines()) {
            int dot = key.ReverseFind('.');
            if (dot < 0) {
                continue;
            }
            CStdStr base = key.Left(dot);
            CStdStr keySuffix = key.Mid(dot + 1);
            if (base.EqualsNoCase("QM_DRV_DEFAULT") && std::atoi(value.c_str()) != 0) {
                table.SetValue(model, "DefaultDriver." + keySuffix, stream);
            } else if (base.EqualsNoCase("QM_DRV_INSTALL") && std::atoi(value.c_str()) == 0) {
                table.SetValue(model, stream + ".NOT.Supported." + keySuffix, "1");
            }
        }
        table.SetValue(model, stream + "Inf." + suffix, relativePath);
        CStdStr streams = table.GetValue(model, "Streams");
        if (!Tokenizer::Split(streams, ',', Tokenizer::Trim).ContainsNoCase(stream)) {
            table.SetValue(model, "Streams", streams.empty() ? stream : streams + "," + stream);
        }
        CStdStr known = table.GetValue(model, stream + "Name");
        if (known.empty()) {
            table.SetValue(model, stream + "Name", driver.name);
        } else if (known != driver.name) {
            table.SetValue(model, stream + "Name." + suffix, driver.name);
        }
        CStdStr display;
        if (data->GetValue("QM_DRV_TYPE_DISPLAYSTR", display)) {
            table.SetValue(model, stream + "Display." + suffix, inf.Resolve(display));
        }
        added = true;
    }
    return added;
}

void DriverSearch::LocateAllInfs(const CStdStr& folder,
                                 std::vector<std::pair<CStdStr, CStdStr>>& list) {
    ENGINE_LOG(1, "Look for infs in <%s>", folder.c_str());
    std::vector<os::FindData> found;
    if (os::FindFiles(WithBackslash(folder) + "*.inf", found) != os::error::Success) {
        return;
    }
    for (const os::FindData& entry : found) {
        if ((entry.attributes & os::attr::Directory) != 0) {
            continue;
        }
        CStdStr path = WithBackslash(folder) + entry.fileName;
        ENGINE_LOG(1, "Parsing inf <%s>", path.c_str());
        InfFile inf(path, false);
        std::vector<InfDriver> drivers;
        inf.GetDriversList(drivers, false);
        for (const InfDriver& driver : drivers) {
            ENGINE_LOG(1, "Available device <%s>", driver.name.c_str());
            ENGINE_LOG(1, "Inf and ID pair added: %s", (path + "," + driver.hardwareId).c_str());
            list.emplace_back(path, driver.hardwareId);
        }
    }
}

void DriverSearch::ParseFolders(const CStdStringList& folders, const CStdStr& driverRoot,
                                const OSInfo& os) {
    CStdStr root = WithBackslash(driverRoot);
    for (const CStdStr& folder : folders) {
        std::vector<os::FindData> found;
        if (os::FindFiles(WithBackslash(folder) + "*.inf", found) != os::error::Success) {
            continue;
        }
        for (const os::FindData& entry : found) {
            if ((entry.attributes & os::attr::Directory) != 0) {
                continue;
            }
            CStdStr path = WithBackslash(folder) + entry.fileName;
            InfFile inf(path, false);
            inf.SetOS(os);
            CStdStr relative = !root.empty() && StartsWithNoCase(path, root)
                                       ? path.Mid(static_cast<int>(root.size()))
                                       : path;
            AddInf(inf, relative, os);
        }
    }
}
