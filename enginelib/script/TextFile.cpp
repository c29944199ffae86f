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
    mBuffer.clear();
    mPosition = 0;
    if (mEncoding == Utf16 && mode == Read) {
        nextByte();
        nextByte();
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
            if (mPosition >= mBuffer.size() && !fillBuffer()) {
                atEnd = true;
                break;
            }
            std::size_t end = mBuffer.find('\n', mPosition);
            if (end == std::string::npos) {
                line.append(mBuffer, mPosition, std::string::npos);
                mPosition = mBuffer.size();
                continue;
            }
            line.append(mBuffer, mPosition, end - mPosition);
            mPosition = end + 1;
            break;
        }
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
    } else if (mEncoding == Utf16) {
        std::u16string units;
        for (;;) {
            int low = nextByte();
            int high = low == EOF ? EOF : nextByte();
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

bool TextFile::fillBuffer() {
    constexpr std::size_t kBlock = 65536;
    mBuffer.resize(kBlock);
    std::size_t got = std::fread(mBuffer.data(), 1, kBlock, mFile);
    mBuffer.resize(got);
    mPosition = 0;
    return got > 0;
}

int TextFile::nextByte() {
    if (mPosition >= mBuffer.size() && !fillBuffer()) {
        return EOF;
    }
    return static_cast<unsigned char>(mBuffer[mPosition++]);
}

void TextFile::Close() {
    if (mFile != nullptr) {
        std::fclose(mFile);
        mFile = nullptr;
    }
    mBuffer.clear();
    mPosition = 0;
}
