#pragma once

#include "Domain/Random.h"
#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// People, the workspace they share, and what proves who they are in a browser: sessions and one-time hand-over codes.
/// Session secrets and codes are stored as hashes only.
class AccountStore {
public:
    AccountStore(Database& database, const Clock& clock, Random& random)
        : database_(database), clock_(clock), random_(random) {}

    std::optional<Workspace> workspace();
    void createWorkspace(std::string_view name);

    struct NewAccount {
        std::string name;
        std::string email;
        std::string passwordHash;
        std::string role;
        std::optional<std::string> timeZone;
    };
    PersonId create(const NewAccount& account);
    bool isEmpty();
    std::optional<Account> find(PersonId id);
    /// E-mail addresses compare without regard to ASCII case.
    std::optional<Account> findByEmail(std::string_view email);
    std::string passwordHash(PersonId id);
    void setTimeZone(PersonId id, const std::optional<std::string>& timeZone);
    /// Everybody, in the order in which they joined.
    std::vector<Account> people();

    /// The new session's secret, which the browser keeps as its cookie.
    std::string openSession(PersonId id);
    std::optional<Account> sessionAccount(std::string_view secret);
    void closeSession(std::string_view secret);

    /// A code that signs one other browser in, once, within two minutes.
    std::string issueHandoffCode(PersonId id);
    std::optional<PersonId> redeemHandoffCode(std::string_view code);

    /// Forgets sessions and codes whose time is over.
    void removeExpired();

private:
    Database& database_;
    const Clock& clock_;
    Random& random_;
};

}  // namespace parvela::service
