// The registry of a simulated machine: a tree of keys with typed values, kept in memory and
// stored in regedit's export format. Names are UTF-8 and compare without regard to case; string
// data is held as the real registry holds it, in UTF-16 with its terminator.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace sim {

namespace regtype {
constexpr std::uint32_t None = 0;
constexpr std::uint32_t String = 1;
constexpr std::uint32_t ExpandString = 2;
constexpr std::uint32_t Binary = 3;
constexpr std::uint32_t Dword = 4;
constexpr std::uint32_t MultiString = 7;
constexpr std::uint32_t Qword = 11;
} // namespace regtype

struct RegValue {
    std::string name; // empty for the default value
    std::uint32_t type = regtype::String;
    std::vector<std::uint8_t> data;

    static RegValue Text(const std::string& name, const std::string& utf8,
                         std::uint32_t type = regtype::String);
    static RegValue Number(const std::string& name, std::uint32_t value);
    static RegValue Multi(const std::string& name, const std::vector<std::string>& utf8);
    // The text of a string value, without its terminator.
    std::string AsText() const;
    std::vector<std::string> AsMulti() const;
};

class RegKey {
public:
    explicit RegKey(std::string name) : mName(std::move(name)) {}

    const std::string& Name() const { return mName; }
    RegKey* Child(const std::string& name) const;
    RegKey& AddChild(const std::string& name);
    bool RemoveChild(const std::string& name);
    // Subkeys in the order RegEnumKeyEx gives them: alphabetical without regard to case.
    std::vector<const RegKey*> Children() const;
    size_t ChildCount() const { return mChildren.size(); }

    const RegValue* Value(const std::string& name) const;
    void SetValue(RegValue value);
    bool RemoveValue(const std::string& name);
    const std::vector<RegValue>& Values() const { return mValues; }

    // The key's security descriptor in SDDL; empty means the default one.
    const std::string& Security() const { return mSecurity; }
    void SetSecurity(std::string sddl) { mSecurity = std::move(sddl); }

private:
    std::string mName;
    std::vector<RegValue> mValues;
    std::map<std::string, std::unique_ptr<RegKey>> mChildren; // by folded name
    std::string mSecurity;
};

class RegistryStore {
public:
    // Windows' limits: a key's own name holds at most 255 characters, and the tree below a
    // hive is at most 512 levels deep.
    static constexpr size_t kMaxKeyNameLength = 255;
    static constexpr size_t kMaxDepth = 512;

    RegistryStore();

    // The two hives that the machine keeps: "HKEY_LOCAL_MACHINE" and "HKEY_USERS".
    RegKey* Hive(const std::string& name) const;
    // A key by its full path ("HKEY_LOCAL_MACHINE\\SOFTWARE\\..."), or null.
    RegKey* Find(const std::string& path) const;
    // Null when the path has no hive, names a key over 255 characters or lies deeper than 512
    // levels: Windows gives ERROR_INVALID_PARAMETER for those.
    RegKey* Create(const std::string& path);
    bool Remove(const std::string& path);

    // Reads regedit's format (version 5.00 or REGEDIT4, UTF-16 or UTF-8) into the store. Keys
    // under HKEY_CURRENT_USER go to `currentUserPath` and HKEY_CLASSES_ROOT to HKLM's classes.
    bool Parse(const std::string& fileBytes, const std::string& currentUserPath,
               std::string& error);
    // Writes the whole store in regedit's version 5.00 format, as UTF-8 text.
    std::string Format() const;
    // Carries onto this store the changes that turned `base` into `mine`: keys made or deleted,
    // values set or deleted, security changed. A key or value that `mine` did not change keeps
    // this store's state.
    void ApplyChanges(const RegistryStore& base, const RegistryStore& mine);

    bool Dirty() const { return mDirty; }
    void SetDirty(bool dirty) { mDirty = dirty; }

private:
    std::unique_ptr<RegKey> mMachine;
    std::unique_ptr<RegKey> mUsers;
    bool mDirty = false;
};

} // namespace sim
