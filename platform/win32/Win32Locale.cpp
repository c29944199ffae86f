// The locale group of the seam, forwarded to the Win32 API.
#include "win32/Win32Api.h"

#include "os/Locale.h"

#include <clocale>

namespace os {

std::uint32_t GetACP() {
    return ::GetACP();
}

std::uint32_t GetOEMCP() {
    return ::GetOEMCP();
}

std::string WideCharToMultiByte(std::uint32_t codePage, std::u16string_view text) {
    if (text.empty()) {
        return std::string();
    }
    auto wide = reinterpret_cast<const wchar_t*>(text.data());
    int length = static_cast<int>(text.size());
    int size = ::WideCharToMultiByte(codePage, 0, wide, length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(size), '\0');
    ::WideCharToMultiByte(codePage, 0, wide, length, out.data(), size, nullptr, nullptr);
    return out;
}

std::u16string MultiByteToWideChar(std::uint32_t codePage, std::string_view text) {
    if (text.empty()) {
        return std::u16string();
    }
    int length = static_cast<int>(text.size());
    int size = ::MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    std::u16string out(static_cast<size_t>(size), u'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), length, reinterpret_cast<wchar_t*>(out.data()),
                          size);
    return out;
}

std::uint32_t GetUserDefaultLCID() {
    return ::GetUserDefaultLCID();
}

std::uint32_t GetSystemDefaultLCID() {
    return ::GetSystemDefaultLCID();
}

std::uint16_t GetUserDefaultLangID() {
    return ::GetUserDefaultLangID();
}

std::uint16_t GetSystemDefaultLangID() {
    return ::GetSystemDefaultLangID();
}

std::uint16_t GetUserDefaultUILanguage() {
    return ::GetUserDefaultUILanguage();
}

Error GetLocaleInfo(std::uint32_t lcid, std::uint32_t type, std::string& value) {
    int size = ::GetLocaleInfoA(lcid, type, nullptr, 0);
    if (size == 0) {
        return ::GetLastError();
    }
    std::string buffer(static_cast<size_t>(size), '\0');
    if (::GetLocaleInfoA(lcid, type, buffer.data(), size) == 0) {
        return ::GetLastError();
    }
    buffer.resize(static_cast<size_t>(size - 1));
    value = buffer;
    return error::Success;
}

void GetAnsiCaseTables(unsigned char lower[256], unsigned char upper[256]) {
    for (int byte = 0; byte < 256; ++byte) {
        lower[byte] = upper[byte] = static_cast<unsigned char>(byte);
    }
    ::CharLowerBuffA(reinterpret_cast<char*>(lower + 1), 255);
    ::CharUpperBuffA(reinterpret_cast<char*>(upper + 1), 255);
}

void SetUserLocale() {
    std::setlocale(LC_ALL, "");
}

} // namespace os
