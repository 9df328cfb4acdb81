#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace parvela::testing {

/// Sets a variable of the environment for the time it lives.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* old = getenv(name)) old_ = old;
        set(value);
    }
    ~Variable() { set(old_ ? old_->c_str() : nullptr); }
    void set(const char* value) const {
        if (value) {
            setenv(name_, value, 1);
        } else {
            unsetenv(name_);
        }
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

}  // namespace parvela::testing
