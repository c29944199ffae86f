// Feeds the readers of a package's archives: the first byte chooses a ZIP archive (listed and
// extracted) or a cabinet (walked and expanded through the seam), the rest is the file. An
// extracted file outside the target folder is a finding.
#include "FuzzMachine.h"

#include "os/Compression.h"
#include "system/Zip.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

const char* const kTarget = "C:\\Fuzz\\out\\";

void readZip(const std::string& bytes) {
    Zip zip(fuzz::WriteMachineFile("archive.zip", bytes));
    zip.doOp(Zip::ListAndExtract, "C:\\Fuzz\\out");
    for (const CStdStr& file : zip.GetExtracted()) {
        if (file.compare(0, std::string(kTarget).size(), kTarget) != 0 ||
            file.find("\\..\\") != std::string::npos) {
            __builtin_trap();
        }
    }
    CStdStr name;
    Zip::FirstMemberName(fuzz::WriteMachineFile("archive.zip", bytes), name);
}

void readCabinet(const std::string& bytes) {
    std::string cabinet = fuzz::WriteMachineFile("archive.cab", bytes);
    std::vector<os::CabinetFileInfo> files;
    os::SetupIterateCabinet(cabinet, files);
    os::SetupDecompressOrCopyFile(cabinet, "C:\\Fuzz\\out\\first");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    fuzz::EnsureMachine();
    std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] % 2 == 0) {
        readZip(bytes);
    } else {
        readCabinet(bytes);
    }
    return 0;
}
