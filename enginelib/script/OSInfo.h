// The running Windows classified into one OS code and the list of OS tokens by which scripts
// and CIF files choose their values.
#pragma once

#include "core/CStdStringList.h"

class OSInfo {
public:
    enum Code {
        Unknown = -1,
        Win95 = 0,
        Win98 = 1,
        Win98SE = 2,
        WinME = 3,
        NT4 = 4,
        Win2000 = 5,
        Server2003 = 6,
        WinXP = 7,
        Generic64 = 8,
        Vista = 9,
        Server2008 = 10,
        Win7 = 11,
        Future = 12,
    };

    // Detects the running system.
    OSInfo();
    // Carries a platform named by the caller: no detection, the code stays unknown.
    explicit OSInfo(const CStdStr& presetText);
    // A system of a given code, for questions about other systems than the running one.
    static OSInfo ForCode(int code, bool is64Bit = false);

    void initialize();
    // Appends the tokens of the OS, then the service-pack token.
    void GetTokens(CStdStringList& list) const;
    CStdStringList Tokens() const;
    bool HasToken(const CStdStr& token) const;

    int GetOSCode() const { return mOsCode; }
    int GetServicePack() const { return mServicePack; }
    int GetMajorVersion() const { return mMajorVersion; }
    int GetMinorVersion() const { return mMinorVersion; }
    bool Is64Bit() const { return mIs64Bit; }
    bool IsAtLeastVista() const { return mMajorVersion >= 6; }
    bool Is9x() const { return mOsCode >= Win95 && mOsCode <= WinME; }
    const CStdStr& GetPresetText() const { return mPresetText; }
    // The base token of the code ("XP", "2K3", ...), empty for codes without one.
    static const char* BaseToken(int code);
    // Whether `token` is one of the OS tokens that any system can carry: the plain, range and
    // 64-bit forms, and the service-pack forms ("XPSP2", "2K3NOSP", "SP1"). Exact, with case.
    static bool IsOSToken(const CStdStr& token);

private:
    struct NoDetection {};
    explicit OSInfo(NoDetection) {}

    int mOsCode = Unknown;
    int mServicePack = 0;
    CStdStr mPresetText;
    int mMajorVersion = 0;
    int mMinorVersion = 0;
    bool mIs64Bit = false;
};
