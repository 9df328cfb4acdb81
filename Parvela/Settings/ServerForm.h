#pragma once

#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/ServerConfig.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace parvela {

/// What there is to say about an address while it is typed.
struct AddressCheck {
    enum class Verdict {
        empty,    ///< nothing was typed
        invalid,  ///< not an address; must not be used
        usable,
        exposed,  ///< usable, but what is sent there can be read on the way
    };

    Verdict verdict = Verdict::empty;
    /// What to do, or how the text is understood, in one English sentence. Empty when it goes without saying.
    std::string message;

    bool isUsable() const noexcept { return verdict == Verdict::usable || verdict == Verdict::exposed; }
    bool operator==(const AddressCheck&) const = default;
};

AddressCheck checkAddress(std::string_view typed);

/// The choice of a server while it is made: what is typed is kept, and takes effect only when it makes sense.
class ServerForm {
public:
    /// Starts with what the preferences hold: typed addresses that could not be used are there again.
    explicit ServerForm(Preferences preferences);

    /// The mode chosen, which need not be in force yet.
    ServerConfig::Mode mode() const noexcept { return mode_; }
    const std::string& appURL() const noexcept { return appURL_; }
    const std::string& apiURL() const noexcept { return apiURL_; }

    void setMode(ServerConfig::Mode mode) noexcept { mode_ = mode; }
    void setAppURL(std::string typed) { appURL_ = std::move(typed); }
    void setApiURL(std::string typed) { apiURL_ = std::move(typed); }

    AddressCheck appCheck() const;
    /// An empty API site is fine: the web app names its own when it links this device.
    AddressCheck apiCheck() const;

    /// The mode and what it needs can be used.
    bool isUsable() const;
    /// What is chosen and typed differs from what was applied last.
    bool isChanged() const;

    /// Keeps what is typed over launches, beside what is in use.
    void keepDrafts() const;
    /// Stores the choice and tells the configuration that it gives; none, and nothing changes, while it is not usable.
    std::optional<ServerConfig> apply();
    /// Writes the addresses again as they were typed. For whoever has stored a configuration made of them.
    void keepTyped() const;

private:
    Preferences preferences_;
    ServerConfig::Mode mode_;
    std::string appURL_;
    std::string apiURL_;
};

}  // namespace parvela
