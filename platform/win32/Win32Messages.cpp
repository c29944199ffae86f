// The window messages group of the seam, forwarded to user32.
#include "win32/Win32Api.h"

#include "os/Messages.h"

namespace os {

Error SendMessageTimeout(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam, std::uint32_t flags, std::uint32_t timeoutMs) {
    DWORD_PTR result = 0;
    LRESULT sent = ::SendMessageTimeoutA(reinterpret_cast<HWND>(window), message, wParam, lParam,
                                         flags, timeoutMs, &result);
    return sent != 0 ? error::Success : ::GetLastError();
}

Error SendMessageTimeoutText(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                             const std::string& text, std::uint32_t flags,
                             std::uint32_t timeoutMs) {
    DWORD_PTR result = 0;
    LRESULT sent = ::SendMessageTimeoutA(reinterpret_cast<HWND>(window), message, wParam,
                                         reinterpret_cast<LPARAM>(text.c_str()), flags, timeoutMs,
                                         &result);
    return sent != 0 ? error::Success : ::GetLastError();
}

} // namespace os
