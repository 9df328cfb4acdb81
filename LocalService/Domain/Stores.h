#pragma once

#include "Store/AccountStore.h"
#include "Store/ApiTokenStore.h"
#include "Store/BoardStore.h"
#include "Store/ChecklistStore.h"
#include "Store/CommentStore.h"
#include "Store/FileStore.h"
#include "Store/NotificationStore.h"
#include "Store/TaskQueries.h"
#include "Store/TaskStore.h"
#include "Store/TimerStore.h"

namespace parvela::service {

/// All stores over one database.
struct Stores {
    Stores(Database& connection, const Clock& clock, Random& random)
        : database(connection),
          accounts(connection, clock, random),
          tokens(connection, clock, random),
          boards(connection, clock),
          tasks(connection, clock),
          queries(connection),
          checklists(connection),
          comments(connection, clock),
          files(connection, clock),
          timers(connection),
          notifications(connection, clock) {}

    Database& database;
    AccountStore accounts;
    ApiTokenStore tokens;
    BoardStore boards;
    TaskStore tasks;
    TaskQueries queries;
    ChecklistStore checklists;
    CommentStore comments;
    FileStore files;
    TimerStore timers;
    NotificationStore notifications;
};

}  // namespace parvela::service
