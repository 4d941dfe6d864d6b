#pragma once

#include "platform/System.h"

#include <cstdlib>
#include <string>

namespace qorl::testing {

/// Sets an entry of the environment for one scope; null takes it away.
class EnvironmentScope {
public:
    EnvironmentScope(const char* name, const char* value)
        : name_(name), had_(platform::getEnvironment(name, earlier_)) {
        set(value);
    }
    ~EnvironmentScope() { set(had_ ? earlier_.c_str() : nullptr); }
    EnvironmentScope(const EnvironmentScope&) = delete;
    EnvironmentScope& operator=(const EnvironmentScope&) = delete;

private:
    void set(const char* value) {
        if (value)
            setenv(name_, value, 1);
        else
            unsetenv(name_);
    }

    const char* name_;
    std::string earlier_;
    bool had_;
};

} // namespace qorl::testing
