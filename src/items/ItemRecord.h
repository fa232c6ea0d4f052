#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace corvan {

// One row of a packing list: the seventeen columns and the two flags the
// engine keeps beside them. The row text (UniformString) is the item's only
// serialised form, so its rules are kept exactly, odd ones included: reading
// never fails, a missing or unreadable column keeps its old value, and
// building normalises the install folder and file name.
class ItemRecord {
public:
    // Column 0 to 16, in row order.
    const std::string& OS() const { return os_; }
    void OS(const std::string& value) { os_ = value; }
    const std::string& Source() const { return source_; }
    void Source(const std::string& value) { source_ = value; }
    const std::string& FileName() const { return fileName_; }
    void FileName(const std::string& value) { fileName_ = value; }
    const std::string& Version() const { return version_; }
    void Version(const std::string& value) { version_ = value; }
    const std::string& ReleaseDate() const { return releaseDate_; }
    void ReleaseDate(const std::string& value) { releaseDate_ = value; }
    const std::string& CRC() const { return crc_; }
    void CRC(const std::string& value) { crc_ = value; }
    const std::string& Description() const { return description_; }
    void Description(const std::string& value) { description_ = value; }
    const std::string& Productname() const { return productname_; }
    void Productname(const std::string& value) { productname_ = value; }
    int32_t Flag() const { return flag_; }
    void Flag(int32_t value) { flag_ = value; }
    const std::string& InstallSwitch() const { return installSwitch_; }
    void InstallSwitch(const std::string& value) { installSwitch_ = value; }
    const std::string& UninstallSwitch() const { return uninstallSwitch_; }
    void UninstallSwitch(const std::string& value) { uninstallSwitch_ = value; }
    const std::string& LocalSource() const { return localSource_; }
    void LocalSource(const std::string& value) { localSource_ = value; }

    // Reading normalises the stored folder (trailing backslash, "C:\talo\"
    // when empty) and keeps the normalised text.
    const std::string& InstallFolder();
    void InstallFolder(const std::string& value) { installFolder_ = value; }
    // The folder as stored, without the getter's normalisation.
    const std::string& StoredInstallFolder() const { return installFolder_; }

    const std::string& InstallGroup() const { return installGroup_; }
    void InstallGroup(const std::string& value) { installGroup_ = value; }
    int16_t Register() const { return register_; }
    void Register(int16_t value) { register_ = value; }
    // The three Boolean fields hold the runtime's -1 for true and 0 for
    // false, whatever number they are handed: column 15 is written as -1.
    int16_t ExecutePackage() const { return executePackage_; }
    void ExecutePackage(int32_t value) { executePackage_ = AsBoolean(value); }

    // The stored name, or FileName while none is stored; stores nothing.
    std::string InstallFileName() const { return installFileName_.empty() ? fileName_ : installFileName_; }
    void InstallFileName(const std::string& value) { installFileName_ = value; }
    const std::string& StoredInstallFileName() const { return installFileName_; }

    // The engine's flags; not part of the row.
    int16_t IsDirty() const { return isDirty_; }
    void IsDirty(int32_t value) { isDirty_ = AsBoolean(value); }
    int16_t Removed() const { return removed_; }
    void Removed(int32_t value) { removed_ = AsBoolean(value); }

    // Parses one row into the item. Never fails.
    void UniformString(std::string_view row);
    // Builds the row text; normalises InstallFolder on the way.
    std::string UniformString();

    // The text after the last "." of FileName; empty when it has none.
    std::string GetFileExtention() const;

private:
    static int16_t AsBoolean(int32_t value) { return value != 0 ? -1 : 0; }

    std::string os_, source_, fileName_, version_, releaseDate_, crc_, description_, productname_;
    int32_t flag_ = 0;
    std::string installSwitch_, uninstallSwitch_, localSource_, installFolder_, installGroup_;
    int16_t register_ = 0;
    int16_t executePackage_ = 0;
    std::string installFileName_;
    int16_t isDirty_ = 0;
    int16_t removed_ = 0;
};

// The folder an item goes to when its row names none.
inline constexpr char kDefaultInstallFolder[] = "C:\\talo\\";

}  // namespace corvan
