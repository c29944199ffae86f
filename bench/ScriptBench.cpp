// The readers of a package's script files and the define resolution of a component file,
// against reading (and, for the defines, writing) the same bytes.
#include "BaselineRatio.h"
#include "BenchMachine.h"

#include "core/RunState.h"
#include "script/CifDefine.h"
#include "script/CifFile.h"
#include "script/IniFile.h"

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <vector>

namespace {

std::string WriteOrThrow(const std::string& name, const std::string& text) {
    std::string path = BenchMachine::Path(name);
    if (!BenchMachine::WriteFile(path, text)) {
        throw std::runtime_error("cannot write " + path);
    }
    return path;
}

// `sections` sections of 20 keys, as a large product.ini or INF-sized script would have.
std::string IniText(int sections) {
    std::string text = "; generated\r\n";
    for (int section = 0; section < sections; ++section) {
        text += CStdStr::Formatted("[Section%05d]\r\n", section);
        for (int key = 0; key < 20; ++key) {
            text += CStdStr::Formatted("Key%02d=value %d of section %d, with some text\r\n", key,
                                       key, section);
        }
        text += "\r\n";
    }
    return text;
}

// A define that refers to two earlier ones, so that resolution goes several levels deep
// without any chain longer than the logarithm of the count.
CStdStr DefineValue(int index) {
    if (index < 2) {
        return CStdStr::Formatted("C:\\Root%d", index);
    }
    return CStdStr::Formatted("$D%05d$\\part%d;$D%05d$", index / 2, index, index / 3);
}

// A component file: defines, and `components` components with a list of 40 actions each, some
// under OS labels.
std::string CifText(int components) {
    std::string text = "[Defines]\r\n";
    for (int index = 0; index < 200; ++index) {
        text += CStdStr::Formatted("D%05d=%s\r\n", index, DefineValue(index).c_str());
    }
    for (int component = 0; component < components; ++component) {
        text += CStdStr::Formatted("\r\n[Comp%04d]\r\nVersion=1.0.%d\r\nDir=$D%05d$\r\n", component,
                                   component, component % 200);
        text += CStdStr::Formatted("\r\n[Comp%04d_Actions]\r\n", component);
        for (int line = 0; line < 40; ++line) {
            const char* label = line % 4 == 0 ? "[XP]" : line % 4 == 1 ? "[WIN7]" : "";
            text += CStdStr::Formatted("%sFile,COPY,$D%05d$\\file%d.dll,$D%05d$\\\r\n", label,
                                       (line * 7 + component) % 200, line, line % 200);
        }
    }
    return text;
}

void IniRead(benchmark::State& state) {
    std::string path = WriteOrThrow("bench.ini", IniText(static_cast<int>(state.range(0))));
    RunAgainstBaseline(
            state, [&] { benchmark::DoNotOptimize(BenchMachine::ReadFile(path)); },
            [&] {
                IniFile ini;
                benchmark::DoNotOptimize(ini.Read(path));
            });
}

void CifReadAndActions(benchmark::State& state) {
    int components = static_cast<int>(state.range(0));
    std::string path = WriteOrThrow("bench.cif", CifText(components));
    RunAgainstBaseline(
            state, [&] { benchmark::DoNotOptimize(BenchMachine::ReadFile(path)); },
            [&] {
                CifFile cif(path);
                cif.InitDefines(nullptr, "Comp0000");
                CStdStringList lines;
                for (int component = 0; component < components; ++component) {
                    cif.GetActions(CStdStr::Formatted("Comp%04d", component), "_Actions", lines,
                                   false);
                }
                benchmark::DoNotOptimize(lines);
            });
    RunState::Reset();
}

void DefineResolution(benchmark::State& state) {
    int count = static_cast<int>(state.range(0));
    CifDefine::DefineMap raw;
    std::string text = "[Defines]\r\n";
    for (int index = 0; index < count; ++index) {
        CStdStr name = CStdStr::Formatted("D%05d", index);
        raw[name] = DefineValue(index);
        text += name + "=" + raw[name] + "\r\n";
    }
    // Strings as action lines use them: three references each.
    std::vector<CStdStr> strings;
    for (int index = 0; index < count; ++index) {
        strings.push_back(CStdStr::Formatted("File,COPY,$D%05d$\\f%d,$D%05d$\\$D%05d$", index,
                                             index, (index * 7) % count, (index * 13) % count));
        text += strings.back() + "\r\n";
    }
    std::string path = WriteOrThrow("defines.txt", text);
    IniFile script;
    RunAgainstBaseline(
            state,
            [&] {
                std::string bytes = BenchMachine::ReadFile(path);
                benchmark::DoNotOptimize(BenchMachine::ReplaceFile(path, bytes));
            },
            [&] {
                CifDefine defines(raw, script, false);
                defines.createDefineMap();
                for (const CStdStr& original : strings) {
                    CStdStr value = original;
                    defines.resolveStrDefine(value, CStdStr());
                    benchmark::DoNotOptimize(value);
                }
            });
}

} // namespace

BENCHMARK(IniRead)->Arg(2000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CifReadAndActions)->Arg(200)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(DefineResolution)->Arg(2000)->UseManualTime()->Unit(benchmark::kMillisecond);
