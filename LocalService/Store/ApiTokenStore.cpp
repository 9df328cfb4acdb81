#include "Store/ApiTokenStore.h"

#include "Domain/Secrets.h"

#include <chrono>

namespace parvela::service {

namespace {

constexpr auto lastUsePrecision = std::chrono::minutes(1);
constexpr std::size_t secretLength = 40;
constexpr std::size_t hintLength = 5;

constexpr const char* selectColumns =
    "SELECT id, account_id, kind, name, hint, can_write, created_at, last_used_at, device_id FROM tokens ";

ApiToken readToken(const Statement& row) {
    return {.id = row.id<TokenId>(0),
            .account = row.id<PersonId>(1),
            .kind = row.text(2),
            .name = row.text(3),
            .hint = row.text(4),
            .canWrite = row.flag(5),
            .createdAt = row.instant(6),
            .lastUsedAt = row.optionalInstant(7),
            .deviceId = row.optionalText(8)};
}

}  // namespace

ApiTokenStore::Issued ApiTokenStore::issue(const NewToken& token) {
    const std::string secret = "tk_" + random_.alphanumeric(secretLength);
    ApiToken row{.account = token.account,
                 .kind = token.deviceId ? "device" : "personal",
                 .name = token.name,
                 .hint = secret.substr(0, hintLength) + "…",
                 .canWrite = token.canWrite,
                 .createdAt = clock_.now(),
                 .deviceId = token.deviceId};
    Transaction transaction(database_);
    if (token.deviceId) {
        database_.run("DELETE FROM tokens WHERE account_id = ? AND device_id = ?", token.account, *token.deviceId);
    }
    database_.run(
        "INSERT INTO tokens(hash, account_id, kind, name, hint, device_id, can_write, created_at) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
        Statement::Blob{secretHash(secret)}, row.account, row.kind, row.name, row.hint, token.deviceId, row.canWrite,
        row.createdAt);
    row.id = TokenId{database_.lastInsertedRow()};
    transaction.commit();
    return {std::move(row), secret};
}

std::optional<ApiToken> ApiTokenStore::findBySecret(std::string_view secret) {
    std::optional<ApiToken> token;
    {
        auto row = database_.query(std::string(selectColumns) + "WHERE hash = ?", Statement::Blob{secretHash(secret)});
        if (row.step()) token = readToken(row);
    }
    if (!token) return {};
    const Instant now = clock_.now();
    if (!token->lastUsedAt || now - *token->lastUsedAt >= lastUsePrecision) {
        database_.run("UPDATE tokens SET last_used_at = ? WHERE id = ?", now, token->id);
        token->lastUsedAt = now;
    }
    return token;
}

std::vector<ApiToken> ApiTokenStore::ofAccount(PersonId account) {
    std::vector<ApiToken> tokens;
    auto rows = database_.query(std::string(selectColumns) + "WHERE account_id = ? ORDER BY id DESC", account);
    while (rows.step()) tokens.push_back(readToken(rows));
    return tokens;
}

bool ApiTokenStore::revoke(TokenId id, PersonId account) {
    database_.run("DELETE FROM tokens WHERE id = ? AND account_id = ?", id, account);
    return database_.changedRows() > 0;
}

void ApiTokenStore::registerPush(PersonId account, const PushDevice& device) {
    database_.run(
        "INSERT INTO push_devices(token, account_id, platform, environment, bundle_id, registered_at) "
        "VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT(token) DO UPDATE SET account_id = excluded.account_id, "
        "platform = excluded.platform, environment = excluded.environment, bundle_id = excluded.bundle_id, "
        "registered_at = excluded.registered_at",
        device.token, account, device.platform, device.environment, device.bundleId, clock_.now());
}

void ApiTokenStore::unregisterPush(PersonId account, std::string_view pushToken) {
    database_.run("DELETE FROM push_devices WHERE token = ? AND account_id = ?", pushToken, account);
}

}  // namespace parvela::service
