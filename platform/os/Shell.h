// Shell folders group of the platform seam (shell32).
#pragma once

#include "os/OsTypes.h"

namespace os {

namespace csidl {
constexpr int Desktop = 0x0000;
constexpr int Programs = 0x0002;
constexpr int Personal = 0x0005;
constexpr int SendTo = 0x0009;
constexpr int StartMenu = 0x000B;
constexpr int DesktopDirectory = 0x0010;
constexpr int Fonts = 0x0014;
constexpr int CommonStartMenu = 0x0016;
constexpr int CommonPrograms = 0x0017;
constexpr int CommonDesktopDirectory = 0x0019;
constexpr int AppData = 0x001A;
constexpr int LocalAppData = 0x001C;
constexpr int CommonAppData = 0x0023;
} // namespace csidl

// SHGetSpecialFolderLocation followed by SHGetPathFromIDList.
Error SHGetSpecialFolderPath(int folder, std::string& path);

} // namespace os
