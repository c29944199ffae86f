// 8.3 short names, as Windows gives them to names that are not 8.3 already: the first six
// usable characters of the name's stem, "~" and a number, and the first three of its extension.
#pragma once

#include <set>
#include <string>

namespace sim {

class ShortNames {
public:
    // True when `name` is a valid 8.3 name in any case ("readme.txt", "SETUP.EXE"); such a
    // name is its own short name.
    static bool IsShortName(const std::string& name);
    // The first free short name for `longName` among `taken` (folded names): "NAME~1.EXT", then
    // "~2" and so on. The caller adds it to `taken`.
    static std::string Generate(const std::string& longName, const std::set<std::string>& taken);

    // The short name a host file keeps in an extended attribute, so that it stays what it was
    // when it was first given; empty when it has none (or the file system keeps none).
    static std::string Stored(const std::string& hostPath);
    static void Store(const std::string& hostPath, const std::string& shortName);
    // A file that takes a new long name takes a new short name too.
    static void Forget(const std::string& hostPath);
};

} // namespace sim
