#include "system/Uncompress.h"

#include "os/Compression.h"
#include "os/Files.h"
#include "os/Processes.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"
#include "system/PathObject.h"

#include <vector>

namespace {

const char* const kComponent = "Uncompress";
constexpr std::uint32_t kMask = 0x1101;
const char* const kSetupApi = "setupapi.dll";

CStdStr Child(const CStdStr& folder, const CStdStr& name) {
    if (folder.empty()) {
        return name;
    }
    return folder.back() == '\\' ? folder + name : folder + "\\" + name;
}

} // namespace

bool Uncompress::LoadSetupApi() {
    if (os::CanLoadLibrary(kSetupApi)) {
        ENGINE_LOG(kMask, "Loaded SetupAPI Library.");
        return true;
    }
    ENGINE_LOG(0, "SetupAPI library was not loaded. Stop.");
    return false;
}

int Uncompress::GetCompressionType(const CStdStr& path) {
    LogScope scope(kComponent, "Uncompress::GetCompressionType", kMask);
    if (!LoadSetupApi()) {
        scope.SetResult(Unknown);
        return Unknown;
    }
    os::FileCompressionInfo info;
    if (os::HasProcedure(kSetupApi, "SetupGetFileCompressionInfoExA")) {
        os::Error rc = os::SetupGetFileCompressionInfoEx(path, info);
        if (rc != os::error::Success) {
            scope.Log(0,
                      "Function in SetupApi.dll SetupGetFileCompressionInfoEx failed with error "
                      "code %d",
                      static_cast<int>(rc));
            scope.SetResult(Unknown);
            return Unknown;
        }
    } else if (os::HasProcedure(kSetupApi, "SetupGetFileCompressionInfoA")) {
        os::Error rc = os::SetupGetFileCompressionInfo(path, info);
        if (rc != os::error::Success) {
            scope.Log(0,
                      "Function in SetupApi.dll SetupGetFileCompressionInfo failed with error "
                      "code %d",
                      static_cast<int>(rc));
            scope.SetResult(Unknown);
            return Unknown;
        }
    } else {
        scope.Log(0, "Function in SetupApi.dll SetupGetFileCompressionInfoEx or "
                     "SetupGetFileCompressionInfo failed to load. ");
        scope.SetResult(Unknown);
        return Unknown;
    }
    int type = static_cast<int>(info.compressionType);
    scope.SetResult(type);
    return type;
}

bool Uncompress::GetUncompressedName(const CStdStr& path, CStdStr& name) {
    LogScope scope(kComponent, "Uncompress::GetUncompressedName", kMask);
    std::uint32_t attributes = 0;
    if (os::GetFileAttributes(path, attributes) != os::error::Success ||
        (attributes & os::attr::Directory) != 0) {
        scope.Log(0, "Cannot open file %s to retrieve file information.", path.c_str());
        scope.SetResult(false);
        return false;
    }
    int type = GetCompressionType(path);
    bool ok = false;
    if (type == None || type == Lz || type == Unknown) {
        std::string expanded;
        os::Error rc = os::GetExpandedName(path, expanded);
        if (rc != os::error::Success) {
            scope.Log(0,
                      "::GetExpandedName failed-ErrCode:%d while retrieving uncompressed "
                      "filename from file.",
                      static_cast<int>(rc));
        } else {
            name = PathObject(expanded).GetName();
            ok = true;
        }
    } else if (type == MsZip || type == Lzx) {
        std::vector<os::CabinetFileInfo> files;
        if (os::SetupIterateCabinet(path, files) != os::error::Success || files.empty()) {
            scope.Log(0, "Cannot open file %s to retrieve file information.", path.c_str());
        } else {
            name = files.front().nameInCabinet;
            scope.Log(kMask, "DEBUG FILENAME IN ZIP %s", name.c_str());
            ok = true;
        }
    } else {
        scope.Log(0, "Unknown compressionType");
    }
    scope.SetResult(ok);
    return ok;
}

bool Uncompress::UncompressFile(const CStdStr& source, const CStdStr& dest, CStdStr& outName,
                                bool versionCheck) {
    LogScope scope(kComponent, "Uncompress::UncompressFile", kMask);
    scope.Log(kMask, "source: %s ", source.c_str());
    scope.Log(kMask, "dest  : %s ", dest.c_str());
    auto finish = [&scope](bool result) {
        scope.SetResult(result);
        return result;
    };
    bool setupApi = LoadSetupApi();
    bool decompressAtHand = setupApi && os::HasProcedure(kSetupApi, "SetupDecompressOrCopyFileA");

    // The name of the target: the source's name in a folder, and the expanded name where the
    // name is the compressed one.
    PathObject target(dest);
    if (target.IsDirectory() || FileOp::IsDirectory(dest)) {
        target = PathObject(Child(dest, PathObject(source).GetName()));
    }
    if (!target.GetName().empty() && target.GetName().back() == '_') {
        CStdStr expanded;
        if (GetUncompressedName(source, expanded) && !expanded.empty()) {
            target.SetName(expanded);
        }
    }
    CStdStr targetPath = target.GetFullPath();
    outName = targetPath;

    // With a version check an existing target is first compared with the expanded file.
    CStdStr temp;
    CStdStr work = targetPath;
    if (versionCheck && FileOp::IsFile(targetPath)) {
        temp = FileOp::GetTempFileName(targetPath);
        if (temp.empty()) {
            return finish(false);
        }
        work = temp;
    }

    bool ok = false;
    if (decompressAtHand) {
        os::Error rc = os::SetupDecompressOrCopyFile(source, work);
        ok = rc == os::error::Success;
        if (!ok) {
            scope.Log(0, "Failed to uncompress %s", source.c_str());
        }
    } else {
        int type = GetCompressionType(source);
        if (type == Lz || type == None || type == Unknown) {
            os::LzStep failed = os::LzStep::None;
            os::Error rc = os::LZCopy(source, work, failed);
            ok = rc == os::error::Success;
            if (failed == os::LzStep::OpenSource || failed == os::LzStep::OpenTarget) {
                scope.Log(0, "Failed to open %s",
                          failed == os::LzStep::OpenSource ? source.c_str() : work.c_str());
            } else if (failed == os::LzStep::Copy) {
                os::DeleteFile(work);
                scope.Log(0, "Could not copy %s", source.c_str());
            }
        } else {
            scope.Log(0, "Unknown compressionType");
        }
    }

    if (ok && !temp.empty()) {
        if (FileOp::IsNewerVersion(temp, targetPath) > 0) {
            ok = FileOp::Copy(temp, targetPath, FileOp::SharingMeansInUse);
        }
    }
    if (!temp.empty() && os::DeleteFile(temp) != os::error::Success && FileOp::IsFile(temp)) {
        scope.Log(0, "Could not delete temp %s", temp.c_str());
    }
    return finish(ok);
}
