#pragma once

#include "Domain/Random.h"
#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Bearer tokens of devices and of people's own programs, and the push registrations that go with them. Only hashes are
/// kept: a token is readable once, when it is issued.
class ApiTokenStore {
public:
    ApiTokenStore(Database& database, const Clock& clock, Random& random)
        : database_(database), clock_(clock), random_(random) {}

    struct NewToken {
        PersonId account;
        std::string name;
        std::optional<std::string> deviceId;  ///< a device's token replaces the one it had; none for a personal token
        bool canWrite = true;
    };
    struct Issued {
        ApiToken token;
        std::string secret;
    };
    Issued issue(const NewToken& token);

    /// The token with this secret. Notes the use, at most once a minute.
    std::optional<ApiToken> findBySecret(std::string_view secret);
    std::vector<ApiToken> ofAccount(PersonId account);
    /// False when the account has no such token.
    bool revoke(TokenId id, PersonId account);

    struct PushDevice {
        std::string token, platform, environment, bundleId;
    };
    void registerPush(PersonId account, const PushDevice& device);
    void unregisterPush(PersonId account, std::string_view pushToken);

private:
    Database& database_;
    const Clock& clock_;
    Random& random_;
};

}  // namespace parvela::service
