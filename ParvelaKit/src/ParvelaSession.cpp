#include <ParvelaKit/ParvelaSession.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/TokenFormat.h>

#include <fmt/format.h>

namespace parvela {

std::string LinkError::message() const {
    switch (kind_) {
        case Case::keychain:
            return fmt::format("Couldn't save to the Keychain (error {}).", static_cast<std::int32_t>(status_));
        case Case::wrongOrigin:
            return "Ignored a link request from a page that isn't the Parvela web app.";
    }
    return {};
}

std::string message(const PastedTokenError& error) {
    return std::visit([](const auto& one) { return one.message(); }, error);
}

std::string_view message(Unlinked outcome) {
    switch (outcome) {
        case Unlinked::revoked:
            return "Unlinked. The token was revoked.";
        case Unlinked::notRevoked:
            return "Unlinked. The service couldn't be told: revoke the token in Parvela → Settings → API and agents.";
        case Unlinked::nothingStored:
            return "No token was stored.";
        case Unlinked::stillKept:
            return "A token is still in the Keychain. Unlock the Keychain and unlink again.";
        case Unlinked::noAnswer:
            return "The Keychain doesn't answer, so a token may still be in it. Unlink again once it does.";
    }
    return "";
}

std::string noTokenText(SecretStatus status) {
    switch (status) {
        case SecretStatus::locked:
            return "The Keychain is locked, so the token in it can't be read. Unlock it and try again.";
        case SecretStatus::noService:
            return "No Keychain answers, so no token can be read. Start your keyring and try again.";
        case SecretStatus::failed:
            return "The Keychain doesn't answer as it should, so the token in it can't be read. Start your keyring "
                   "again.";
        case SecretStatus::success:
        case SecretStatus::notFound:
            break;
    }
    return APIError::missingToken().message();
}

Task<Result<void, LinkError>> ParvelaSession::adoptLink(BridgeMessage::Link link, std::optional<Url> sender) const {
    return adopt(*this, std::move(link), std::move(sender));
}

Task<Result<void, LinkError>> ParvelaSession::adopt(ParvelaSession session, BridgeMessage::Link link,
                                                    std::optional<Url> sender) {
    using Outcome = Result<void, LinkError>;
    const std::string origin = ServerConfig::origin(session.server().appURL);
    if (sender && ServerConfig::origin(*sender) != origin) co_return Outcome(Failure(LinkError::wrongOrigin()));

    auto turn = session.changing_.lock();
    const auto guard = co_await turn;
    auto saving = session.tokens_.save(link.token, link.apiBase);
    const SecretStatus status = co_await saving;
    if (status != SecretStatus::success) co_return Outcome(Failure(LinkError::keychain(status)));

    session.prefs_.setLinkInfo(origin,
                               LinkInfo{link.apiBase, std::move(link.workspaceId), std::move(link.workspaceName),
                                        std::move(link.userName), session.clock_->now()});
    session.prefs_.setLinkedApi(origin, link.apiBase.text());
    co_return Outcome();
}

Task<Result<void, PastedTokenError>> ParvelaSession::savePastedToken(std::string text) const {
    return savePasted(*this, std::move(text));
}

Task<Result<void, PastedTokenError>> ParvelaSession::savePasted(ParvelaSession session, std::string text) {
    using Outcome = Result<void, PastedTokenError>;
    const Url site = session.server().apiURL;
    std::string token = TokenFormat::normalize(text);
    if (!TokenFormat::isValid(token)) {
        co_return Outcome(Failure<PastedTokenError>(APIError::badRequest(std::string(TokenFormat::invalidMessage))));
    }

    auto turn = session.changing_.lock();
    const auto guard = co_await turn;
    auto saving = session.tokens_.save(std::move(token), site);
    const SecretStatus status = co_await saving;
    if (status != SecretStatus::success) co_return Outcome(Failure<PastedTokenError>(LinkError::keychain(status)));
    co_return Outcome();
}

Task<Unlinked> ParvelaSession::unlink() const {
    return unlinkNow(*this);
}

Task<Unlinked> ParvelaSession::unlinkNow(ParvelaSession session) {
    const ServerConfig server = session.server();
    auto reading = session.tokens_.read(server.apiURL);
    const auto token = co_await reading;
    auto outcome = Unlinked::revoked;
    if (token) {
        const ParvelaAPI api{server.apiURL, *token, session.transport_};
        if (const auto pushToken = session.prefs_.pushToken()) {
            auto unregistering = api.send<OKResponse>(Endpoint::unregisterPush({*pushToken}));
            co_await unregistering;
        }
        auto revoking = api.send<OKResponse>(Endpoint::revokeToken());
        const auto revoked = co_await revoking;
        // A token that the service does not know is worth nothing either.
        const auto unknown = APIFailure(APIError::unauthorized());
        if (!revoked && revoked.error() != unknown) outcome = Unlinked::notRevoked;
    }

    auto turn = session.changing_.lock();
    const auto guard = co_await turn;
    SecretStatus removed = SecretStatus::noService;
    // A keyring that does not answer is not asked three times.
    if (token || token.error() != SecretStatus::noService) {
        auto readingAgain = session.tokens_.read(server.apiURL);
        const auto current = co_await readingAgain;
        if (current && current != token) co_return Unlinked::stillKept;
        auto removing = session.tokens_.remove(server.apiURL);
        removed = co_await removing;
    }
    const std::string origin = ServerConfig::origin(server.appURL);
    session.prefs_.setLinkInfo(origin, std::nullopt);
    session.prefs_.setLinkedApi(origin, std::nullopt);
    switch (removed) {
        case SecretStatus::success:
            // One that could not be read before was not revoked.
            co_return token ? outcome : Unlinked::notRevoked;
        case SecretStatus::notFound:
            co_return token ? outcome : Unlinked::nothingStored;
        case SecretStatus::noService:
            co_return token ? Unlinked::stillKept : Unlinked::noAnswer;
        case SecretStatus::locked:
        case SecretStatus::failed:
            break;
    }
    co_return Unlinked::stillKept;
}

std::optional<LinkInfo> ParvelaSession::linkInfo() const {
    return prefs_.linkInfo(ServerConfig::origin(server().appURL));
}

Task<std::optional<ParvelaAPI>> ParvelaSession::client() const {
    return makeClient(*this);
}

Task<std::optional<ParvelaAPI>> ParvelaSession::makeClient(ParvelaSession session) {
    auto connecting = connectNow(std::move(session));
    auto api = co_await connecting;
    if (!api) co_return std::nullopt;
    co_return std::move(*api);
}

Task<Result<ParvelaAPI, SecretStatus>> ParvelaSession::connect() const {
    return connectNow(*this);
}

Task<Result<ParvelaAPI, SecretStatus>> ParvelaSession::connectNow(ParvelaSession session) {
    const Url site = session.server().apiURL;
    auto reading = session.tokens_.read(site);
    auto token = co_await reading;
    if (!token) co_return Failure(token.error());
    co_return ParvelaAPI{site, std::move(*token), session.transport_};
}

}  // namespace parvela
