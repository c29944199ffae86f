// The window messages group of the seam: the simulated machine has no windows that answer;
// broadcasts go to its journal.
#include "os/Messages.h"

#include "sim/Journal.h"
#include "sim/MachineCall.h"

#include <cstdio>

namespace os {

using sim::MachineCall;

namespace {

std::string MessageName(std::uint32_t message) {
    if (message == wm::SettingChange) {
        return "WM_SETTINGCHANGE";
    }
    char text[32];
    std::snprintf(text, sizeof text, "0x%04X", message);
    return text;
}

Error Journalled(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                 const std::string& lParam, std::uint32_t flags, std::uint32_t timeoutMs) {
    MachineCall machine;
    if (!machine) {
        return error::NotReady;
    }
    char text[160];
    std::snprintf(text, sizeof text, "%s to %s wParam=%ju lParam=%s flags=0x%X timeout=%u",
                  MessageName(message).c_str(),
                  window == HwndBroadcast ? "all top-level windows" : "one window",
                  static_cast<std::uintmax_t>(wParam), lParam.c_str(), flags, timeoutMs);
    sim::Journal::Append(machine->Directory(), window == HwndBroadcast ? "broadcast" : "message",
                         text);
    return error::Success;
}

} // namespace

Error SendMessageTimeout(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam, std::uint32_t flags, std::uint32_t timeoutMs) {
    return Journalled(window, message, wParam, std::to_string(lParam), flags, timeoutMs);
}

Error SendMessageTimeoutText(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                             const std::string& text, std::uint32_t flags,
                             std::uint32_t timeoutMs) {
    return Journalled(window, message, wParam, "\"" + text + "\"", flags, timeoutMs);
}

} // namespace os
