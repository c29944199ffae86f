// Writes the program images of the example package into its payload folder: minimal Windows
// images that carry version resources, standing in for the product's libraries and programs,
// so that the package shows the version rules of a second install.
//
//   make_payload PAYLOAD_DIR
#include "tools/VersionedImage.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

struct Image {
    const char* path;
    const char* description;
    std::uint16_t version[4];
};

const Image kImages[] = {
        {"common/x86/qorcore.dll", "Tovar core library", {2, 1, 0, 0}},
        {"common/x64/qorcore.dll", "Tovar core library (x64)", {2, 1, 0, 0}},
        {"common/win9x/qorhelp.dll", "Tovar helper for Windows 98", {1, 0, 0, 0}},
        {"tools/bin/Toolbox.exe", "Tovar toolbox", {1, 5, 0, 0}},
        {"tools/bin/plugins/Scan.dll", "Tovar scan plug-in", {1, 5, 0, 0}},
        {"tools/monitor/StatusMonitor.exe", "Tovar status monitor", {1, 5, 2, 0}},
        {"uninstaller/Uninstall.exe", "Tovar uninstaller", {1, 0, 0, 0}},
};

std::string VersionText(const std::uint16_t (&version)[4]) {
    return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." +
           std::to_string(version[2]) + "." + std::to_string(version[3]);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_payload PAYLOAD_DIR\n");
        return 2;
    }
    namespace fs = std::filesystem;
    fs::path root = argv[1];
    for (const Image& image : kImages) {
        peimage::VersionSpec resource = peimage::WithFileVersion(VersionText(image.version));
        resource.tables[0].strings[0].second = "Tovar Demo";
        resource.tables[0].strings[1].second = image.description;
        for (int i = 0; i < 4; ++i) {
            resource.fileVersion[i] = image.version[i];
            resource.productVersion[i] = image.version[i];
        }
        fs::path target = root / image.path;
        fs::create_directories(target.parent_path());
        std::ofstream out(target, std::ios::binary | std::ios::trunc);
        std::string bytes = peimage::PeImage(resource);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out) {
            std::fprintf(stderr, "make_payload: cannot write %s\n", target.c_str());
            return 1;
        }
    }
    return 0;
}
