// The unit of work of an install component: one line of an action section of a component file,
// made into an object by the factory and run by an ActionSet. The run loop asks an action, after
// its Perform, whether the failure was fatal, whether the list must freeze here, and whether the
// action credited its progress itself.
#pragma once

#include "core/CStdStr.h"

#include <cstdint>

class Action {
public:
    Action() = default;
    virtual ~Action() = default;
    Action(const Action&) = delete;
    Action& operator=(const Action&) = delete;

    // Does the work. `title` is the title of the run (an OEM brand or the default model text);
    // true means done or nothing to do, false failed.
    virtual bool Perform(CStdStr title) = 0;
    // Asked after each Perform: stop the list here and resume at this action later.
    virtual bool ShouldFreeze() { return false; }
    // Asked only after a failed Perform: stop the list.
    virtual bool IsFatal() { return false; }
    // True when Perform credited the progress units itself.
    virtual bool HasReportedUnits() { return false; }
    // Whether `other` is an action of the same class doing the same work.
    virtual bool IsSameAction(const Action* other) = 0;

    // Records an item in the run's uninstall log, unless this action does not log. An empty
    // component means the component being run.
    void LogUninstallItem(unsigned itemType, CStdStr component, const CStdStr& item);

    std::uint32_t GetUnits() const { return mUnits; }
    bool GetLogIt() const { return mLogIt; }
    void SetLogIt(bool logIt) { mLogIt = logIt; }
    const CStdStr& GetActionDesc() const { return mActionDesc; }
    void SetActionDesc(const CStdStr& description) { mActionDesc = description; }

protected:
    // Whether the run builds a package: then an action that changes the machine in place (the
    // registry, settings files) does nothing, since the package carries files only.
    static bool BuildsPackage();

    // Progress units this action is worth; set by the subclass, normally in its constructor.
    std::uint32_t mUnits = 0;
    // False: LogUninstallItem records nothing (the NotLogIt parameter).
    bool mLogIt = true;
    // Names the action (component file, component, section, line) in failure messages.
    CStdStr mActionDesc;
};
