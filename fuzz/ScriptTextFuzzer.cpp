// Feeds the engine's readers of script text: a whole CIF file with its defines, requirements and
// action lists; requirement statements alone; label expressions; the tokenizer and the HTML
// cleaner; and a whole install of a package whose component file and script are the text. The
// first byte chooses, the rest is the text.
#include "FuzzMachine.h"

#include "core/Engine.h"
#include "core/ProductIni.h"
#include "core/RunState.h"
#include "script/SystemPath.h"
#include "uninstall/UninstallLog.h"

#include "script/CifExtReq.h"
#include "script/CifFile.h"
#include "script/CifSection.h"
#include "script/IniSection.h"
#include "script/NlsFile.h"
#include "script/Tokenizer.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

void readCif(const std::string& text) {
    CifFile cif(fuzz::WriteMachineFile("component.cif", text).c_str());
    cif.InitDefines(nullptr, "Comp");
    for (int index = 0; index < cif.SectionCount(); ++index) {
        IniSection* section = cif.GetSection(index);
        for (const CStdStr& name : std::vector<CStdStr>(section->Names())) {
            CStdStr value;
            section->GetValue(name, value);
            if (auto* cifSection = dynamic_cast<CifSection*>(section)) {
                cifSection->GetOSValue(name, value);
            }
        }
    }
    for (const char* list : {"_Actions", "_PreInstall", "_Uninstall"}) {
        CStdStringList lines;
        cif.GetActions("Comp", list, lines, false);
    }
    if (CifExtReq* requirements = cif.GetExtReq("Comp", "_ExtReq");
        requirements != nullptr && requirements->IsValid()) {
        requirements->IsExtReqSatisfied();
    }
}

CStdStringList linesOf(const std::string& text) {
    return Tokenizer::Split(text.c_str(), '\n');
}

void evaluateRequirements(const std::string& text) {
    CifExtReq requirements(linesOf(text));
    if (requirements.IsValid()) {
        requirements.IsExtReqSatisfied();
        CStdStringList tokens;
        requirements.AddLabels(tokens);
    }
    for (const CStdStr& line : linesOf(text)) {
        CStdStringList items = CifExtReq::SplitStatement(line);
        if (items.size() >= 3) {
            CifExtReq::Compare(items[0], items[1], items[2]);
        }
    }
}

void evaluateLabels(const std::string& text) {
    CStdStringList labels;
    CStdStr rest;
    if (CifFile::CutLabels(text.c_str(), labels, rest) == CifFile::LabelCut::Cut) {
        CifFile::EvaluateLabels(labels, CifFile::BaseTokens());
    }
}

void splitAndClean(const std::string& text) {
    if (text.empty()) {
        return;
    }
    CStdStr rest = text.substr(1).c_str();
    Tokenizer::Split(rest, ',', text[0] & 7);
    NlsFile::CleanHtml(rest);
}

// The text is the component file of a package, then, behind a line "====", its install script.
void install(const std::string& text) {
    size_t split = text.find("\n====\n");
    std::string cif = text.substr(0, split);
    std::string script =
            split == std::string::npos ? "[Install]\nComp=1\n" : text.substr(split + 6);
    fuzz::WriteMachineFile("Config\\product.ini", "[GENERAL]\nProductKey=Fuzz\n");
    fuzz::WriteMachineFile("Config\\install.map", "[Components]\nComp=Comp.cif\n");
    fuzz::WriteMachineFile("Config\\Comp.cif", cif);
    std::string scriptPath = fuzz::WriteMachineFile("setup.isf", script);
    SystemPath::SetApplicationDirectoryOverride("C:\\Fuzz");
    {
        Engine engine(nullptr, scriptPath.c_str(), "", "");
        if (engine.Initialize(false)) {
            engine.Install();
        }
    }
    UninstallLog::Global().Clear();
    RunState::Reset();
    ProductIni::Unload();
    NlsFile::Reset();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    fuzz::EnsureMachine();
    std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 5) {
    case 0:
        readCif(text);
        break;
    case 1:
        evaluateRequirements(text);
        break;
    case 2:
        evaluateLabels(text);
        break;
    case 3:
        splitAndClean(text);
        break;
    default:
        install(text);
        break;
    }
    return 0;
}
