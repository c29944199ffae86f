#include "script/TextFile.h"

#include "os/Files.h"
#include "os/Locale.h"
#include "system/DebugLogger.h"

namespace {

int DetectEncoding(const CStdStr& path) {
    std::FILE* file = nullptr;
    if (os::fsopen(path, "rb", os::Share::DenyNone, file) != os::error::Success) {
        return TextFile::SingleByte;
    }
    int first = std::fgetc(file);
    int second = std::fgetc(file);
    std::fclose(file);
    return first == 0xFF && second == 0xFE ? TextFile::Utf16 : TextFile::SingleByte;
}

bool FileExists(const CStdStr& path) {
    std::uint32_t attributes = 0;
    return os::GetFileAttributes(path, attributes) == os::error::Success;
}

} // namespace

bool TextFile::Open(const CStdStr& path, int mode, int encoding) {
    if (path.empty()) {
        return false;
    }
    Close();
    mEncoding = encoding == Detect ? DetectEncoding(path) : encoding;
    if (mode == Append && !FileExists(path)) {
        mode = Write;
    }
    const char* modeText = nullptr;
    switch (mode) {
    case Read:
        modeText = "rb";
        break;
    case Write:
        modeText = "wb";
        break;
    case Append:
        modeText = "ab";
        break;
    default:
        ENGINE_LOG(0, "%s : attempted to open with an unknown mode: %i", path.c_str(), mode);
        return false;
    }
    if (os::fsopen(path, modeText, os::Share::DenyNone, mFile) != os::error::Success) {
        mFile = nullptr;
        ENGINE_LOG(0, "Open of %s failed.", path.c_str());
        return false;
    }
    if (mEncoding == Utf16 && mode == Read) {
        std::fgetc(mFile);
        std::fgetc(mFile);
    } else if (mEncoding == Utf16 && mode == Write) {
        std::fputc(0xFF, mFile);
        std::fputc(0xFE, mFile);
    }
    return true;
}

bool TextFile::ReadString(CStdStr& line) {
    line.clear();
    if (mFile == nullptr) {
        return false;
    }
    bool atEnd = false;
    if (mEncoding == SingleByte) {
        for (;;) {
            int c = std::fgetc(mFile);
            if (c == EOF) {
                atEnd = true;
                break;
            }
            if (c == '\n') {
                break;
            }
            line += static_cast<char>(c);
        }
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
    } else if (mEncoding == Utf16) {
        std::u16string units;
        for (;;) {
            int low = std::fgetc(mFile);
            int high = low == EOF ? EOF : std::fgetc(mFile);
            if (high == EOF) {
                atEnd = true;
                break;
            }
            auto unit = static_cast<char16_t>(low | (high << 8));
            if (unit == 10) {
                break;
            }
            units += unit;
        }
        if (!units.empty() && units.back() == 13) {
            units.pop_back();
        }
        line = os::WideCharToMultiByte(os::codepage::Ansi, units);
    } else {
        ENGINE_LOG(0, "unsupported encoding type!");
        return !line.empty();
    }
    return !line.empty() || !atEnd;
}

bool TextFile::WriteString(const CStdStr& text) {
    if (mFile == nullptr) {
        return false;
    }
    CStdStr out = text;
    out.Replace("\n", "\r\n");
    if (mEncoding == SingleByte) {
        return !out.empty() && std::fwrite(out.data(), 1, out.size(), mFile) == out.size();
    }
    if (mEncoding == Utf16) {
        std::u16string units = os::MultiByteToWideChar(os::codepage::Ansi, out);
        std::string bytes;
        bytes.reserve(units.size() * 2);
        for (char16_t unit : units) {
            bytes += static_cast<char>(unit & 0xFF);
            bytes += static_cast<char>(unit >> 8);
        }
        return !bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), mFile) == bytes.size();
    }
    ENGINE_LOG(0, "unsupported encoding type!");
    return false;
}

void TextFile::Close() {
    if (mFile != nullptr) {
        std::fclose(mFile);
        mFile = nullptr;
    }
}
