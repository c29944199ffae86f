// The simulated machine a benchmark program works on: made fresh under the temporary folder,
// made the process's machine, and removed with the object. Also the plain file work that the
// benchmarks take as their baseline, through the same seam as the engine's own.
#pragma once

#include <string>

class BenchMachine {
public:
    BenchMachine();
    ~BenchMachine();
    BenchMachine(const BenchMachine&) = delete;
    BenchMachine& operator=(const BenchMachine&) = delete;

    // A Windows path of the machine's scratch folder.
    static std::string Path(const std::string& name);

    static bool WriteFile(const std::string& path, const std::string& bytes);
    static std::string ReadFile(const std::string& path);
    // What a commit does at the least: writes the bytes beside `path` and renames them over it.
    static bool ReplaceFile(const std::string& path, const std::string& bytes);

private:
    std::string mBase;
};
