#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenStore.h>

#include <fmt/format.h>

namespace parvela {

namespace {

SecretItem tokenItem(const Url& apiURL, std::optional<std::string> group) {
    return {"app.parvela.token", TokenStore::accountKey(apiURL), std::move(group)};
}

using Token = Result<std::string, SecretStatus>;

Task<Token> readText(std::shared_ptr<SecretStore> secrets, SecretItem item) {
    auto reading = secrets->read(std::move(item));
    auto secret = co_await reading;
    if (secret && !isValidUtf8(*secret)) co_return Failure(SecretStatus::failed);
    co_return secret;
}

Task<Token> readToken(std::shared_ptr<SecretStore> secrets, Url apiURL, std::optional<std::string> group) {
    Token shared = Failure(SecretStatus::notFound);
    if (group) {
        auto reading = readText(secrets, tokenItem(apiURL, group));
        shared = co_await reading;
        if (shared || shared.error() == SecretStatus::noService) co_return shared;
    }
    auto reading = readText(secrets, tokenItem(apiURL, std::nullopt));
    auto own = co_await reading;
    co_return own || own.error() != SecretStatus::notFound ? own : shared;
}

Task<SecretStatus> saveToken(std::shared_ptr<SecretStore> secrets, AsyncMutex writing, std::string token, Url apiURL,
                             std::optional<std::string> group) {
    const std::string label = "Parvela API token";
    auto turn = writing.lock();
    const auto guard = co_await turn;

    auto writingOwn = writeSecret(secrets, tokenItem(apiURL, std::nullopt), token, label);
    const SecretStatus own = co_await writingOwn;
    if (!group) co_return own;

    auto writingShared = writeSecret(secrets, tokenItem(apiURL, group), token, label);
    const SecretStatus shared = co_await writingShared;
    co_return own == SecretStatus::success ? own : shared;
}

Task<SecretStatus> removeToken(std::shared_ptr<SecretStore> secrets, AsyncMutex writing, Url apiURL,
                               std::optional<std::string> group) {
    auto turn = writing.lock();
    const auto guard = co_await turn;

    if (group) {
        auto removingShared = secrets->remove(tokenItem(apiURL, group));
        co_await removingShared;
    }
    auto removingOwn = secrets->remove(tokenItem(apiURL, std::nullopt));
    const SecretStatus own = co_await removingOwn;
    co_return own;
}

}  // namespace

Task<SecretStatus> writeSecret(std::shared_ptr<SecretStore> secrets, SecretItem item, std::string secret,
                               std::string label) {
    auto updating = secrets->update(item, secret);
    SecretStatus status = co_await updating;
    if (status == SecretStatus::notFound) {
        auto adding = secrets->add(std::move(item), std::move(secret), std::move(label));
        status = co_await adding;
    }
    co_return status;
}

Task<Result<std::string, SecretStatus>> TokenStore::read(Url apiURL) const {
    return readToken(secrets_, std::move(apiURL), accessGroup_);
}

Task<SecretStatus> TokenStore::save(std::string token, Url apiURL) const {
    return saveToken(secrets_, writing_, std::move(token), std::move(apiURL), accessGroup_);
}

Task<SecretStatus> TokenStore::remove(Url apiURL) const {
    return removeToken(secrets_, writing_, std::move(apiURL), accessGroup_);
}

std::string TokenStore::accountKey(const Url& apiURL) {
    const std::string host = apiURL.lowercaseHost();
    const std::string key = host.empty() ? "default" : host;
    return apiURL.port() ? fmt::format("{}:{}", key, *apiURL.port()) : key;
}

}  // namespace parvela
