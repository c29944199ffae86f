#include "system/Zip.h"

#include "os/Files.h"
#include "os/Time.h"
#include "system/DebugLogger.h"
#include "system/FileOp.h"
#include "system/LogScope.h"

#include <cstdio>
#include <unzip.h>
#include <vector>

namespace {

const char* const kComponent = "Zip";
constexpr std::uint32_t kMask = logmask::FileAction;
constexpr size_t kBufferSize = 64 * 1024;
// Names longer than MAX_PATH are cut, as the archive walk has always read them.
constexpr size_t kMaxName = 260;

// minizip's file functions over the platform's C runtime streams, so that an archive is read
// through the same file layer as every other file of the package.
voidpf OpenFile(voidpf /*opaque*/, const void* filename, int mode) {
    if (filename == nullptr || (mode & ZLIB_FILEFUNC_MODE_READWRITEFILTER) != ZLIB_FILEFUNC_MODE_READ) {
        return nullptr;
    }
    std::FILE* stream = nullptr;
    if (os::fsopen(static_cast<const char*>(filename), "rb", os::Share::DenyWrite, stream) !=
        os::error::Success) {
        return nullptr;
    }
    return stream;
}

uLong ReadFile(voidpf /*opaque*/, voidpf stream, void* buffer, uLong size) {
    return static_cast<uLong>(std::fread(buffer, 1, size, static_cast<std::FILE*>(stream)));
}

uLong WriteFile(voidpf, voidpf, const void*, uLong) {
    return 0;
}

ZPOS64_T TellFile(voidpf /*opaque*/, voidpf stream) {
    long position = std::ftell(static_cast<std::FILE*>(stream));
    return position < 0 ? static_cast<ZPOS64_T>(-1) : static_cast<ZPOS64_T>(position);
}

long SeekFile(voidpf /*opaque*/, voidpf stream, ZPOS64_T offset, int origin) {
    int whence = origin == ZLIB_FILEFUNC_SEEK_CUR   ? SEEK_CUR
                 : origin == ZLIB_FILEFUNC_SEEK_END ? SEEK_END
                                                    : SEEK_SET;
    if (offset > static_cast<ZPOS64_T>(0x7FFFFFFF)) {
        return -1;
    }
    return std::fseek(static_cast<std::FILE*>(stream), static_cast<long>(offset), whence) == 0 ? 0
                                                                                             : -1;
}

int CloseFile(voidpf /*opaque*/, voidpf stream) {
    return std::fclose(static_cast<std::FILE*>(stream));
}

int ErrorOfFile(voidpf /*opaque*/, voidpf stream) {
    return std::ferror(static_cast<std::FILE*>(stream));
}

unzFile OpenArchive(const CStdStr& path) {
    zlib_filefunc64_def functions{};
    functions.zopen64_file = OpenFile;
    functions.zread_file = ReadFile;
    functions.zwrite_file = WriteFile;
    functions.ztell64_file = TellFile;
    functions.zseek64_file = SeekFile;
    functions.zclose_file = CloseFile;
    functions.zerror_file = ErrorOfFile;
    return unzOpen2_64(path.c_str(), &functions);
}

CStdStr MemberName(const char* stored) {
    CStdStr name(stored);
    name.Replace('/', '\\');
    return name;
}

CStdStr Child(const CStdStr& folder, const CStdStr& name) {
    return !folder.empty() && folder.back() == '\\' ? folder + name : folder + "\\" + name;
}

} // namespace

bool Zip::IsSafeMemberName(const CStdStr& name) {
    CStdStr path = name;
    path.Replace('/', '\\');
    if (path.empty() || path[0] == '\\' || path.Find(':') >= 0) {
        return false;
    }
    CStdStr rest = path;
    while (!rest.empty()) {
        int cut = rest.Find('\\');
        CStdStr part = cut < 0 ? rest : rest.Left(cut);
        CStdStr trimmed = part;
        trimmed.TrimRight(' ');
        // Windows drops trailing dots and blanks: ".. " and "..." name the parent too.
        trimmed.TrimRight('.');
        if (trimmed.empty() && !part.empty()) {
            return false;
        }
        rest = cut < 0 ? CStdStr() : rest.Mid(cut + 1);
    }
    return true;
}

bool Zip::FirstMemberName(const CStdStr& archive, CStdStr& name) {
    unzFile zip = OpenArchive(archive);
    if (zip == nullptr) {
        return false;
    }
    char stored[kMaxName + 1] = {};
    unz_file_info64 info{};
    bool ok = unzGoToFirstFile(zip) == UNZ_OK &&
              unzGetCurrentFileInfo64(zip, &info, stored, sizeof stored, nullptr, 0, nullptr, 0) ==
                      UNZ_OK;
    unzClose(zip);
    if (ok) {
        name = MemberName(stored);
        ENGINE_LOG(kMask, "DEBUG FILENAME IN ZIP %s", name.c_str());
    }
    return ok;
}

bool Zip::doOp(int operation, const CStdStr& target) {
    LogScope scope(kComponent, "Zip::doOp", kMask);
    scope.Log(kMask, "operation:%d, archive:%s, target:%s", operation, mArchive.c_str(),
              target.c_str());
    mList.clear();
    mExtracted.clear();
    unzFile zip = OpenArchive(mArchive);
    if (zip == nullptr) {
        scope.Log(0, "could not open zip file %s", mArchive.c_str());
        scope.SetResult(false);
        return false;
    }
    bool list = (operation & List) != 0;
    bool extract = (operation & Extract) != 0;
    std::vector<char> buffer(extract ? kBufferSize : 0);
    bool ok = true;
    int rc = unzGoToFirstFile(zip);
    while (rc == UNZ_OK) {
        char stored[kMaxName + 1] = {};
        unz_file_info64 info{};
        if (unzGetCurrentFileInfo64(zip, &info, stored, sizeof stored, nullptr, 0, nullptr, 0) !=
            UNZ_OK) {
            scope.Log(0, "could not read the entry after %s in %s",
                      mList.empty() ? "the start" : mList.back().c_str(), mArchive.c_str());
            ok = false;
            break;
        }
        CStdStr name = MemberName(stored);
        if (list) {
            mList.Add(name);
        }
        if (extract) {
            if (!IsSafeMemberName(name)) {
                scope.Log(0, "refused member %s of %s: its name leaves the target folder",
                          name.c_str(), mArchive.c_str());
                ok = false;
            } else {
                ok = extractFile(zip, name, Child(target, name), (info.flag & 1) != 0, &info,
                                 buffer) &&
                     ok;
            }
        }
        rc = unzGoToNextFile(zip);
    }
    if (rc != UNZ_OK && rc != UNZ_END_OF_LIST_OF_FILE) {
        scope.Log(0, "could not walk zip file %s (error %d)", mArchive.c_str(), rc);
        ok = false;
    }
    unzClose(zip);
    scope.SetResult(ok);
    return ok;
}

bool Zip::extractFile(void* archive, const CStdStr& name, const CStdStr& path, bool encrypted,
                      const void* entry, std::vector<char>& buffer) {
    LogScope scope(kComponent, "Zip::extractFile", kMask);
    scope.Log(kMask, "member:%s, target:%s", name.c_str(), path.c_str());
    auto zip = static_cast<unzFile>(archive);
    const auto& info = *static_cast<const unz_file_info64*>(entry);
    bool folder = name.back() == '\\';
    // The folders before the last backslash: a folder member's own, or a file's.
    if (!FileOp::createPath(path, true)) {
        scope.Log(0, "could not make the folders of %s", path.c_str());
        scope.SetResult(false);
        return false;
    }
    if (folder) {
        scope.SetResult(true);
        return true;
    }
    if (encrypted) {
        scope.Log(0, "member %s of %s is encrypted", name.c_str(), mArchive.c_str());
        scope.SetResult(false);
        return false;
    }
    if (unzOpenCurrentFile(zip) != UNZ_OK) {
        scope.Log(0, "could not open member %s of %s", name.c_str(), mArchive.c_str());
        scope.SetResult(false);
        return false;
    }
    std::FILE* out = nullptr;
    if (os::fsopen(path, "wb", os::Share::DenyWrite, out) != os::error::Success) {
        unzCloseCurrentFile(zip);
        scope.Log(0, "could not write %s", path.c_str());
        scope.SetResult(false);
        return false;
    }
    int read = 0;
    bool written = true;
    while (written && (read = unzReadCurrentFile(zip, buffer.data(),
                                                 static_cast<unsigned>(buffer.size()))) > 0) {
        written = std::fwrite(buffer.data(), 1, static_cast<size_t>(read), out) ==
                  static_cast<size_t>(read);
    }
    written = std::fclose(out) == 0 && written;
    int closed = unzCloseCurrentFile(zip);
    if (read < 0 || !written || closed != UNZ_OK) {
        scope.Log(0, "could not extract member %s of %s (error %d)", name.c_str(),
                  mArchive.c_str(), read < 0 ? read : closed);
        os::DeleteFile(path);
        scope.SetResult(false);
        return false;
    }
    os::SystemTime stored;
    stored.year = static_cast<std::uint16_t>(info.tmu_date.tm_year);
    stored.month = static_cast<std::uint16_t>(info.tmu_date.tm_mon + 1);
    stored.day = static_cast<std::uint16_t>(info.tmu_date.tm_mday);
    stored.hour = static_cast<std::uint16_t>(info.tmu_date.tm_hour);
    stored.minute = static_cast<std::uint16_t>(info.tmu_date.tm_min);
    stored.second = static_cast<std::uint16_t>(info.tmu_date.tm_sec);
    os::FileTime time;
    os::Error rc = os::SystemTimeToFileTime(stored, time);
    if (rc != os::error::Success) {
        scope.Log(0, "unable to call SystemTimeToFileTime for %s (Error: %d)", path.c_str(),
                  static_cast<int>(rc));
    } else {
        os::FileTimes times;
        times.creation = times.lastAccess = times.lastWrite = time;
        rc = os::SetFileTime(path, times);
        if (rc != os::error::Success) {
            scope.Log(0, "unable to call SetFileTime for %s (Error: %d)", path.c_str(),
                      static_cast<int>(rc));
        }
    }
    mExtracted.Add(path);
    scope.SetResult(true);
    return true;
}
