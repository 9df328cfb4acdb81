#pragma once

#include "Domain/Stores.h"

#include <ParvelaKit/Records.h>

#include <vector>

#include <nlohmann/json.hpp>

namespace parvela::service {

/// Turns rows into the records that clients know, for one person: names, counts and days are that person's.
class Answers {
public:
    Answers(Stores& stores, const Account& viewer, CivilDate today) : stores_(stores), viewer_(viewer), today_(today) {}

    static Person person(const Account& account);
    static std::vector<Person> people(const std::vector<Account>& accounts);

    Me me();
    PeopleResponse everybody();
    BoardsResponse boards();
    BoardDetail board(const BoardRow& board);
    BoardSummary summary(const BoardRow& board);
    HomeData::BoardGlance glance(const BoardRow& board);
    std::vector<Person> audience(BoardId board);

    TaskSummary task(const TaskRow& task);
    std::vector<TaskSummary> tasks(const std::vector<TaskId>& ids);
    /// The summary with what the web app shows on a card.
    nlohmann::json card(const TaskRow& task);
    nlohmann::json cards(const std::vector<TaskId>& ids);
    TaskDetail detail(const TaskRow& task, bool canEdit);

    NotificationItem notification(const NotificationRow& row);

private:
    static LabelTag tag(const LabelRow& label);
    static TaskDetail::Ref reference(const TaskStore::Reference& task);
    std::vector<Person> assignees(TaskId id);

    Stores& stores_;
    const Account& viewer_;
    CivilDate today_;
};

/// Milliseconds since 1970, as records carry moments.
double milliseconds(Instant moment);
nlohmann::json fileAnswer(const FileRow& file);

}  // namespace parvela::service
