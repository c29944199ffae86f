#include "sim/CodePage.h"

#include "sim/Text.h"

#include <cerrno>
#include <iconv.h>
#include <locale.h>
#include <map>
#include <memory>
#include <mutex>
#include <vector>
#include <wctype.h>

namespace sim {

namespace {

bool IsDoubleByte(std::uint32_t number) {
    return number == 932 || number == 936 || number == 949 || number == 950;
}

bool IsKnown(std::uint32_t number) {
    static const std::uint32_t known[] = {
            437, 737, 775, 850, 852,  855,  857,  860,  861,  862,  863,  865,  866,  869,  874,
            932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258, 65001};
    for (std::uint32_t candidate : known) {
        if (candidate == number) {
            return true;
        }
    }
    return false;
}

// Runs iconv over the whole input, replacing what it cannot convert and going on.
std::string Convert(const char* to, const char* from, std::string_view input, size_t unitSize,
                    std::string_view replacement) {
    iconv_t handle = iconv_open(to, from);
    if (handle == reinterpret_cast<iconv_t>(-1)) {
        return std::string(input);
    }
    std::string out;
    std::vector<char> buffer(input.size() * 4 + 16);
    char* in = const_cast<char*>(input.data());
    size_t inLeft = input.size();
    while (inLeft > 0) {
        char* outPtr = buffer.data();
        size_t outLeft = buffer.size();
        size_t rc = iconv(handle, &in, &inLeft, &outPtr, &outLeft);
        out.append(buffer.data(), static_cast<size_t>(outPtr - buffer.data()));
        if (rc == static_cast<size_t>(-1)) {
            if (errno == E2BIG) {
                continue;
            }
            // An unconvertible or incomplete sequence: one unit is replaced and skipped.
            out.append(replacement);
            size_t skip = std::min(unitSize, inLeft);
            in += skip;
            inLeft -= skip;
        }
    }
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    iconv_close(handle);
    return out;
}

std::string U16Bytes(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::u16string FromU16Bytes(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                      (static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return text;
}

const std::string_view kReplacementU16("\xFD\xFF", 2);

} // namespace

const CodePage& CodePage::Get(std::uint32_t number) {
    static std::mutex lock;
    static std::map<std::uint32_t, std::unique_ptr<CodePage>> cache;
    if (!IsKnown(number)) {
        number = 1252;
    }
    std::lock_guard<std::mutex> guard(lock);
    auto& slot = cache[number];
    if (!slot) {
        slot.reset(new CodePage(number));
    }
    return *slot;
}

CodePage::CodePage(std::uint32_t number) : mNumber(number) {
    mUtf8 = number == 65001;
    mSingleByte = !mUtf8 && !IsDoubleByte(number);
    if (!mSingleByte) {
        return;
    }
    iconv_t handle = iconv_open("UTF-16LE", iconvName().c_str());
    for (int byte = 0; byte < 256; ++byte) {
        // Bytes that the code page leaves undefined map to the same code point, as Windows does.
        mToUnicode[byte] = static_cast<char16_t>(byte);
        if (handle != reinterpret_cast<iconv_t>(-1)) {
            char in = static_cast<char>(byte);
            char* inPtr = &in;
            size_t inLeft = 1;
            char out[4];
            char* outPtr = out;
            size_t outLeft = sizeof out;
            if (iconv(handle, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<size_t>(-1) &&
                outPtr - out == 2) {
                mToUnicode[byte] = static_cast<char16_t>(static_cast<unsigned char>(out[0]) |
                                                         (static_cast<unsigned char>(out[1]) << 8));
            }
            iconv(handle, nullptr, nullptr, nullptr, nullptr);
        }
        mFromUnicode.emplace(mToUnicode[byte], static_cast<unsigned char>(byte));
    }
    if (handle != reinterpret_cast<iconv_t>(-1)) {
        iconv_close(handle);
    }
}

std::string CodePage::iconvName() const {
    return "CP" + std::to_string(mNumber);
}

std::string CodePage::FromUnicode(std::u16string_view text) const {
    if (mUtf8) {
        return Utf16ToUtf8(text);
    }
    if (!mSingleByte) {
        return Convert(iconvName().c_str(), "UTF-16LE", U16Bytes(text), 2, "?");
    }
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char16_t unit = text[i];
        if (unit < 0x80) {
            out += static_cast<char>(unit);
            continue;
        }
        auto found = mFromUnicode.find(unit);
        out += found == mFromUnicode.end() ? '?' : static_cast<char>(found->second);
        if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < text.size()) {
            ++i; // a surrogate pair is one character, and one "?"
        }
    }
    return out;
}

std::u16string CodePage::ToUnicode(std::string_view text) const {
    if (mUtf8) {
        return Utf8ToUtf16(text);
    }
    if (!mSingleByte) {
        return FromU16Bytes(Convert("UTF-16LE", iconvName().c_str(), text, 1, kReplacementU16));
    }
    std::u16string out;
    out.reserve(text.size());
    for (char c : text) {
        out += mToUnicode[static_cast<unsigned char>(c)];
    }
    return out;
}

std::string CodePage::FromUtf8(std::string_view utf8) const {
    if (mUtf8 || IsAscii(utf8)) {
        return std::string(utf8);
    }
    return FromUnicode(Utf8ToUtf16(utf8));
}

std::string CodePage::ToUtf8(std::string_view text) const {
    if (mUtf8 || IsAscii(text)) {
        return std::string(text);
    }
    return Utf16ToUtf8(ToUnicode(text));
}

void CodePage::CaseTables(unsigned char lower[256], unsigned char upper[256]) const {
    static locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    for (int byte = 0; byte < 256; ++byte) {
        lower[byte] = upper[byte] = static_cast<unsigned char>(byte);
        if (byte >= 'A' && byte <= 'Z') {
            lower[byte] = static_cast<unsigned char>(byte - 'A' + 'a');
        } else if (byte >= 'a' && byte <= 'z') {
            upper[byte] = static_cast<unsigned char>(byte - 'a' + 'A');
        }
    }
    // Only single-byte code pages fold their upper half: in a double-byte one those bytes are
    // lead and trail bytes, not letters.
    if (!mSingleByte || unicode == nullptr) {
        return;
    }
    for (int byte = 0x80; byte < 256; ++byte) {
        char16_t unit = mToUnicode[byte];
        auto lowered = static_cast<char16_t>(towlower_l(unit, unicode));
        auto raised = static_cast<char16_t>(towupper_l(unit, unicode));
        auto lowerByte = mFromUnicode.find(lowered);
        auto upperByte = mFromUnicode.find(raised);
        if (lowerByte != mFromUnicode.end()) {
            lower[byte] = lowerByte->second;
        }
        if (upperByte != mFromUnicode.end()) {
            upper[byte] = upperByte->second;
        }
    }
}

} // namespace sim
