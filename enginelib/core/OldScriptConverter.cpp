#include "core/OldScriptConverter.h"

#include "script/IniFile.h"

namespace {

struct Pair {
    const char* from;
    const char* to;
};

const Pair kInstallKeys[] = {
        {"Install_Driver", "Drivers"},  {"Install_Tools", "Tools"}, {"Install_BIDI", "BIDI"},
        {"Install_Network", "Network"}, {"Install_Port", "Ports"},
};

const Pair kLanguages[] = {
        {"Chi_Simp", "zh"}, {"Chi_Trad", "zh_TW"}, {"English", "en"},  {"German", "de"},
        {"Greek", "el"},    {"French", "fr"},      {"Italian", "it"},  {"Japanese", "ja"},
        {"Korean", "ko"},   {"Polish", "pl"},      {"PortBrzl", "pt"}, {"Russian", "ru"},
        {"Spanish", "es"},
};

const char* PortKind(const CStdStr& protocol) {
    if (protocol.EqualsNoCase("IP")) {
        return "StandardIp";
    }
    if (protocol.EqualsNoCase("TCPIP") || protocol.EqualsNoCase("IPNET")) {
        return "QorIp";
    }
    if (protocol.EqualsNoCase("UNC")) {
        return "LocalPort";
    }
    return nullptr;
}

} // namespace

void OldScriptConverter::Convert(IniFile& script) {
    renameInstallKeys(script);
    convertLanguage(script);
    convertDriverCounts(script);
    convertPorts(script);
    // The keys of the maker's own earlier tool components would move here; this product has no
    // scripts of those releases, so that list is empty.
}

void OldScriptConverter::renameInstallKeys(IniFile& script) {
    IniSection* install = script.FindSection("Install");
    if (install == nullptr) {
        return;
    }
    for (const Pair& pair : kInstallKeys) {
        install->ReplaceText(pair.from, pair.to, true);
    }
}

void OldScriptConverter::convertLanguage(IniFile& script) {
    CStdStr language = script.GetValue("Install", "Language");
    if (language.empty()) {
        return;
    }
    for (const Pair& pair : kLanguages) {
        if (language.EqualsNoCase(pair.from)) {
            script.SetValue("Install", "Language", pair.to);
            return;
        }
    }
}

void OldScriptConverter::convertDriverCounts(IniFile& script) {
    IniSection* drivers = script.FindSection("Drivers");
    if (drivers == nullptr) {
        return;
    }
    // Each change turns one text into "1" in the whole section; the walk then begins again.
    bool changed = true;
    while (changed) {
        changed = false;
        CStdStr name;
        CStdStr value;
        drivers->Reset();
        while (drivers->GetCurrentValue(name, value)) {
            if (value != "0" && value != "1") {
                drivers->ReplaceText(value, "1", false);
                changed = true;
                break;
            }
            drivers->Next();
        }
    }
}

void OldScriptConverter::convertPorts(IniFile& script) {
    IniSection* ports = script.FindSection("Ports");
    if (ports == nullptr) {
        return;
    }
    bool changed = true;
    while (changed) {
        changed = false;
        CStdStr name;
        CStdStr value;
        ports->Reset();
        while (ports->GetCurrentValue(name, value)) {
            // The value names the section of the port.
            IniSection* port = script.FindSection(value);
            CStdStr protocol;
            const char* kind = nullptr;
            if (port != nullptr && port->GetValue("Protocol", protocol)) {
                kind = PortKind(protocol);
            }
            if (kind != nullptr) {
                ports->ReplaceText(value, kind, false);
                port->RemoveValue("Protocol");
                port->ReplaceText("Name", "PortName", true);
                changed = true;
                break;
            }
            ports->Next();
        }
    }
}
