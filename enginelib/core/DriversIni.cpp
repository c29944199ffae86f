#include "core/DriversIni.h"

#include "core/ProductIni.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"

#include <algorithm>

namespace {

struct TableState {
    IniFile table{false};
    bool initialized = false;
    bool result = false;
};

TableState& State() {
    static TableState state;
    return state;
}

bool Lookup(const CStdStr& model, const CStdStr& key, CStdStr& value) {
    IniSection* section = DriversIni::Table().FindSection(model);
    return section != nullptr && section->GetValue(key, value) && !value.empty();
}

// A path of the table as the run uses it: the run's language in place of %LANG%.
CStdStr WithLanguage(CStdStr path) {
    path.Replace("%LANG%", NlsFile::GetLanguage().c_str());
    return path;
}

} // namespace

bool DriversIni::Initialize(const CStdStr& path, bool readFile) {
    TableState& state = State();
    if (state.initialized) {
        return state.result;
    }
    state.initialized = true;
    state.result = !readFile || state.table.Read(path, false);
    if (!state.result) {
        ENGINE_LOG(0, "could not read file %s", path.c_str());
    }
    return state.result;
}

void DriversIni::Reset() {
    State().table.Clear();
    State().initialized = false;
    State().result = false;
}

IniFile& DriversIni::Table() {
    return State().table;
}

CStdStr DriversIni::OsSuffix(const OSInfo& os) {
    if (os.Is9x()) {
        return "95";
    }
    if (os.GetOSCode() == OSInfo::NT4) {
        return "NT";
    }
    if (os.Is64Bit()) {
        return os.IsAtLeastVista() ? "V64" : "X64";
    }
    return os.IsAtLeastVista() ? "V32" : "2K";
}

CStdStr DriversIni::GetModelValue(const CStdStr& model, const CStdStr& key, const OSInfo& os) {
    CStdStr suffix = OsSuffix(os);
    CStdStr family = ProductIni::PrinterFamily();
    CStdStringList keys;
    if (!family.empty()) {
        keys.push_back(key + "." + family + "." + suffix);
    }
    keys.push_back(key + "." + suffix);
    if (!family.empty()) {
        keys.push_back(key + "." + family);
    }
    keys.push_back(key);
    for (const CStdStr& candidate : keys) {
        CStdStr value;
        if (Lookup(model, candidate, value)) {
            return value;
        }
    }
    return CStdStr();
}

bool DriversIni::IsOffered(const CStdStr& model, const OSInfo& os) {
    return GetModelValue(model, "NOT.Supported", os) != "1";
}

void DriversIni::GetModels(CStdStringList& list, const OSInfo& os) {
    IniFile& table = Table();
    CStdStringList manufacturers;
    if (IniSection* section = table.FindSection("Manufacturer")) {
        manufacturers.assign(section->Names().begin(), section->Names().end());
    } else {
        manufacturers.push_back("Printer");
    }
    CStdStringList models;
    for (const CStdStr& manufacturer : manufacturers) {
        IniSection* section = table.FindSection(manufacturer);
        if (section == nullptr) {
            continue;
        }
        for (const CStdStr& model : section->Names()) {
            if (IsOffered(model, os) && !models.ContainsNoCase(model)) {
                models.push_back(model);
            }
        }
    }
    std::sort(models.begin(), models.end(), NoCaseLess());
    for (const CStdStr& model : models) {
        list.push_back(model);
    }
}

bool DriversIni::GetStreams(const CStdStr& model, CStdStringList& list, const OSInfo& os) {
    CStdStr streams;
    if (!Lookup(model, "Streams", streams) || !IsOffered(model, os)) {
        return false;
    }
    for (const CStdStr& stream : Tokenizer::Split(streams, ',', Tokenizer::Trim)) {
        if (!stream.empty()) {
            list.push_back(stream);
        }
    }
    return true;
}

bool DriversIni::GetInfName(const CStdStr& model, const CStdStr& stream, CStdStr& name,
                            const OSInfo& os) {
    CStdStr suffix = "." + OsSuffix(os);
    CStdStringList streams;
    if (stream.empty()) {
        // A table that the search filled names the INF by stream only.
        streams.push_back(CStdStr());
        GetStreams(model, streams, os);
    } else {
        streams.push_back(stream);
    }
    for (const CStdStr& each : streams) {
        CStdStringList keys = {each + "INFPath" + suffix, each + "Inf" + suffix};
        if (!each.empty()) {
            keys.push_back("INFPath" + suffix);
        }
        for (const CStdStr& key : keys) {
            CStdStr value;
            if (Lookup(model, key, value)) {
                name = WithLanguage(value);
                return true;
            }
        }
    }
    return false;
}

bool DriversIni::GetDriverName(const CStdStr& model, const CStdStr& stream, CStdStr& name,
                               const OSInfo& os) {
    CStdStr suffix = "." + OsSuffix(os);
    CStdStringList keys = {stream + "Name" + suffix, stream + "Name"};
    if (stream.EqualsNoCase("PCL")) {
        keys.insert(keys.end(), {"PCL5Name", "PCL6Name"});
    }
    keys.insert(keys.end(), {CStdStr("Name") + suffix, CStdStr("Name")});
    for (const CStdStr& key : keys) {
        if (Lookup(model, key, name)) {
            return true;
        }
    }
    return false;
}
