#pragma once

#include <ParvelaKit/Json/Fields.h>
#include <ParvelaKit/Records/Tasks.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// The person's home page: what is due, and a glance at every board.
struct HomeData {
    struct Workspace {
        std::string id;
        std::string name;
        std::string role;
        std::string plan;

        bool operator==(const Workspace&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &Workspace::id), json::field("name", &Workspace::name),
                       json::field("role", &Workspace::role), json::field("plan", &Workspace::plan)};
    };

    struct Me {
        std::string id;
        std::string name;
        std::string color;
        std::optional<std::string> avatar;
        std::string email;

        bool operator==(const Me&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &Me::id), json::field("name", &Me::name), json::field("color", &Me::color),
                       json::field("avatar", &Me::avatar), json::field("email", &Me::email)};
    };

    struct Counts {
        std::int64_t overdue = 0;
        std::int64_t today = 0;
        std::int64_t upcoming = 0;
        std::int64_t later = 0;
        std::int64_t doneToday = 0;

        bool operator==(const Counts&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("overdue", &Counts::overdue), json::field("today", &Counts::today),
                       json::field("upcoming", &Counts::upcoming), json::field("later", &Counts::later),
                       json::field("doneToday", &Counts::doneToday)};
    };

    struct BoardGlance {
        std::string id;
        std::string name;
        std::string icon;
        bool isPrivate = false;  ///< "private"
        bool starred = false;
        std::int64_t open = 0;
        std::int64_t done = 0;
        std::int64_t overdue = 0;

        bool operator==(const BoardGlance&) const = default;
        static constexpr auto fields = std::tuple{
            json::field("id", &BoardGlance::id),           json::field("name", &BoardGlance::name),
            json::field("icon", &BoardGlance::icon),       json::field("private", &BoardGlance::isPrivate),
            json::field("starred", &BoardGlance::starred), json::field("open", &BoardGlance::open),
            json::field("done", &BoardGlance::done),       json::field("overdue", &BoardGlance::overdue),
        };
    };

    std::string today;  ///< "YYYY-MM-DD"
    Workspace workspace;
    Me me;
    Counts counts;
    std::vector<TaskSummary> overdue;
    std::vector<TaskSummary> dueToday;
    std::vector<TaskSummary> upcoming;
    std::vector<TaskSummary> later;
    std::vector<BoardGlance> boards;
    std::int64_t unread = 0;

    bool operator==(const HomeData&) const = default;
    static constexpr auto fields = std::tuple{
        json::field("today", &HomeData::today),
        json::field("workspace", &HomeData::workspace),
        json::field("me", &HomeData::me),
        json::field("counts", &HomeData::counts),
        json::field("overdue", &HomeData::overdue),
        json::field("dueToday", &HomeData::dueToday),
        json::field("upcoming", &HomeData::upcoming),
        json::field("later", &HomeData::later),
        json::field("boards", &HomeData::boards),
        json::field("unread", &HomeData::unread),
    };
};

}  // namespace parvela
