// The shell folders group of the seam, forwarded to shell32.
#include "win32/Win32Api.h"

#include "os/Shell.h"

namespace os {

Error SHGetSpecialFolderPath(int folder, std::string& path) {
    LPITEMIDLIST list = nullptr;
    HRESULT result = ::SHGetSpecialFolderLocation(nullptr, folder, &list);
    if (FAILED(result)) {
        return static_cast<Error>(result & 0xFFFF);
    }
    char buffer[MAX_PATH];
    BOOL ok = ::SHGetPathFromIDListA(list, buffer);
    ::CoTaskMemFree(list);
    if (!ok) {
        return error::FileNotFound;
    }
    path = buffer;
    return error::Success;
}

} // namespace os
