#include "Settings/ServerForm.h"

#include <ParvelaKit/Text.h>

#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

using Verdict = AddressCheck::Verdict;

/// Typed addresses that are not in force, kept beside the ones that are.
constexpr std::string_view appDraftKey = "customAppURLDraft";
constexpr std::string_view apiDraftKey = "customAPIURLDraft";

std::optional<std::string> draft(const Preferences& preferences, std::string_view key) {
    const auto stored = preferences.store().get(key);
    const auto* const text = stored ? std::get_if<std::string>(&*stored) : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

void setDraft(const Preferences& preferences, std::string_view key, const std::string& typed,
              const std::optional<std::string>& inForce) {
    if (typed == inForce.value_or("")) {
        preferences.store().remove(key);
    } else {
        preferences.store().set(key, typed);
    }
}

std::optional<std::string> someText(const std::string& typed) {
    return trimmed(typed).empty() ? std::nullopt : std::optional(typed);
}

AddressCheck invalid(std::string message) {
    return {Verdict::invalid, std::move(message)};
}

AddressCheck whyInvalid(std::string_view typed) {
    const auto schemeEnd = typed.find("://");
    if (schemeEnd != std::string_view::npos) {
        const std::string scheme = asciiLowercased(typed.substr(0, schemeEnd));
        if (scheme != "https" && scheme != "http") {
            return invalid("The address has to start with https:// or http://.");
        }
        if (trimmed(typed.substr(schemeEnd + 3)).empty()) {
            return invalid("Type the server's name behind the “://”.");
        }
    }
    if (const auto mark = typed.find_first_of("?#"); mark != std::string_view::npos) {
        return invalid(fmt::format("Leave out the “{}” and what follows it.", typed[mark]));
    }
    if (typed.find_first_of(" \t\r\n") != std::string_view::npos) {
        return invalid("An address has no spaces. Leave them out.");
    }
    return invalid("This isn't an address of a server. It looks like https://parvela.example.com.");
}

}  // namespace

AddressCheck checkAddress(std::string_view text) {
    const std::string_view typed = trimmed(text);
    if (typed.empty()) return {};
    const auto url = ServerConfig::normalize(typed);
    if (!url) return whyInvalid(typed);
    if (!ServerConfig::allowsToken(*url)) {
        return {Verdict::exposed,
                "With http://, others on the network can read and change what is sent. Use https:// where the server "
                "offers it."};
    }
    return {Verdict::usable, typed.contains("://") ? std::string() : fmt::format("Used as {}.", url->text())};
}

ServerForm::ServerForm(Preferences preferences)
    : preferences_(std::move(preferences)),
      mode_(preferences_.serverMode()),
      appURL_(draft(preferences_, appDraftKey).value_or(preferences_.customAppURL().value_or(""))),
      apiURL_(draft(preferences_, apiDraftKey).value_or(preferences_.customApiURL().value_or(""))) {
}

void ServerForm::keepDrafts() const {
    setDraft(preferences_, appDraftKey, appURL_, preferences_.customAppURL());
    setDraft(preferences_, apiDraftKey, apiURL_, preferences_.customApiURL());
}

AddressCheck ServerForm::appCheck() const {
    auto check = checkAddress(appURL_);
    if (check.verdict == Verdict::empty) {
        check.message = "Type the address of the web app, such as https://parvela.example.com.";
    }
    return check;
}

AddressCheck ServerForm::apiCheck() const {
    auto check = checkAddress(apiURL_);
    if (check.verdict == Verdict::empty) {
        check.message = "May stay empty: the web app names its API site when it links this Mac.";
    }
    return check;
}

bool ServerForm::isUsable() const {
    if (mode_ != ServerConfig::Mode::custom) return true;
    return appCheck().isUsable() && apiCheck().verdict != Verdict::invalid;
}

bool ServerForm::isChanged() const {
    if (mode_ != preferences_.serverMode()) return true;
    return mode_ == ServerConfig::Mode::custom &&
           (someText(appURL_) != preferences_.customAppURL() || someText(apiURL_) != preferences_.customApiURL());
}

std::optional<ServerConfig> ServerForm::apply() {
    keepDrafts();
    if (!isUsable()) return std::nullopt;
    preferences_.setServerMode(mode_);
    if (mode_ == ServerConfig::Mode::custom) keepTyped();
    return ServerConfig::current(preferences_);
}

void ServerForm::keepTyped() const {
    if (mode_ != ServerConfig::Mode::custom) return;
    preferences_.setCustomAppURL(someText(appURL_));
    preferences_.setCustomApiURL(someText(apiURL_));
    preferences_.store().remove(appDraftKey);
    preferences_.store().remove(apiDraftKey);
}

}  // namespace parvela
