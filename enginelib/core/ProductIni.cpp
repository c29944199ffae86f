#include "core/ProductIni.h"

#include "script/IniFile.h"
#include "script/OSInfo.h"
#include "script/Tokenizer.h"

#include <memory>
#include <mutex>

namespace {

std::mutex gLock;
std::unique_ptr<IniFile> gImage;

const char* const kGeneral = "GENERAL";

} // namespace

bool ProductIni::LoadProductIni(const CStdStr& path) {
    std::lock_guard<std::mutex> guard(gLock);
    if (gImage) {
        return true;
    }
    auto image = std::make_unique<IniFile>(false);
    if (!image->Read(path, false) || image->SectionCount() == 0) {
        return false;
    }
    image->SetFileName(path);
    gImage = std::move(image);
    return true;
}

bool ProductIni::IsLoaded() {
    std::lock_guard<std::mutex> guard(gLock);
    return gImage != nullptr;
}

void ProductIni::Unload() {
    std::lock_guard<std::mutex> guard(gLock);
    gImage.reset();
}

const IniFile* ProductIni::Image() {
    std::lock_guard<std::mutex> guard(gLock);
    return gImage.get();
}

bool ProductIni::GetProductValue(const CStdStr& section, const CStdStr& key, CStdStr& value) {
    std::lock_guard<std::mutex> guard(gLock);
    if (!gImage) {
        return false;
    }
    IniSection* found = gImage->FindSection(section);
    return found != nullptr && found->GetValue(key, value);
}

CStdStr ProductIni::GetValue(const CStdStr& section, const CStdStr& key) {
    CStdStr value;
    GetProductValue(section, key, value);
    return value;
}

bool ProductIni::GetDriverDir(CStdStr& value, const OSInfo& os) {
    const char* key = "DriverDir2K";
    if (os.Is9x()) {
        key = "DriverDir9X";
    } else if (os.GetOSCode() == OSInfo::Generic64 || os.Is64Bit()) {
        key = "DriverDirX64";
    } else if (os.GetOSCode() == OSInfo::NT4) {
        key = "DriverDirNT";
    } else if (os.GetOSCode() == OSInfo::WinXP && GetProductValue(kGeneral, "DriverDirXP", value)) {
        return true;
    }
    return GetProductValue(kGeneral, key, value);
}

bool ProductIni::GetDriverDir(CStdStr& value) {
    return GetDriverDir(value, OSInfo());
}

bool ProductIni::IsPlatformSupported() {
    CStdStr platform;
    if (!GetProductValue(kGeneral, "Platform", platform)) {
        return true;
    }
    CStdStringList supported = Tokenizer::Split(platform, ',', Tokenizer::Trim);
    supported.Add("FUTURE_OS");
    CStdStringList running = OSInfo().Tokens();
    for (const CStdStr& token : supported) {
        if (running.ContainsNoCase(token)) {
            return true;
        }
    }
    return false;
}
