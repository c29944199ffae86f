// The one record of what the engine put on a machine, across all products of the maker: which
// components are installed below which, and what each of them placed (files, registry, start menu
// entries, services, ports) and its attributes. Sharing is never counted: who else holds an item
// is found by looking at who else records it.
//
// A component is addressed by a reference "name[,scope]". Without a scope the scope is this
// run's product, or the manufacturer for a shared component; "Install" is the root of the tree.
// An empty component name means the current component of the run.
#pragma once

#include "core/CStdStringList.h"
#include "script/IniFile.h"
#include "uninstall/LogSnapshot.h"
#include "uninstall/ItemType.h"

#include <cstdint>

class UninstallLog : public IniFile {
public:
    static constexpr const char* kLogFileName = "QorFiles.ulf";
    // Older forms, read only to be converted.
    static constexpr const char* kUserLogFileName = "QorFiles.usr";
    static constexpr const char* kOldestLogFileName = "Qorfiles.log";
    static constexpr const char* kRoot = "Install";

    enum Mode {
        ReadMachineLog = 0, // reads the machine's log at construction
        StartEmpty = 2,
    };

    explicit UninstallLog(int mode);

    // The run's log: written during an install, read during an uninstall. It starts empty; the
    // engine reads the machine's log into it when a run starts (ReadAllRelevant).
    static UninstallLog& Global();
    // What is installed, as the machine's log says: read when first asked and read again when
    // the file changed. It names components with the product and manufacturer of Global(), and
    // it is never written.
    static UninstallLog& Installed();
    // QorFiles.ulf in the system folder of this machine.
    static CStdStr GetLogPath();

    void SetProduct(const CStdStr& product) { mProduct = product; }
    const CStdStr& GetProduct() const { return mProduct; }
    void SetManufacturer(const CStdStr& manufacturer) { mManufacturer = manufacturer; }
    const CStdStr& GetManufacturer() const { return mManufacturer; }
    // The OEM brand of the list being run; item sections carry it as a second scope.
    void SetOemProduct(const CStdStr& oemProduct) { mOemProduct = oemProduct; }
    const CStdStr& GetOemProduct() const { return mOemProduct; }
    // The title an action list runs under is the OEM brand it runs for: the same field.
    void SetCurrentTitle(const CStdStr& title) { mOemProduct = title; }
    const CStdStr& GetCurrentTitle() const { return mOemProduct; }
    // The current component: the default of every empty component name. It is the run's current
    // component (RunState), so that the log and the defines agree on it.
    static void SetParentComponent(const CStdStr& component);
    static CStdStr GetParentComponent();
    // When set, Commit deletes the log file instead of writing it.
    void SetNoWrite(bool noWrite) { mNoWrite = noWrite; }
    bool GetNoWrite() const { return mNoWrite; }

    // Makes the model the machine's log (an unreadable log is taken as empty, and is then never
    // replaced by this object). Logs of older releases are not converted yet.
    bool ReadAllRelevant(bool convertOldest = false, bool commitAfter = false);
    // Writes the log to GetLogPath(), or to `path`, holding the mutex of the log's commits: when
    // another process wrote the file since this one read it, the records this run changed are
    // carried onto that file, so that the records of both runs survive. The text goes through a
    // temporary file beside it that then replaces the old file, so that a failure at any point
    // leaves the previous log whole.
    bool Commit();
    bool Commit(const CStdStr& path);

    // The section of (type, component); empty for a type out of range.
    using IniFile::GetSectionName;
    CStdStr GetSectionName(unsigned type, const CStdStr& component);

    // One record `name=value`; types with a stored value (1 to 6, 8) store it and ignore
    // `value`. False when the record cannot be made (bad type, no component, or a name or value
    // that would not read back the same).
    bool AddItem(unsigned type, const CStdStr& component, const CStdStr& name,
                 const CStdStr& value = CStdStr());
    // Removes the record; a section left without records goes too.
    bool RemoveItem(unsigned type, const CStdStr& component, const CStdStr& name);
    // The records of the type (for types 0 and 7, every key of the section), in order.
    bool GetItems(unsigned type, const CStdStr& component, CStdStringList& items);
    bool HasItem(unsigned type, const CStdStr& component, const CStdStr& name);

    CStdStr GetSpecial(const CStdStr& component, const CStdStr& key);
    bool SetSpecial(const CStdStr& component, const CStdStr& key, const CStdStr& value);

    // Comma-separated lists in _Special keys: order kept, no name twice, case not regarded.
    bool AddToList(const CStdStr& component, const CStdStr& key, const CStdStr& name);
    bool RemoveFromList(const CStdStr& component, const CStdStr& key, const CStdStr& name);
    bool IsInList(const CStdStr& component, const CStdStr& key, const CStdStr& name);
    bool GetList(const CStdStr& component, const CStdStr& key, CStdStringList& list);

    // `item` gains `component` in its RequiredBy list.
    bool AddRequiredBy(const CStdStr& item, const CStdStr& component);
    bool GetRequiredBy(const CStdStr& component, CStdStringList& list);

    // The OEM brands that ran the OEM lists of a component for this product
    // (key "OEMSharedBy,<product>").
    bool AddOEMSharedBy(const CStdStr& component, const CStdStr& oem);
    bool RemoveOEMSharedBy(const CStdStr& component, const CStdStr& oem);
    // Whether a brand other than `oem` (empty: the OEM product) holds the component.
    bool IsOEMShared(const CStdStr& component, const CStdStr& oem);
    // Whether another product installed the (shared) component.
    bool IsInstalledByOther(const CStdStr& component);
    bool IsShared(const CStdStr& component, bool useManufacturer = true);

    // The component tree.
    bool AddComponent(const CStdStr& name, const CStdStr& parent, bool bShared);
    bool RemoveComponent(const CStdStr& name, bool justRemoveShare);
    bool ChangeComponent(const CStdStr& name, const CStdStr& newParent,
                         const CStdStr& newName = CStdStr(), bool bShared = false);
    // Whether the tree below Install holds the component (for this product, or the
    // manufacturer when it is shared; a reference with a scope is looked up as it is).
    bool IsComponentInstalled(const CStdStr& name);
    // How many components record this item: the top components and their children only.
    int CountOtherUsers(unsigned type, const CStdStr& name);
    // The children of a component that belong to this product (all shared ones with `all`).
    bool GetDependents(const CStdStr& component, CStdStringList& list, bool all);
    // Takes over, for this product, the records of the components that the other products
    // holding the host component `name` installed.
    bool MergeHostComponent(const CStdStr& name);

private:
    struct Reference {
        CStdStr name;
        CStdStr scope;
        bool scoped = false;
    };

    Reference splitReference(const CStdStr& component) const;
    CStdStr resolveComponent(const CStdStr& component) const;
    // The scope a component's own records carry: its own, or manufacturer/product.
    CStdStr scopeOf(const Reference& reference);
    // The key of a component in its parent's section, and the section of its children.
    CStdStr componentKey(const CStdStr& component);
    CStdStr treeSectionName(const CStdStr& component);
    bool isInstalledHelper(const CStdStr& component, const CStdStr& parent, bool deep);
    // The section, in the tree below `start`, that holds `key`; null when none does.
    IniSection* findParentOf(const CStdStr& key, const CStdStr& start);
    // Whether a section holds records of the component `name`. An OEM brand's section counts
    // only when `keptBrands` is given and does not name the brand; without it, all do.
    bool belongsTo(const CStdStr& sectionName, const CStdStr& name, bool shared,
                   const CStdStringList* keptBrands) const;
    void removeSectionsOf(const CStdStr& name, bool shared, const CStdStringList& keptBrands);
    // Moves the sections of `name` under `oldScope` to `newName` under `newScope`, merging
    // into sections that exist already.
    void renameSectionsOf(const CStdStr& name, const CStdStr& oldScope, bool shared,
                          const CStdStr& newName, const CStdStr& newScope);
    void fixupNewItems();
    bool canRecord(const CStdStr& name, const CStdStr& value) const;
    bool writeText(const CStdStr& path, const CStdStr& text);
    // Under the commit mutex: merges with the file as another process may have left it, writes.
    bool commitShared(const CStdStr& path);
    // For Installed(): reads the machine's log again when it changed.
    void refreshFromMachine();

    CStdStr mProduct;
    CStdStr mManufacturer;
    CStdStr mOemProduct;
    bool mNoWrite = false;
    bool mReadOnly = false;
    // A log file that existed but could not be read: it is not replaced by what this run knows.
    CStdStr mUnreadablePath;
    CStdStr mStamp;
    // The records as the file at mBasePath held them when this object last read or wrote it.
    LogSnapshot mBase;
    CStdStr mBasePath;
};
