// A Windows code page on the host: conversion of the machine's ANSI and OEM text to and from
// Unicode, the way MultiByteToWideChar and WideCharToMultiByte convert.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace sim {

class CodePage {
public:
    // The converter of a code page number; an unknown number gives Windows-1252.
    static const CodePage& Get(std::uint32_t number);

    std::uint32_t Number() const { return mNumber; }
    // Characters that the code page lacks become "?".
    std::string FromUnicode(std::u16string_view text) const;
    std::u16string ToUnicode(std::string_view text) const;

    std::string FromUtf8(std::string_view utf8) const;
    std::string ToUtf8(std::string_view text) const;

    // Lower and upper case of every byte, as CharLowerBuff and CharUpperBuff give them.
    void CaseTables(unsigned char lower[256], unsigned char upper[256]) const;

private:
    explicit CodePage(std::uint32_t number);
    std::string iconvName() const;

    std::uint32_t mNumber;
    bool mSingleByte = true;
    bool mUtf8 = false;
    char16_t mToUnicode[256] = {};
    std::unordered_map<char16_t, unsigned char> mFromUnicode;
};

} // namespace sim
