// Converts, in memory, a script written by a host of an earlier release: other key names, other
// language names and other section shapes. The file on disk is not touched.
#pragma once

class IniFile;

class OldScriptConverter {
public:
    static void Convert(IniFile& script);

private:
    static void renameInstallKeys(IniFile& script);
    static void convertLanguage(IniFile& script);
    static void convertDriverCounts(IniFile& script);
    static void convertPorts(IniFile& script);
};
