#include "sim/Text.h"

#include <clocale>
#include <cwctype>
#include <locale.h>

namespace sim {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

char LowerChar(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Decodes one code point; on a malformed sequence returns the byte itself and advances by one.
char32_t DecodeUtf8(std::string_view text, size_t& pos, bool& valid) {
    auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char lead = byte(pos);
    valid = true;
    if (lead < 0x80) {
        ++pos;
        return lead;
    }
    int length = (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
    if (length == 0 || pos + length > text.size()) {
        valid = false;
        ++pos;
        return lead;
    }
    char32_t cp = lead & (0x7F >> length);
    for (int i = 1; i < length; ++i) {
        unsigned char next = byte(pos + i);
        if ((next & 0xC0) != 0x80) {
            valid = false;
            ++pos;
            return lead;
        }
        cp = (cp << 6) | (next & 0x3F);
    }
    pos += length;
    return cp;
}

void EncodeUtf8(char32_t cp, std::string& out) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

locale_t UnicodeLocale() {
    static locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

} // namespace

std::string Trim(std::string_view text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && IsBlank(text[begin])) {
        ++begin;
    }
    while (end > begin && IsBlank(text[end - 1])) {
        --end;
    }
    return std::string(text.substr(begin, end - begin));
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (LowerChar(a[i]) != LowerChar(b[i])) {
            return false;
        }
    }
    return true;
}

std::string LowerAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        c = LowerChar(c);
    }
    return out;
}

bool IsAscii(std::string_view text) {
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

std::string FoldName(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    if (IsAscii(utf8)) {
        for (char c : utf8) {
            out += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
        }
        return out;
    }
    locale_t locale = UnicodeLocale();
    size_t pos = 0;
    while (pos < utf8.size()) {
        bool valid = true;
        size_t start = pos;
        char32_t cp = DecodeUtf8(utf8, pos, valid);
        if (!valid) {
            out += utf8[start];
            continue;
        }
        if (locale != nullptr) {
            cp = static_cast<char32_t>(towupper_l(static_cast<wint_t>(cp), locale));
        }
        EncodeUtf8(cp, out);
    }
    return out;
}

bool NamesEqual(std::string_view a, std::string_view b) {
    if (IsAscii(a) && IsAscii(b)) {
        return EqualsNoCase(a, b);
    }
    return FoldName(a) == FoldName(b);
}

std::u16string Utf8ToUtf16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    size_t pos = 0;
    while (pos < utf8.size()) {
        bool valid = true;
        char32_t cp = DecodeUtf8(utf8, pos, valid);
        if (!valid) {
            cp = 0xFFFD;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (cp >> 10));
            out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out += static_cast<char16_t>(cp);
        }
    }
    return out;
}

std::string Utf16ToUtf8(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (size_t i = 0; i < utf16.size(); ++i) {
        char32_t cp = utf16[i];
        if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 &&
            utf16[i + 1] < 0xE000) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (utf16[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp < 0xE000) {
            cp = 0xFFFD;
        }
        EncodeUtf8(cp, out);
    }
    return out;
}

} // namespace sim
