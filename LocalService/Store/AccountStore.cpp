#include "Store/AccountStore.h"

#include "Domain/Secrets.h"

#include <array>
#include <chrono>

namespace parvela::service {

namespace {

using namespace std::chrono_literals;

constexpr auto sessionLife = std::chrono::days(30);
/// A session in use is prolonged when this much of its life is over, rather than with every request.
constexpr auto sessionRenewal = std::chrono::days(1);
constexpr auto codeLife = 2min;
constexpr std::size_t secretLength = 43;  // 256 bits

constexpr std::array personColors = {"#3B82F6", "#E5484D", "#30A46C", "#F76808",
                                     "#8E4EC6", "#12A594", "#E93D82", "#AD7F58"};

constexpr const char* selectColumns = "SELECT id, name, email, color, role, time_zone FROM accounts ";

std::string select(const char* condition) {
    return std::string(selectColumns) + condition;
}

Account readAccount(const Statement& row) {
    return {.id = row.id<PersonId>(0),
            .name = row.text(1),
            .email = row.text(2),
            .color = row.text(3),
            .role = row.text(4),
            .timeZone = row.optionalText(5)};
}

}  // namespace

std::optional<Workspace> AccountStore::workspace() {
    auto row = database_.query("SELECT id, name FROM workspace");
    if (!row.step()) return {};
    return Workspace{row.id<WorkspaceId>(0), row.text(1)};
}

void AccountStore::createWorkspace(std::string_view name) {
    database_.run("INSERT INTO workspace(id, name, created_at) VALUES (1, ?, ?)", name, clock_.now());
}

PersonId AccountStore::create(const NewAccount& account) {
    std::int64_t already = 0;
    {
        auto row = database_.query("SELECT count(*) FROM accounts");
        if (row.step()) already = row.integer(0);
    }
    database_.run(
        "INSERT INTO accounts(name, email, password_hash, color, role, time_zone, created_at) VALUES (?, ?, ?, ?, ?, "
        "?, ?)",
        account.name, account.email, account.passwordHash,
        personColors[static_cast<std::size_t>(already) % personColors.size()], account.role, account.timeZone,
        clock_.now());
    return PersonId{database_.lastInsertedRow()};
}

bool AccountStore::isEmpty() {
    return !database_.query("SELECT 1 FROM accounts LIMIT 1").step();
}

std::optional<Account> AccountStore::find(PersonId id) {
    auto row = database_.query(select("WHERE id = ?"), id);
    if (!row.step()) return {};
    return readAccount(row);
}

std::optional<Account> AccountStore::findByEmail(std::string_view email) {
    auto row = database_.query(select("WHERE email = ?"), email);
    if (!row.step()) return {};
    return readAccount(row);
}

std::string AccountStore::passwordHash(PersonId id) {
    auto row = database_.query("SELECT password_hash FROM accounts WHERE id = ?", id);
    return row.step() ? row.text(0) : std::string();
}

void AccountStore::setTimeZone(PersonId id, const std::optional<std::string>& timeZone) {
    database_.run("UPDATE accounts SET time_zone = ? WHERE id = ?", timeZone, id);
}

std::vector<Account> AccountStore::people() {
    std::vector<Account> people;
    auto rows = database_.query(select("ORDER BY id"));
    while (rows.step()) people.push_back(readAccount(rows));
    return people;
}

std::string AccountStore::openSession(PersonId id) {
    const std::string secret = random_.alphanumeric(secretLength);
    const Instant now = clock_.now();
    database_.run("INSERT INTO sessions(hash, account_id, created_at, expires_at) VALUES (?, ?, ?, ?)",
                  Statement::Blob{secretHash(secret)}, id, now, now + sessionLife);
    return secret;
}

std::optional<Account> AccountStore::sessionAccount(std::string_view secret) {
    const std::string hash = secretHash(secret);
    const Instant now = clock_.now();
    PersonId id;
    Instant expires;
    {
        auto row = database_.query("SELECT account_id, expires_at FROM sessions WHERE hash = ? AND expires_at > ?",
                                   Statement::Blob{hash}, now);
        if (!row.step()) return {};
        id = row.id<PersonId>(0);
        expires = row.instant(1);
    }
    if (expires < now + sessionLife - sessionRenewal) {
        database_.run("UPDATE sessions SET expires_at = ? WHERE hash = ?", now + sessionLife, Statement::Blob{hash});
    }
    return find(id);
}

void AccountStore::closeSession(std::string_view secret) {
    database_.run("DELETE FROM sessions WHERE hash = ?", Statement::Blob{secretHash(secret)});
}

std::string AccountStore::issueHandoffCode(PersonId id) {
    const std::string code = random_.alphanumeric(secretLength);
    database_.run("INSERT INTO handoff_codes(hash, account_id, expires_at) VALUES (?, ?, ?)",
                  Statement::Blob{secretHash(code)}, id, clock_.now() + codeLife);
    return code;
}

std::optional<PersonId> AccountStore::redeemHandoffCode(std::string_view code) {
    auto row = database_.query("DELETE FROM handoff_codes WHERE hash = ? RETURNING account_id, expires_at",
                               Statement::Blob{secretHash(code)});
    std::optional<PersonId> id;
    while (row.step()) {
        if (row.instant(1) > clock_.now()) id = row.id<PersonId>(0);
    }
    return id;
}

void AccountStore::removeExpired() {
    const Instant now = clock_.now();
    database_.run("DELETE FROM sessions WHERE expires_at <= ?", now);
    database_.run("DELETE FROM handoff_codes WHERE expires_at <= ?", now);
}

}  // namespace parvela::service
