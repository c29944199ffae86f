// The kinds of record of the uninstall log. Each kind lives in the section of its component that
// carries the kind's suffix; kinds that share a section are told apart by the stored value.
#pragma once

namespace itemtype {
// Ports, and the child components of a component (as keys of its own section).
constexpr unsigned Port = 0;
constexpr unsigned File = 1;      // "_Files", value 1
constexpr unsigned Directory = 2; // "_Files", value 2
constexpr unsigned RegValue = 3;  // "_Reg", value 1
constexpr unsigned RegKey = 4;    // "_Reg", value 2
constexpr unsigned Shortcut = 5;  // "_Start", value 1
// A start menu folder, or a shortcut whose folder is cleaned up with it.
constexpr unsigned StartFolder = 6; // "_Start", value 2
// Attributes of the component (BaseDir, Version, InstalledBy, ...); never scoped by OEM.
constexpr unsigned Special = 7; // "_Special"
constexpr unsigned Service = 8; // "_Service", value 1
constexpr unsigned Count = 9;
} // namespace itemtype
