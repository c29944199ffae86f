#include "win32/Win32Library.h"

#include <map>
#include <mutex>
#include <string>

namespace win32 {

HMODULE LoadSystemLibrary(const char* name) {
    static std::mutex lock;
    static std::map<std::string, HMODULE> loaded;
    std::lock_guard<std::mutex> guard(lock);
    auto found = loaded.find(name);
    if (found != loaded.end()) {
        return found->second;
    }
    HMODULE module = ::LoadLibraryA(name);
    loaded[name] = module;
    return module;
}

} // namespace win32
