#pragma once
#include <cstdint>
#include <memory>
#include <string>

namespace corvan {

class clsRegistry;

// Facts about the machine and the user. The Windows version is read once,
// when the object is made; everything else is asked at each call.
class clsWindowTools {
public:
    clsWindowTools();
    ~clsWindowTools();
    clsWindowTools(const clsWindowTools&) = delete;
    clsWindowTools& operator=(const clsWindowTools&) = delete;

    std::string VersionName() const;  // the product name without "Microsoft"
    std::string VersionNo() const;    // major "." minor, e.g. "5.1"
    std::string ServicePack() const;  // e.g. "Service Pack 2"; empty when none
    std::string BuildNo() const;      // low 16 bits of the build, decimal

    std::string UserName() const;
    std::string ComputerName() const;
    std::string UserDNSDomain() const;
    std::string Domain() const;
    std::string SystemDrive() const;  // always "C:\"
    std::string CommandShell() const;
    std::string WindowsDirectory() const;  // with one trailing "\"
    std::string SystemRoot() const;        // with one trailing "\"
    std::string ProgramFiles() const;      // with one trailing "\"
    std::string WindowsSystem32() const;   // with one trailing "\"
    bool IsAdmin() const;
    std::string GenerateGUID() const;
    std::string HomeDrive() const;  // the variable and "\", "C:\" when it cannot be read

private:
    clsRegistry& Registry() const;
    std::string ProductName() const;

    int32_t platformId_ = 0;
    std::string versionName_, versionNo_, servicePack_, buildNo_;
    mutable std::unique_ptr<clsRegistry> registry_;
};

}  // namespace corvan
