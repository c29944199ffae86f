// Text helpers of the simulated machine: trimming, case folding of UTF-8 names (the host file
// system and the registry store names as UTF-8), and UTF-8/UTF-16 conversion.
#pragma once

#include <string>
#include <string_view>

namespace sim {

std::string Trim(std::string_view text);
// ASCII case folding, for the keys of the machine's own INI files.
bool EqualsNoCase(std::string_view a, std::string_view b);
std::string LowerAscii(std::string_view text);

// Folds a UTF-8 name to one case, the way Windows compares file and key names (upper case of
// every character). Invalid bytes are kept as they are.
std::string FoldName(std::string_view utf8);
bool NamesEqual(std::string_view a, std::string_view b);

std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);
bool IsAscii(std::string_view text);

} // namespace sim
