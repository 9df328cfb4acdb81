#pragma once

#include <ParvelaKit/APIError.h>
#include <ParvelaKit/AsyncMutex.h>
#include <ParvelaKit/BridgeMessage.h>
#include <ParvelaKit/Clock.h>
#include <ParvelaKit/LinkInfo.h>
#include <ParvelaKit/ParvelaAPI.h>
#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/TokenStore.h>
#include <ParvelaKit/Transport.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace parvela {

/// Why a link or a token was not stored.
class LinkError {
public:
    enum class Case { keychain, wrongOrigin };

    static LinkError keychain(SecretStatus status) { return {Case::keychain, status}; }
    static LinkError wrongOrigin() { return {Case::wrongOrigin, SecretStatus::success}; }

    Case kind() const noexcept { return kind_; }
    /// What the keyring answered; success for the other case.
    SecretStatus status() const noexcept { return status_; }
    /// The user-facing text.
    std::string message() const;

    bool operator==(const LinkError&) const = default;

private:
    LinkError(Case kind, SecretStatus status) : kind_(kind), status_(status) {}

    Case kind_;
    SecretStatus status_;
};

/// Why a pasted text was not stored: it is no token (`badRequest`), or the keyring did not take it.
using PastedTokenError = std::variant<APIError, LinkError>;
std::string message(const PastedTokenError& error);

/// What became of the token of a link that was given up.
enum class Unlinked {
    revoked,     ///< it is worth nothing any more
    notRevoked,  ///< it is forgotten here, but the service could not be told
    nothingStored,
    stillKept,  ///< the keyring did not let go of it, or another one was stored meanwhile
    noAnswer,   ///< the keyring did not say whether there is one
};
/// The user-facing text.
std::string_view message(Unlinked outcome);

/// The user-facing text for a token that the keyring did not give.
std::string noTokenText(SecretStatus status);

/// The link between this device and the web app in force: its token, its record, and the API client made from both.
///
/// Copies share everything. Operations use the configuration that is in force when they are called; what changes while
/// they wait does not redirect them. Changes of the stored link are made one after another.
class ParvelaSession {
public:
    ParvelaSession(Preferences prefs, TokenStore tokens, Transport transport, std::shared_ptr<const Clock> clock)
        : prefs_(std::move(prefs)),
          tokens_(std::move(tokens)),
          transport_(std::move(transport)),
          clock_(std::move(clock)) {}

    const Preferences& prefs() const noexcept { return prefs_; }
    const TokenStore& tokens() const noexcept { return tokens_; }
    const Clock& clock() const noexcept { return *clock_; }
    ServerConfig server() const { return ServerConfig::current(prefs_); }

    /// Stores the token of a link and remembers its API site for the web app in force. `sender` is the page that asked,
    /// when it is known; a page of another origin is refused. A failure leaves the earlier link as it was.
    Task<Result<void, LinkError>> adoptLink(BridgeMessage::Link link, std::optional<Url> sender) const;
    /// Stores a personal access token for the API site in force.
    Task<Result<void, PastedTokenError>> savePastedToken(std::string text) const;
    /// Takes back the push registration and the token at the service, then forgets token and link here. Failures at the
    /// service do not keep the link. A link or token stored while the service was being asked stays.
    Task<Unlinked> unlink() const;

    std::optional<LinkInfo> linkInfo() const;
    /// A client for the API site in force; none without a stored token.
    Task<std::optional<ParvelaAPI>> client() const;
    /// The same, or why the keyring gave no token.
    Task<Result<ParvelaAPI, SecretStatus>> connect() const;

private:
    static Task<Result<void, LinkError>> adopt(ParvelaSession session, BridgeMessage::Link link,
                                               std::optional<Url> sender);
    static Task<Result<void, PastedTokenError>> savePasted(ParvelaSession session, std::string text);
    static Task<Unlinked> unlinkNow(ParvelaSession session);
    static Task<std::optional<ParvelaAPI>> makeClient(ParvelaSession session);
    static Task<Result<ParvelaAPI, SecretStatus>> connectNow(ParvelaSession session);

    Preferences prefs_;
    TokenStore tokens_;
    Transport transport_;
    std::shared_ptr<const Clock> clock_;
    AsyncMutex changing_;
};

}  // namespace parvela
