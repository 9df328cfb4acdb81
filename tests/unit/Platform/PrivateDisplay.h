#pragma once

#include "PrivateBus.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace parvela::testing {

/// An X display of its own, without a window manager, which is this process's display while it lives.
class PrivateDisplay {
public:
    PrivateDisplay() {
        if (name_.size() < 2) throw std::runtime_error("Xvfb did not start");
        setenv("DISPLAY", name_.c_str(), 1);
    }
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;
    ~PrivateDisplay() { unsetenv("DISPLAY"); }

    const std::string& name() const { return name_; }

private:
    std::string name_ = ":";
    Child server_{{"Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"},
                  {"PATH=" + std::string(getenv("PATH"))},
                  "",
                  &name_};
};

}  // namespace parvela::testing
