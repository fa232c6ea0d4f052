#pragma once
#include <string>

#include "common/desktop.h"

namespace corvan {

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

    void SetXPSP2SecurityConfig();
    void SetRegistryTrustConfig();

private:
    Desktop& desktop_;
    clsCorvanSecurityEvents* listener_;
};

}  // namespace corvan
