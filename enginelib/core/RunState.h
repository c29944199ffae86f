// The state of the run that the whole engine reads: the script, the component being worked on,
// the OEM name in force, the progress reporter of the actions, and package mode. It lives for
// the process; the Engine sets it at the start of a run.
#pragma once

#include "core/CStdStringList.h"

class IniFile;
class IpcTransfer;

class RunState {
public:
    // The install script of the run (not owned), and its path.
    static IniFile* GetScript();
    static void SetScript(IniFile* script);
    static CStdStr GetScriptPath();
    static void SetScriptPath(const CStdStr& path);

    // The component being worked on: the default parent of the uninstall log's components,
    // and the value of the define CURRENT_COMP.
    static CStdStr GetCurrentComponent();
    static void SetCurrentComponent(const CStdStr& name);

    // The OEM name in force; empty makes the OEM define be evaluated afresh.
    static CStdStr GetCurrentOem();
    static void SetCurrentOem(const CStdStr& name);

    // The progress reporter that action lists credit; null means none.
    static IpcTransfer* GetReporter();
    static void SetReporter(IpcTransfer* reporter);

    // Not empty exactly when the run builds a package.
    static CStdStr GetPackageDir();
    static void SetPackageDir(const CStdStr& folder);

    // Set when the spooler was stopped during the walk of a run; nothing clears it. It makes the
    // install walk its phases a second time.
    static bool IsSpoolerStopped();
    static void SetSpoolerStopped();

    // Files that driver objects unpacked for the run and that go when the drivers are in.
    static void AddTemporaryFile(const CStdStr& path);
    static CStdStringList TakeTemporaryFiles();

    // Back to the state of a fresh process, for a new run in the same process.
    static void Reset();
};
