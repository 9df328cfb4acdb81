#pragma once

#include "support/TemporaryFolder.h"

#include <ParvelaKit/GLibPtr.h>

#include <filesystem>
#include <string>
#include <vector>

#include <gio/gio.h>

namespace parvela::testing {

/// A child process, ended with its owner or with this program.
class Child {
public:
    Child() = default;
    /// `input` is all that the child reads. With `output`, its first line is waited for.
    Child(std::vector<std::string> arguments, const std::vector<std::string>& environment, const std::string& input,
          std::string* output = nullptr);
    Child(Child&& other) noexcept : process_(std::exchange(other.process_, -1)) {}
    Child& operator=(Child&& other) noexcept {
        end();
        process_ = std::exchange(other.process_, -1);
        return *this;
    }
    ~Child() { end(); }

    void end();

private:
    int process_ = -1;
};

/// A session bus without any service, in private folders. While it lives it is this process's session bus, so a test
/// program makes one only.
class PrivateBus {
public:
    PrivateBus();

    GDBusConnection* connection() const { return connection_.get(); }
    bool hasOwner(const std::string& name) const;
    void waitForOwner(const std::string& name, bool present) const;
    /// The answer's first value; empty when the call failed.
    VariantPtr call(const char* name, const char* path, const char* interface, const char* method,
                    GVariant* arguments) const;

    /// gnome-keyring with an unlocked "login" keyring.
    Child startKeyring() const;
    /// dunst, which shows notifications on this display.
    Child startNotifications(const std::string& display) const;

    const std::filesystem::path& folder() const { return folder_.path(); }

private:
    std::vector<std::string> environment() const;

    test::TemporaryFolder folder_;
    Child daemon_;
    std::string address_;
    Ref<GDBusConnection> connection_;
};

/// Another program on this process's session bus: a connection of its own, which owns `name`.
Ref<GDBusConnection> connectAs(const char* name);

}  // namespace parvela::testing
