#include "script/OSInfo.h"

#include "os/SystemInfo.h"
#include "system/DebugLogger.h"

#include <initializer_list>

namespace {

constexpr std::uint16_t kAmd64 = 9;
constexpr std::uint32_t kPlatformNT = 2;
constexpr std::uint8_t kWorkstation = 1;

void Append(CStdStringList& list, std::initializer_list<const char*> tokens) {
    for (const char* token : tokens) {
        list.Add(token);
    }
}

} // namespace

OSInfo::OSInfo() {
    initialize();
}

OSInfo::OSInfo(const CStdStr& presetText) : mPresetText(presetText) {
    initialize();
}

OSInfo OSInfo::ForCode(int code, bool is64Bit) {
    OSInfo info{NoDetection{}};
    info.mOsCode = code;
    info.mIs64Bit = is64Bit;
    static const int majors[] = {4, 4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6};
    static const int minors[] = {0, 10, 10, 90, 0, 0, 2, 1, 2, 0, 0, 1, 2};
    if (code >= 0 && code <= Future) {
        info.mMajorVersion = majors[code];
        info.mMinorVersion = minors[code];
    }
    return info;
}

const char* OSInfo::BaseToken(int code) {
    switch (code) {
    case NT4:
        return "NT";
    case Win2000:
        return "2K";
    case Server2003:
        return "2K3";
    case WinXP:
        return "XP";
    case Generic64:
        return "X64";
    case Vista:
        return "VISTA";
    case Server2008:
        return "2K8";
    case Win7:
        return "WIN7";
    default:
        return "";
    }
}

void OSInfo::initialize() {
    if (!mPresetText.empty()) {
        return;
    }
    os::OsVersionInfo version;
    os::Error rc = os::GetVersionEx(os::versioninfo::ExtendedSize, version);
    if (rc != os::error::Success) {
        rc = os::GetVersionEx(os::versioninfo::BasicSize, version);
    }
    if (rc != os::error::Success) {
        ENGINE_LOG(0, "Unable to get the OS Version info with error code: %d, error",
                   static_cast<int>(rc));
        return;
    }
    mMajorVersion = static_cast<int>(version.majorVersion);
    mMinorVersion = static_cast<int>(version.minorVersion);
    CStdStr csd = version.csdVersion;
    if (version.platformId == kPlatformNT) {
        mServicePack = version.servicePackMajor;
        os::SystemInfo system;
        os::GetSystemInfo(system);
        bool amd64 = system.processorArchitecture == kAmd64;
        bool workstation = version.productType == kWorkstation;
        switch (mMajorVersion) {
        case 4:
            mOsCode = NT4;
            break;
        case 5:
            mOsCode = mMinorVersion == 0   ? Win2000
                      : mMinorVersion == 1 ? WinXP
                      : mMinorVersion == 2 ? (workstation && amd64 ? WinXP : Server2003)
                                           : Unknown;
            break;
        case 6:
            if (workstation) {
                mOsCode = mMinorVersion == 0 ? Vista : mMinorVersion == 1 ? Win7 : Future;
            } else {
                mOsCode = mMinorVersion <= 1 ? Server2008 : Future;
            }
            break;
        default:
            ENGINE_LOG(0, "invalid NT version (major: %d, minor: %d", mMajorVersion, mMinorVersion);
            break;
        }
        if (mMajorVersion == 5 || mMajorVersion == 6) {
            mIs64Bit = amd64;
        }
    } else if (mMajorVersion != 4) {
        ENGINE_LOG(0, "Invalid 9X version (major: %d, minor: %d)", mMajorVersion, mMinorVersion);
    } else if (mMinorVersion == 90) {
        mOsCode = WinME;
    } else if (mMinorVersion == 10) {
        mOsCode = csd.CompareNoCase("A") > 0 ? Win98 : Win98SE;
    } else if (mMinorVersion == 0) {
        mOsCode = Win95;
    }
    ENGINE_LOG(logmask::Info, "OS is %d and 64-Bit is %d", mOsCode, mIs64Bit ? 1 : 0);
}

void OSInfo::GetTokens(CStdStringList& list) const {
    bool x64 = mIs64Bit;
    switch (mOsCode) {
    case Win95:
        Append(list, {"95", "9X", "X86"});
        break;
    case Win98:
        Append(list, {"98", "9X", "X86"});
        break;
    case Win98SE:
        Append(list, {"98", "98SE", "9X", "X86"});
        break;
    case WinME:
        Append(list, {"ME", "9X", "X86"});
        break;
    case NT4:
        Append(list, {"NT", "NT_XP", "NT_VISTA", "NT_WIN7", "X86"});
        break;
    case Win2000:
        Append(list, {"2K", "2K_ONLY", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7",
                      "2K_WIN7", "X86"});
        break;
    case Server2003:
        Append(list, {"2K", "2K3", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7",
                      "XP_WIN7"});
        x64 ? Append(list, {"X64", "2K3X64"}) : Append(list, {"X86"});
        break;
    case WinXP:
        Append(list,
               {"XP", "NT_XP", "2K_XP", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7", "XP_WIN7"});
        x64 ? Append(list, {"X64", "XPX64"}) : Append(list, {"X86", "XPX86"});
        break;
    case Generic64:
        Append(list, {"X64"});
        break;
    case Vista:
        Append(list, {"VISTA", "VISTA_ONLY", "NT_VISTA", "2K_VISTA", "NT_WIN7", "2K_WIN7",
                      "XP_WIN7", "VISTA_WIN7", "FUTURE_OS"});
        x64 ? Append(list, {"VISTA64", "X64"}) : Append(list, {"X86"});
        break;
    case Server2008:
        Append(list, {"VISTA", "NT_VISTA", "2K_VISTA", "2K8", "NT_WIN7", "2K_WIN7", "XP_WIN7",
                      "VISTA_WIN7", "FUTURE_OS"});
        x64 ? Append(list, {"X64", "VISTA64", "2K8X64"}) : Append(list, {"X86"});
        break;
    case Win7:
        Append(list, {"VISTA", "NT_VISTA", "2K_VISTA", "WIN7", "NT_WIN7", "2K_WIN7", "XP_WIN7",
                      "VISTA_WIN7", "FUTURE_OS"});
        x64 ? Append(list, {"X64", "WIN7X64", "VISTA64"}) : Append(list, {"X86"});
        break;
    default:
        if (mMajorVersion > 5) {
            Append(list, {"FUTURE_OS"});
            x64 ? Append(list, {"FUTURE_OSX64", "X64"}) : Append(list, {"X86"});
        }
        break;
    }
    bool hasBase = mOsCode >= NT4 && mOsCode <= Win7;
    CStdStr base = hasBase ? BaseToken(mOsCode) : "";
    list.Add(mServicePack != 0 ? CStdStr::Formatted("%sSP%d", base.c_str(), mServicePack)
                               : base + "NOSP");
}

bool OSInfo::IsOSToken(const CStdStr& token) {
    static const char* const fixed[] = {
            "95",      "98",      "98SE",      "9X",          "ME",     "NT",       "2K",
            "2K_ONLY", "2K3",     "XP",        "X64",         "X86",    "VISTA",    "VISTA_ONLY",
            "2K8",     "WIN7",    "FUTURE_OS", "NT_XP",       "2K_XP",  "NT_VISTA", "2K_VISTA",
            "NT_WIN7", "2K_WIN7", "XP_WIN7",   "VISTA_WIN7",  "2K3X64", "XPX64",    "XPX86",
            "VISTA64", "2K8X64",  "WIN7X64",   "FUTURE_OSX64"};
    for (const char* known : fixed) {
        if (token == known) {
            return true;
        }
    }
    // Service-pack tokens: a base token of codes 4 to 11, or none, then NOSP or SP<number>.
    for (int code = Unknown; code <= Win7; ++code) {
        const CStdStr base = code >= NT4 ? BaseToken(code) : "";
        if (token.size() <= base.size() || token.compare(0, base.size(), base) != 0) {
            continue;
        }
        CStdStr rest = token.Mid(base.GetLength());
        if (rest == "NOSP") {
            return true;
        }
        if (rest.size() > 2 && rest.compare(0, 2, "SP") == 0 &&
            rest.find_first_not_of("0123456789", 2) == CStdStr::npos) {
            return true;
        }
    }
    return false;
}

CStdStringList OSInfo::Tokens() const {
    CStdStringList list;
    GetTokens(list);
    return list;
}

bool OSInfo::HasToken(const CStdStr& token) const {
    return Tokens().ContainsNoCase(token);
}
