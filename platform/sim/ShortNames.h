// Generated 8.3 names, as GetShortPathName gives them for names that are not 8.3 already.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace sim {

class ShortNames {
public:
    // Short names of the entries of one folder, in the order given (pass them sorted for a
    // stable answer): the first long name of a stem gets "~1", the next "~2", and so on.
    static std::vector<std::pair<std::string, std::string>>
    Of(const std::vector<std::string>& names);
    static bool IsShortName(const std::string& name);
};

} // namespace sim
