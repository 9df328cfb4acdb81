#pragma once

#include "Store/Database.h"
#include "Store/Rows.h"

#include <optional>

namespace parvela::service {

/// The timers that run now, at most one for each person.
class TimerStore {
public:
    explicit TimerStore(Database& database) : database_(database) {}

    std::optional<TimerRow> ofPerson(PersonId person);
    /// One of the timers that run on the task, the person's own first.
    std::optional<TimerRow> onTask(TaskId task, PersonId person);
    void start(const TimerRow& timer);
    void remove(PersonId person);

private:
    Database& database_;
};

}  // namespace parvela::service
