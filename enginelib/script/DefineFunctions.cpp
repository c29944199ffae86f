#include "script/DefineFunctions.h"

#include "os/Files.h"
#include "os/Process.h"
#include "os/Processes.h"
#include "script/CifDefine.h"
#include "script/CifExtReq.h"
#include "script/IniFile.h"
#include "script/NlsFile.h"
#include "script/OSInfo.h"
#include "script/SystemPath.h"
#include "script/Tokenizer.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "system/Registry.h"
#include "uninstall/UninstallLog.h"

#include <cstdlib>

namespace {

const char* const kComponent = "CifDefine";
constexpr std::uint32_t kMask = logmask::ScriptFunction;
const char* const kPrefix = "CifDefine::getDefine: ";
constexpr size_t kEnvironmentBuffer = 32767;
constexpr size_t kPathBuffer = 260;

CStdStr Item(const CStdStringList& items, size_t index) {
    return index < items.size() ? items[index] : CStdStr();
}

const char* Bool(bool value) {
    return value ? "TRUE" : "FALSE";
}

bool IsMode(const CStdStr& failMode, const char* mode) {
    return failMode.EqualsNoCase(mode);
}

char DelimiterOf(const CStdStr& item) {
    return item.empty() ? ',' : item.front();
}

// The first file that matches `*hcp.dll` in one of the folders; empty when none does.
CStdStr FindHelperLibrary(const CStdStringList& folders) {
    for (const CStdStr& folder : folders) {
        std::vector<os::FindData> found;
        if (os::FindFiles(folder + "\\*hcp.dll", found) != os::error::Success) {
            continue;
        }
        for (const os::FindData& entry : found) {
            if ((entry.attributes & os::attr::Directory) == 0) {
                return folder + "\\" + entry.fileName;
            }
        }
    }
    return CStdStr();
}

} // namespace

bool DefineFunctions::Evaluate(const CStdStringList& items, CStdStr& value) {
    using Function = bool (DefineFunctions::*)(const CStdStringList&, CStdStr&);
    static const std::pair<const char*, Function> table[] = {
            {"ReadReg", &DefineFunctions::readReg},
            {"ReadIni", &DefineFunctions::readIni},
            {"ReadIsf", &DefineFunctions::readIsf},
            {"ReadUlf", &DefineFunctions::readUlf},
            {"ReadFileVer", &DefineFunctions::readFileVer},
            {"ReadEnv", &DefineFunctions::readEnv},
            {"ExistFile", &DefineFunctions::existFile},
            {"GetPrinterInfo", &DefineFunctions::getPrinterInfo},
            {"ExistReg", &DefineFunctions::existReg},
            {"SetVarInLine", &DefineFunctions::setVarInLine},
            {"SetLabel", &DefineFunctions::setLabel},
            {"GetToken", &DefineFunctions::getToken},
            {"ShortName", &DefineFunctions::shortName},
            {"VerifyHostName", &DefineFunctions::verifyHostName},
            {"GetLanguageDir", &DefineFunctions::getLanguageDir},
            {"FindToken", &DefineFunctions::findToken},
    };
    LogScope scope(kComponent, "DefineFunctions::Evaluate", kMask);
    CStdStr name = Item(items, 0);
    scope.Log(kMask, "function:%s section:%s", name.c_str(), mSection.c_str());
    for (const auto& [function, member] : table) {
        if (name.EqualsNoCase(function)) {
            bool done = (this->*member)(items, value);
            scope.SetResult(done ? value : CStdStr("false"));
            return done;
        }
    }
    scope.Log(kMask, "%sunknown define function <%s>", kPrefix, name.c_str());
    value.clear();
    scope.SetResult(value);
    return true;
}

DefineFunctions::Resolved DefineFunctions::resolve(std::initializer_list<CStdStr*> arguments) {
    bool isMutable = false;
    for (CStdStr* argument : arguments) {
        if (!mDefines.resolveStrDefine(*argument, mSection)) {
            return Resolved::Failed;
        }
        isMutable = isMutable || *argument == CifDefine::kMutable;
    }
    return isMutable ? Resolved::Mutable : Resolved::Ok;
}

bool DefineFunctions::failed(const CStdStr& failMode, const CStdStr* defaultItem,
                             const CStdStr& message, CStdStr& value) {
    if (IsMode(failMode, "StopOnFail")) {
        ENGINE_LOG(0, "%s", message.c_str());
        return false;
    }
    if (IsMode(failMode, "SetOnFail")) {
        if (defaultItem == nullptr) {
            ENGINE_LOG(0, "%s", message.c_str());
            return false;
        }
        value = *defaultItem;
        return true;
    }
    ENGINE_LOG(kMask, "%s", message.c_str());
    value.clear();
    return true;
}

bool DefineFunctions::wrongCount(const char* function) {
    CStdStr message =
            CStdStr::Formatted("Wrong number of parms for <%s> define function.", function);
    ENGINE_LOG(0, "%s%s", kPrefix, message.c_str());
    return false;
}

bool DefineFunctions::unresolved(Resolved outcome, CStdStr& value) {
    if (outcome == Resolved::Mutable) {
        value = CifDefine::kMutable;
        return true;
    }
    return false;
}

bool DefineFunctions::readReg(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 5 && items.size() != 6) {
        return wrongCount("ReadReg");
    }
    CStdStr root = items[1];
    CStdStr key = items[2];
    CStdStr valueName = items[3];
    CStdStr defaultItem = Item(items, 5);
    bool hasDefault = items.size() == 6;
    // A missing default is empty, and stays so.
    if (Resolved outcome = resolve({&root, &key, &valueName, &defaultItem});
        outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    Registry registry;
    RegistryValue data;
    if (registry.ReadValue(root, key, valueName, data)) {
        value = Registry::ValueText(data);
        return true;
    }
    CStdStr message =
            CStdStr::Formatted("%s%s(%s,%s,%s)", kPrefix, "<ReadReg> define function failed for",
                               root.c_str(), key.c_str(), valueName.c_str());
    return failed(items[4], hasDefault ? &defaultItem : nullptr, message, value);
}

bool DefineFunctions::readIni(const CStdStringList& items, CStdStr& value) {
    if (items.size() < 4 || items.size() > 6) {
        return wrongCount("ReadIni");
    }
    CStdStr file = items[1];
    CStdStr section = items[2];
    CStdStr key = items[3];
    CStdStr defaultItem = Item(items, 5);
    bool hasDefault = items.size() == 6;
    if (Resolved outcome = resolve({&file, &section, &key, &defaultItem});
        outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    IniFile ini(file, false);
    CStdStr result = ini.GetValue(section, key);
    if (result.empty()) {
        if (!hasDefault) {
            CStdStr message = CStdStr::Formatted("%s%s(%s,%s,%s)", kPrefix,
                                                 "<ReadIni> define function failed for ",
                                                 file.c_str(), section.c_str(), key.c_str());
            return failed(Item(items, 4), nullptr, message, value);
        }
        // A call that carries its default answers with it whatever its mode.
        result = defaultItem;
    }
    if (hasDefault && result.Left(8) == "ReadIni,") {
        result = defaultItem;
    }
    value = result;
    return true;
}

bool DefineFunctions::readIsf(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 3 && items.size() != 4) {
        return wrongCount("ReadIsf");
    }
    CStdStr sections = items[1];
    CStdStr key = items[2];
    if (Resolved outcome = resolve({&sections, &key}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    bool stopOnFail = IsMode(Item(items, 3), "StopOnFail");
    IniFile& script = mDefines.GetIsf();
    CStdStringList results;
    for (const CStdStr& sectionName : Tokenizer::Split(sections, '|', Tokenizer::Trim)) {
        IniSection* section = script.FindSection(sectionName);
        CStdStr found;
        bool present = false;
        if (section == nullptr) {
            // A section that the script lacks may stand for the section being read.
            IniSection* own = script.FindSection(mSection);
            present = own != nullptr && own->GetValue(key, found);
        } else if (key.EqualsNoCase("AllKeys") || key.EqualsNoCase("AllKeyNames")) {
            bool names = key.EqualsNoCase("AllKeyNames");
            CStdStringList collected;
            for (const CStdStr& name : section->Names()) {
                CStdStr entry;
                if (!section->GetValue(name, entry)) {
                    continue;
                }
                if (!names) {
                    collected.Add(entry);
                    continue;
                }
                entry.Trim();
                if (!entry.empty() && entry != "0") {
                    collected.Add(name);
                }
            }
            present = !collected.empty();
            found = collected.Join("|");
        } else {
            present = section->GetValue(key, found);
        }
        if (present) {
            results.Add(found);
            continue;
        }
        results.clear();
        if (stopOnFail) {
            ENGINE_LOG(0, "%s%s(%s,%s)", kPrefix, "<ReadIsf> define function failed for ",
                       sectionName.c_str(), key.c_str());
            return false;
        }
    }
    value = results.Join("|");
    return true;
}

bool DefineFunctions::readUlf(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 3) {
        return wrongCount("ReadUlf");
    }
    CStdStr component = items[1];
    CStdStr key = items[2];
    if (Resolved outcome = resolve({&component, &key}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    value = UninstallLog::Installed().GetSpecial(component, key);
    return true;
}

bool DefineFunctions::readFileVer(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 2) {
        return wrongCount("ReadFileVer");
    }
    CStdStr path = items[1];
    if (Resolved outcome = resolve({&path}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    value = FileOp::GetFileVersion(path);
    return true;
}

bool DefineFunctions::readEnv(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 2) {
        return wrongCount("ReadFileEnv");
    }
    // The argument holds %NAME% of the environment: it is not a language reference.
    const CStdStr& text = items[1];
    std::string expanded;
    if (os::ExpandEnvironmentStrings(text, expanded) == os::error::Success &&
        expanded.size() < kEnvironmentBuffer) {
        value = expanded;
    } else {
        value = text;
    }
    return true;
}

bool DefineFunctions::existFile(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 2) {
        return wrongCount("ExistFile");
    }
    CStdStr path = items[1];
    if (Resolved outcome = resolve({&path}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    value = Bool(PathObject(path).Exists());
    return true;
}

bool DefineFunctions::getPrinterInfo(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 4 && items.size() != 5) {
        return wrongCount("GetPrinterInfo");
    }
    CStdStr printer = items[1];
    CStdStr infoType = items[2];
    if (Resolved outcome = resolve({&printer, &infoType}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    if (items.size() == 5) {
        CStdStr extra = items[4];
        if (Resolved outcome = resolve({&extra}); outcome != Resolved::Ok) {
            return unresolved(outcome, value);
        }
    }
    // The INF file of a model comes from the model data of the package, which are not read
    // yet: no printer has an INF file to name, so every question takes the failure path.
    value.clear();
    if (IsMode(items[3], "StopOnFail")) {
        ENGINE_LOG(0, "%s%s(%s,%s)", kPrefix, "<GetPrinterInfo> define function failed for",
                   printer.c_str(), infoType.c_str());
        return false;
    }
    return true;
}

bool DefineFunctions::existReg(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 3 && items.size() != 4) {
        return wrongCount("ExistReg");
    }
    CStdStr root = items[1];
    CStdStr key = items[2];
    CStdStr valueName = Item(items, 3);
    if (Resolved outcome = resolve({&root, &key, &valueName}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    Registry registry;
    bool exists = valueName.empty() ? registry.DoesKeyExist(root, key)
                                    : registry.DoesValueExist(root, key, valueName);
    value = Bool(exists);
    return true;
}

bool DefineFunctions::setVarInLine(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 4) {
        return wrongCount("SetVarInLine");
    }
    CStdStr condition = items[1];
    if (Resolved outcome = resolve({&condition}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    CStdStr chosen = condition.EqualsNoCase("TRUE") ? items[2] : items[3];
    if (chosen.FindOneOf("$%") >= 0) {
        if (Resolved outcome = resolve({&chosen}); outcome != Resolved::Ok) {
            return unresolved(outcome, value);
        }
    }
    value = chosen;
    return true;
}

bool DefineFunctions::setLabel(const CStdStringList& items, CStdStr& value) {
    if (items.size() > 4) {
        return wrongCount("SetLabel");
    }
    CStdStr left = Item(items, 1);
    CStdStr op = Item(items, 2);
    CStdStr right = Item(items, 3);
    if (Resolved outcome = resolve({&left, &right}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    value = Bool(CifExtReq::Compare(left, op, right) == 1);
    return true;
}

bool DefineFunctions::getToken(const CStdStringList& items, CStdStr& value) {
    CStdStr list = Item(items, 1);
    if (Resolved outcome = resolve({&list}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    long index = std::strtol(Item(items, 2).c_str(), nullptr, 10);
    CStdStringList tokens = Tokenizer::Split(list, DelimiterOf(Item(items, 3)), Tokenizer::Trim);
    value = index >= 0 && static_cast<size_t>(index) < tokens.size()
                    ? tokens[static_cast<size_t>(index)]
                    : CStdStr();
    return true;
}

bool DefineFunctions::findToken(const CStdStringList& items, CStdStr& value) {
    CStdStr list = Item(items, 1);
    CStdStr text = Item(items, 2);
    if (Resolved outcome = resolve({&list, &text}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    value.clear();
    CStdStr wanted = text;
    wanted.MakeUpper();
    for (const CStdStr& token :
         Tokenizer::Split(list, DelimiterOf(Item(items, 3)), Tokenizer::Trim)) {
        CStdStr folded = token;
        if (folded.MakeUpper().Find(wanted.c_str()) >= 0) {
            value = token;
            break;
        }
    }
    return true;
}

bool DefineFunctions::shortName(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 2) {
        return wrongCount("ShortName");
    }
    CStdStr path = items[1];
    if (Resolved outcome = resolve({&path}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    std::string shortPath;
    os::Error rc = os::GetShortPathName(path, shortPath);
    if (rc == os::error::Success && shortPath.size() >= kPathBuffer) {
        rc = os::error::InsufficientBuffer;
    }
    if (rc != os::error::Success) {
        ENGINE_LOG(0, "%s%s%d", kPrefix, "GetShortPathName failed with code ",
                   static_cast<int>(rc));
        value = path;
        return true;
    }
    value = shortPath;
    return true;
}

bool DefineFunctions::verifyHostName(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 3) {
        return wrongCount("VerifyHostName");
    }
    CStdStr host = items[1];
    CStdStr expected = items[2];
    if (Resolved outcome = resolve({&host, &expected}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    value = host;
    if (expected.empty()) {
        return true;
    }
    // The package carries the helper beside the program: in its Common folder, in the folder
    // of the system's bitness, or in the program's folder itself.
    CStdStr application = SystemPath(SystemPath::ApplicationFolder).GetFullPath();
    CStdStringList folders;
    folders.Add(application + "\\Common");
    folders.Add(application + (OSInfo().Is64Bit() ? "\\x64" : "\\x86"));
    folders.Add(application);
    CStdStr library = FindHelperLibrary(folders);
    if (library.empty()) {
        ENGINE_LOG(0, "Can't locate *hcp.dll in : %s", folders.Join("; ").c_str());
        return true;
    }
    ENGINE_LOG(logmask::CifGf, "Calling ResolveHostName using : %s", library.c_str());
    std::uint32_t answer = 0;
    std::string resolved;
    if (os::CallResolveHostName(library, host, answer, resolved) != os::error::Success) {
        // A library that does not load, or lacks the function, leaves the host as it is.
        return true;
    }
    if (answer != 0) {
        ENGINE_LOG(0, "ResolveHostName failed with error code : %d", static_cast<int>(answer));
    } else if (!resolved.empty() && host.EqualsNoCase(resolved)) {
        value = expected;
    }
    return true;
}

bool DefineFunctions::getLanguageDir(const CStdStringList& items, CStdStr& value) {
    if (items.size() != 2) {
        return wrongCount("GetLanguageDir");
    }
    CStdStr path = items[1];
    if (Resolved outcome = resolve({&path}); outcome != Resolved::Ok) {
        return unresolved(outcome, value);
    }
    CStdStringList folders;
    std::vector<os::FindData> entries;
    if (os::FindFiles(path + "\\*", entries) == os::error::Success) {
        for (const os::FindData& entry : entries) {
            if ((entry.attributes & os::attr::Directory) != 0 && entry.fileName != "." &&
                entry.fileName != "..") {
                folders.Add(entry.fileName);
            }
        }
    }
    // The best language among the folders, or the current language when none suits.
    value = NlsFile::GetLanguageForDirectory(folders, CStdStr());
    if (value.empty()) {
        value = NlsFile::GetLanguage();
    }
    return true;
}
