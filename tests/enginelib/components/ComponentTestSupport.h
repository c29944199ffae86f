// What the tests of components and of the engine's install walk share: an action that writes
// what happens to it into a journal, and the language texts of a test.
#pragma once

#include "actions/ActionSet.h"
#include "core/IpcTransfer.h"
#include "os/Files.h"
#include "script/NlsFile.h"
#include "support/JournalAction.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Adds a journal action to a list; the list's keeper owns it from then on, as it owns every
// action of the run.
inline JournalAction* AddJournalAction(ActionSet& list, const std::string& name,
                                       std::vector<std::string>& journal, std::uint32_t units = 1) {
    auto* action = new JournalAction(name, journal, units);
    list.Add(action);
    return action;
}

// Loads `text` as the English language file of a folder of the test's machine.
inline void LoadEnglishTexts(const TestMachine& machine, const std::string& text) {
    std::string folder = machine.Path("nls");
    os::CreateDirectory(folder);
    ASSERT_TRUE(TestMachine::WriteFile(folder + "\\en.nls", text));
    ASSERT_TRUE(NlsFile::InitializeFromFiles(folder, "en"));
}
