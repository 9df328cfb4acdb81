#include "Domain/Demo.h"

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace parvela::service::demo {

namespace {

struct PersonSeed {
    const char *handle, *name;
};
constexpr std::array seededPeople = {
    PersonSeed{"robin", "Robin Hale"}, PersonSeed{"rosa", "Rosa Diaz"},   PersonSeed{"sam", "Sam Okafor"},
    PersonSeed{"mina", "Mina Park"},   PersonSeed{"jonas", "Jonas Lind"},
};

struct LabelSeed {
    const char *name, *tone;
};

struct TaskSeed {
    const char* title;
    int list;                     ///< index among the board's lists
    std::optional<int> due = {};  ///< days from today
    const char* time = nullptr;
    int priority = 0;
    std::vector<const char*> people = {};
    std::vector<const char*> labels = {};
    const char* description = "";
};

struct BoardSeed {
    const char *name, *icon, *color, *section, *description;
    bool starred;
    std::vector<const char*> lists;  ///< the last one takes what is done
    std::vector<LabelSeed> labels;
    std::vector<TaskSeed> tasks;
};

std::vector<BoardSeed> boards() {
    return {
        {"Website relaunch",
         "rocket",
         "#3B82F6",
         "Projects",
         "Everything for the new site, from the first sketch to the day it goes live.",
         true,
         {"Backlog", "In progress", "Review", "Done"},
         {{"Design", "purple"},
          {"Copy", "yellow"},
          {"Frontend", "blue"},
          {"Design Review", "pink"},
          {"Blocked", "red"}},
         {{"Write brief for the landing page",
           1,
           0,
           "15:00",
           3,
           {"robin"},
           {"Copy"},
           "One page: who it is for, what they should feel, what they should do next.\n\nKeep it under 400 words."},
          {"Choose the hero illustration",
           1,
           -2,
           nullptr,
           2,
           {"rosa", "robin"},
           {"Design"},
           "Three drafts are attached to the brief."},
          {"Accessibility pass on the navigation",
           2,
           1,
           nullptr,
           3,
           {"sam"},
           {"Frontend"},
           "Keyboard order, focus rings, landmarks, and a run with a screen reader."},
          {"Agree on the colour palette", 2, 0, "11:30", 0, {"mina", "robin"}, {"Design", "Design Review"}, ""},
          {"Set up redirects for old addresses", 0, 6, nullptr, 1, {"sam"}, {"Frontend"}, ""},
          {"Collect customer quotes", 0, 3, nullptr, 0, {"jonas"}, {"Copy"}, "At least five, from different trades."},
          {"Photograph the workshop", 0, 12, "09:00", 0, {"mina"}, {"Design"}, ""},
          {"Plan the launch announcement", 0, std::nullopt, nullptr, 2, {"robin", "jonas"}, {}, ""},
          {"Measure page weight on a slow phone", 0, std::nullopt, nullptr, 1, {}, {"Frontend"}, ""},
          {"Pick a typeface", 3, -5, nullptr, 0, {"mina"}, {"Design"}, ""},
          {"Interview three visitors", 3, 0, nullptr, 0, {"robin"}, {}, ""}}},
        {"Product roadmap",
         "flag",
         "#30A46C",
         "Projects",
         "What we build next, and why.",
         false,
         {"Ideas", "Next", "Building", "Shipped"},
         {{"Feature", "green"}, {"Research", "teal"}, {"Design", "purple"}, {"Bug", "red"}},
         {{"Calendar view: drag to reschedule", 2, 4, nullptr, 3, {"sam", "robin"}, {"Feature", "Design"}, ""},
          {"Keyboard shortcuts for moving cards",
           2,
           -1,
           nullptr,
           2,
           {"robin"},
           {"Feature"},
           "J and K to walk, M to move, and a sheet that lists them all."},
          {"Offline drafts are lost on reload", 1, 0, "17:00", 4, {"sam"}, {"Bug"}, "Reported twice this week."},
          {"Talk to teams that use checklists daily", 1, 2, "10:00", 1, {"rosa"}, {"Research"}, ""},
          {"Recurring tasks", 0, std::nullopt, nullptr, 2, {}, {"Feature"}, ""},
          {"Templates for new boards", 0, std::nullopt, nullptr, 1, {}, {"Feature"}, ""},
          {"Compare three ways to show time spent", 0, 9, nullptr, 0, {"mina"}, {"Research", "Design"}, ""},
          {"Dark mode", 3, -10, nullptr, 0, {"sam"}, {"Feature"}, ""}}},
        {"Team operations",
         "bag",
         "#F76808",
         "Team",
         "Hiring, budget and the things that keep the lights on.",
         false,
         {"To do", "Waiting", "Done"},
         {{"Finance", "yellow"}, {"Hiring", "blue"}, {"Office", "gray"}},
         {{"Approve the travel budget", 0, -4, nullptr, 3, {"robin"}, {"Finance"}, ""},
          {"Second interview with Alex", 0, 1, "14:00", 2, {"rosa", "robin"}, {"Hiring"}, ""},
          {"Renew the insurance", 1, 5, nullptr, 2, {"jonas"}, {"Finance"}, "Waiting for the broker's offer."},
          {"Order two standing desks", 0, 7, nullptr, 0, {"jonas"}, {"Office"}, ""},
          {"Prepare the quarterly review", 0, 13, nullptr, 1, {"robin"}, {"Finance"}, ""},
          {"Welcome pack for new colleagues", 2, -7, nullptr, 0, {"rosa"}, {"Hiring"}, ""}}},
        {"Personal",
         "leaf",
         "#8E4EC6",
         "Mine",
         "",
         true,
         {"To do", "Done"},
         {{"Errand", "orange"}, {"Reading", "teal"}},
         {{"Book the dentist", 0, 0, nullptr, 1, {"robin"}, {"Errand"}, ""},
          {"Return library books", 0, -1, nullptr, 0, {"robin"}, {"Errand", "Reading"}, ""},
          {"Plan the weekend hike", 0, 2, nullptr, 0, {"robin"}, {}, ""},
          {"Read the chapter on estimation", 0, std::nullopt, nullptr, 0, {"robin"}, {"Reading"}, ""}}},
    };
}

class Seeder {
public:
    Seeder(Stores& stores, TaskActions& actions, const Clock& clock, CivilDate today)
        : stores_(stores), actions_(actions), clock_(clock), today_(today) {}

    void people(const PasswordHasher& passwords) {
        for (const auto& [handle, name] : seededPeople) {
            const bool owner = people_.empty();
            const PersonId id = stores_.accounts.create({.name = name,
                                                         .email = std::string(handle) + "@parvela.example",
                                                         .passwordHash = owner ? passwords.hash(demoPassword) : "",
                                                         .role = owner ? "owner" : "member",
                                                         .timeZone = std::nullopt});
            people_.emplace(handle, *stores_.accounts.find(id));
        }
    }

    void board(const BoardSeed& seed) {
        const Account& robin = people_.at("robin");
        const BoardId id = stores_.boards.create(seed.name, robin.id);
        BoardStore::Edit edit{
            .description = seed.description, .icon = seed.icon, .color = seed.color, .section = seed.section};
        edit.isPrivate = std::string_view(seed.section) == "Mine";
        edit.starred = seed.starred;
        stores_.boards.edit(id, edit, robin.id);
        std::vector<ListId> lists;
        for (const char* name : seed.lists) lists.push_back(stores_.boards.addList(id, name));
        stores_.boards.setCompletionList(id, lists.back());
        std::map<std::string, LabelId> labels;
        for (const auto& [name, tone] : seed.labels) labels.emplace(name, stores_.boards.addLabel(id, name, tone));

        for (const TaskSeed& task : seed.tasks) {
            const ListId list = lists.at(static_cast<std::size_t>(task.list));
            const TaskId added = stores_.tasks.create(
                {.board = id,
                 .list = list,
                 .title = task.title,
                 .description = task.description,
                 .priority = task.priority,
                 .dueDate = task.due ? std::optional(today_.addingDays(*task.due).text()) : std::nullopt,
                 .dueTime = task.time ? std::optional<std::string>(task.time) : std::nullopt,
                 .creator = robin.id});
            std::vector<PersonId> assignees;
            for (const char* handle : task.people) assignees.push_back(people_.at(handle).id);
            stores_.tasks.setAssignees(added, assignees);
            std::vector<LabelId> labelIds;
            for (const char* name : task.labels) labelIds.push_back(labels.at(name));
            stores_.tasks.setLabels(added, labelIds);
            stores_.tasks.addActivity(added, robin.id, "created this task");
            if (list == lists.back()) stores_.tasks.setCompletion(added, clock_.now(), lists.front());
            tasks_.emplace(task.title, added);
        }
    }

    void details() {
        checklist("Write brief for the landing page", "Before it goes out",
                  {{"Collect what we know about visitors", true},
                   {"Draft", true},
                   {"Read it aloud", false},
                   {"Send to Rosa", false}});
        checklist("Accessibility pass on the navigation", "Checks",
                  {{"Tab order", true}, {"Visible focus", false}, {"Landmarks", false}});
        subtask("Plan the launch announcement", "Write the newsletter");
        subtask("Plan the launch announcement", "Line up two partner posts");
        stores_.tasks.addBlocker(tasks_.at("Plan the launch announcement"),
                                 tasks_.at("Write brief for the landing page"));
        stores_.tasks.setEstimate(tasks_.at("Write brief for the landing page"), 120);
        stores_.tasks.addTracked(tasks_.at("Write brief for the landing page"), std::int64_t{35} * 60 * 1000);

        comment("rosa", "Choose the hero illustration",
                "I like the second draft. The first one feels busy on a phone.");
        comment("sam", "Accessibility pass on the navigation",
                "Focus was lost after closing the menu. Fixed, please look again.");
        comment("mina", "Agree on the colour palette", "@Robin the green fails contrast on white. Shall I darken it?");
        comment("rosa", "Second interview with Alex", "Room 2 is booked.");
        edit("rosa", "Second interview with Alex", {.priority = 3});
        edit("sam", "Interview three visitors", {.description = "Notes are in the team folder."});
    }

private:
    struct Item {
        const char* text;
        bool done;
    };

    void checklist(const char* task, const char* title, const std::vector<Item>& items) {
        const ChecklistId id = stores_.checklists.add(tasks_.at(task), title);
        for (const Item& item : items) {
            stores_.checklists.setItemDone(stores_.checklists.addItem(id, item.text), item.done);
        }
    }

    void subtask(const char* parent, const char* title) {
        const TaskRow row = *stores_.tasks.find(tasks_.at(parent));
        stores_.tasks.create(
            {.board = row.board, .list = row.list, .parent = row.id, .title = title, .creator = row.createdBy});
    }

    void comment(const char* person, const char* task, const char* body) {
        actions_.comment(people_.at(person), *stores_.tasks.find(tasks_.at(task)), body);
    }

    void edit(const char* person, const char* task, const TaskActions::Edit& change) {
        // The examples name only people and labels that they have made.
        if (!actions_.edit(people_.at(person), *stores_.tasks.find(tasks_.at(task)), change)) std::abort();
    }

    Stores& stores_;
    TaskActions& actions_;
    const Clock& clock_;
    CivilDate today_;
    std::map<std::string, Account> people_;
    std::map<std::string, TaskId> tasks_;
};

}  // namespace

void seed(Stores& stores, TaskActions& actions, const PasswordHasher& passwords, const Clock& clock, CivilDate today) {
    if (!stores.accounts.isEmpty()) return;
    Transaction transaction(stores.database);
    stores.accounts.createWorkspace("Harbour Studio");
    Seeder seeder(stores, actions, clock, today);
    seeder.people(passwords);
    for (const BoardSeed& board : boards()) seeder.board(board);
    seeder.details();
    transaction.commit();
}

}  // namespace parvela::service::demo
