#pragma once
#include <memory>
#include <string>

#include "common/desktop.h"

namespace corvan {

class clsRegistry;
class clsShell;
class clsWindowTools;

// What the security configurator tells its owner: one text per step.
class clsCorvanSecurityEvents {
public:
    virtual ~clsCorvanSecurityEvents() = default;
    virtual void StatusMessageChange(const std::string& Message) = 0;
};

// Opens the client's folders to every user (cacls.exe) and writes the
// browser trust settings. Reports only through its event; never throws.
class clsCorvanSecurity {
public:
    explicit clsCorvanSecurity(Desktop& desktop, clsCorvanSecurityEvents* listener = nullptr);
    ~clsCorvanSecurity();
    clsCorvanSecurity(const clsCorvanSecurity&) = delete;
    clsCorvanSecurity& operator=(const clsCorvanSecurity&) = delete;

    void SetListener(clsCorvanSecurityEvents* listener) { listener_ = listener; }

    // Grants Everyone full control of the secured folders and the root
    // folder, and of the files directly in them.
    void SetXPSP2SecurityConfig();
    // Writes the trust table, line by line, reporting each line.
    void SetRegistryTrustConfig();

private:
    void Raise(const std::string& message);
    // One cacls.exe run; true when the program started.
    bool Grant(const std::string& commandLine);

    clsWindowTools& Tools();
    clsShell& Shell();
    clsRegistry& Registry();

    Desktop& desktop_;
    clsCorvanSecurityEvents* listener_;
    // Made on first use and kept for the object's life.
    std::unique_ptr<clsWindowTools> tools_;
    std::unique_ptr<clsShell> shell_;
    std::unique_ptr<clsRegistry> registry_;
};

}  // namespace corvan
