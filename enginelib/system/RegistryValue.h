// One registry value, whatever its type.
#pragma once

#include "core/CStdStringList.h"

#include <cstdint>
#include <vector>

struct RegistryValue {
    std::uint32_t type = 1; // 1 string, 2 expandable string, 3 binary, 4 DWORD, 7 multi-string
    std::uint32_t number = 0;
    CStdStr text;
    std::vector<std::uint8_t> bytes;
    CStdStringList strings;

    static RegistryValue String(const CStdStr& text, std::uint32_t type = 1) {
        RegistryValue value;
        value.type = type;
        value.text = text;
        return value;
    }
    static RegistryValue Dword(std::uint32_t number) {
        RegistryValue value;
        value.type = 4;
        value.number = number;
        return value;
    }
};
