// The folder of a given kind on this machine, by a numeric path code, and the values of the
// built-in defines. The answer is itself a path value.
#pragma once

#include "system/PathObject.h"

class SystemPath : public PathObject {
public:
    enum Code {
        MediumRoot = 0,
        CommonFiles = 1,
        CurrentFolder = 2,
        Desktop = 3,
        DriverCab = 4,
        DriverCache = 5,
        DriverCache32 = 6,
        DriverCacheAmd64 = 7,
        DriverCacheX64 = 8,
        Fonts = 9,
        ApplicationFolder = 10,
        PrinterDriverFolder = 11,
        VersionedDriverFolder = 12,
        PrintProcessorFolder = 13,
        ProgramFiles = 14,
        SendTo = 15,
        DriverFolderUpTwo = 16,
        DriverFolderUpOne = 17,
        StartMenuPrograms = 18,
        SystemFolder = 19,
        InfFolder = 20,
        WindowsDrive = 21,
        TempFolder = 22,
        WindowsFolder = 23,
        Win9xDriverFolder = 24,
        DriverFolderVersion3 = 25,
        DriverFolderVersion2 = 26,
        CommonAppData = 27,
        MediumRootAlternative = 28,
        MyDocuments = 29,
        AllUsersProfile = 30,
        SysWow64 = 31,
    };

    SystemPath() = default;
    explicit SystemPath(int code, bool allUsers = true) { SetPath(code, allUsers); }

    // Fills the object with the folder of `code`; `allUsers` matters for codes 3 and 18. An
    // unknown code is logged and leaves the object as it was.
    void SetPath(int code, bool allUsers = true);

    // The folder of the application: the working folder that the host set, when it set one.
    static void SetApplicationDirectoryOverride(const CStdStr& directory);
    static CStdStr GetApplicationDirectoryOverride();

    // The value of a built-in define (names compared without regard to case); empty for a name
    // that is not one.
    static CStdStr GetDefine(const CStdStr& name);

    // Where the product was installed from, as its entry of installed programs records it
    // (InstallSource), with environment variables expanded; empty when it records nothing.
    static CStdStr checkSourceFromRegistry(const CStdStr& product);

private:
    void setFolder(const CStdStr& folder);
    void fromRegistryFolder(const char* root, const char* key, const char* value);
};
