#pragma once

#include "Domain/Changes.h"
#include "Domain/Secrets.h"
#include "Domain/Stores.h"
#include "Domain/TaskActions.h"
#include "Domain/Zone.h"
#include "Http/Router.h"
#include "Routes/Answers.h"

#include <optional>
#include <string>

namespace parvela::service {

/// What the service is told at its start, as far as its calls depend on it.
struct ServiceSettings {
    bool demo = false;        ///< the demo person may sign in without a password
    bool openSignUp = false;  ///< people may join after the first one without being added by the owner
    std::string webOrigin;    ///< such as "http://localhost:3100"
    std::string apiOrigin;    ///< such as "http://127.0.0.1:3213"
};

/// Everything that the calls work with, and the questions that many of them ask.
class Backend {
public:
    Backend(Database& database, const Clock& systemClock, Random& random, PasswordCost cost, Zone machine)
        : clock(systemClock),
          stores(database, systemClock, random),
          changes(systemClock),
          actions(stores, changes, systemClock),
          passwords(cost),
          machineZone(std::move(machine)) {}

    const Clock& clock;
    Stores stores;
    ChangeFeed changes;
    TaskActions actions;
    PasswordHasher passwords;
    Zone machineZone;
    ServiceSettings settings;

    Zone zoneOf(const Account& person) const;
    CivilDate today(const Account& person) const { return zoneOf(person).dayOf(clock.now()); }
    Answers answers(const Call& call) { return {stores, call.person(), today(call.person())}; }

    /// What the call's path names, when it exists and the caller may see it; else 404.
    Result<TaskRow, HttpError> task(const Call& call, std::size_t argument = 0,
                                    TaskStore::Deleted deleted = TaskStore::Deleted::hidden);
    Result<TaskRow, HttpError> task(TaskId id, const Account& viewer,
                                    TaskStore::Deleted deleted = TaskStore::Deleted::hidden);
    Result<BoardRow, HttpError> board(const Call& call, std::size_t argument = 0);
    /// A list of that board by id, or by name in any case; else 422.
    Result<ListId, HttpError> listOf(const BoardRow& board, const std::string& text);
    /// The query item "limit" from 1 to `most`; `usual` when absent.
    static Result<int, HttpError> limit(const Request& request, int usual, int most);
};

}  // namespace parvela::service
