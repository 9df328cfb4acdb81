#include "Store/TimerStore.h"

namespace parvela::service {

std::optional<TimerRow> TimerStore::ofPerson(PersonId person) {
    auto row = database_.query("SELECT task_id, started_at FROM timers WHERE account_id = ?", person);
    if (!row.step()) return {};
    return TimerRow{person, row.id<TaskId>(0), row.instant(1)};
}

std::optional<TimerRow> TimerStore::onTask(TaskId task, PersonId person) {
    auto row = database_.query(
        "SELECT account_id, started_at FROM timers WHERE task_id = ? ORDER BY account_id <> ?, started_at LIMIT 1",
        task, person);
    if (!row.step()) return {};
    return TimerRow{row.id<PersonId>(0), task, row.instant(1)};
}

void TimerStore::start(const TimerRow& timer) {
    database_.run("INSERT INTO timers(account_id, task_id, started_at) VALUES (?, ?, ?)", timer.person, timer.task,
                  timer.startedAt);
}

void TimerStore::remove(PersonId person) {
    database_.run("DELETE FROM timers WHERE account_id = ?", person);
}

}  // namespace parvela::service
