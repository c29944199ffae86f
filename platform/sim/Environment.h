// The environment block of a process on the simulated machine: names compare without regard to
// case, and %NAME% references expand as ExpandEnvironmentStrings expands them.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sim {

class Environment {
public:
    std::optional<std::string> Get(const std::string& name) const;
    // An empty value removes the variable, as SetEnvironmentVariable with NULL does.
    void Set(const std::string& name, const std::string& value);
    std::string Expand(const std::string& text) const;
    const std::vector<std::pair<std::string, std::string>>& Variables() const { return mVariables; }

private:
    std::vector<std::pair<std::string, std::string>> mVariables;
};

} // namespace sim
