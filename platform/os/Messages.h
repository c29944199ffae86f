// Window messages group of the platform seam (user32).
#pragma once

#include "os/OsTypes.h"

#include <string>

namespace os {

using WindowHandle = std::uintptr_t;

constexpr WindowHandle HwndBroadcast = 0xFFFF;

namespace wm {
constexpr std::uint32_t SettingChange = 0x001A; // WM_SETTINGCHANGE
} // namespace wm

namespace smto {
constexpr std::uint32_t Normal = 0x0000;
constexpr std::uint32_t AbortIfHung = 0x0002;
} // namespace smto

// SendMessageTimeout with a numeric lParam: Success when every window answered in time.
Error SendMessageTimeout(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam, std::uint32_t flags, std::uint32_t timeoutMs);
// SendMessageTimeout with a text as lParam, as WM_SETTINGCHANGE names the area that changed
// ("Environment").
Error SendMessageTimeoutText(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                             const std::string& text, std::uint32_t flags,
                             std::uint32_t timeoutMs);

} // namespace os
