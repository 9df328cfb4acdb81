#pragma once

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace parvela::testing {

/// An X display of its own, without a window manager, which is this process's display while it lives.
class PrivateDisplay {
public:
    PrivateDisplay() {
        int number[2];
        if (pipe(number) != 0) throw std::runtime_error("no pipe");
        server_ = fork();
        if (server_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const std::string descriptor = std::to_string(number[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "640x480x24", "-nolisten", "tcp",
                   "-noreset", nullptr);
            _exit(127);
        }
        close(number[1]);
        name_ = ":";
        for (char c = 0; read(number[0], &c, 1) == 1 && c != '\n';) name_ += c;
        close(number[0]);
        if (name_.size() < 2) throw std::runtime_error("Xvfb did not start");
        setenv("DISPLAY", name_.c_str(), 1);
    }
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;
    ~PrivateDisplay() {
        unsetenv("DISPLAY");
        kill(server_, SIGTERM);
        waitpid(server_, nullptr, 0);
    }

    const std::string& name() const { return name_; }

private:
    pid_t server_ = -1;
    std::string name_;
};

}  // namespace parvela::testing
