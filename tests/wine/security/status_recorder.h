#pragma once
#include <string>
#include <vector>

#include "security/clsCorvanSecurity.h"

namespace security_tests {

// Keeps every status the configurator raises, in order.
class StatusRecorder : public corvan::clsCorvanSecurityEvents {
public:
    void StatusMessageChange(const std::string& Message) override { messages.push_back(Message); }
    std::vector<std::string> messages;
};

}  // namespace security_tests
