#pragma once

#include <ParvelaKit/Json/Fields.h>

#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// Somebody in the workspace.
struct Person {
    std::string id;
    std::string name;
    std::string color;                  ///< of the avatar, as the web app writes colours
    std::optional<std::string> avatar;  ///< address of the picture
    std::optional<std::string> role;
    std::optional<std::string> email;

    bool operator==(const Person&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("id", &Person::id),       json::field("name", &Person::name),
                   json::field("color", &Person::color), json::field("avatar", &Person::avatar),
                   json::field("role", &Person::role),   json::field("email", &Person::email)};
};

/// Whose token it is, and in which workspace.
struct Me {
    struct Workspace {
        std::string id;
        std::string name;

        bool operator==(const Workspace&) const = default;
        static constexpr auto fields =
            std::tuple{json::field("id", &Workspace::id), json::field("name", &Workspace::name)};
    };

    std::string id;
    std::string name;
    std::string email;
    std::optional<Workspace> workspace;

    bool operator==(const Me&) const = default;
    static constexpr auto fields =
        std::tuple{json::field("id", &Me::id), json::field("name", &Me::name), json::field("email", &Me::email),
                   json::field("workspace", &Me::workspace)};
};

struct LabelTag {
    std::string id;
    std::string name;
    std::string tone;  ///< name of its colour

    bool operator==(const LabelTag&) const = default;
    static constexpr auto fields = std::tuple{json::field("id", &LabelTag::id), json::field("name", &LabelTag::name),
                                              json::field("tone", &LabelTag::tone)};
};

struct PeopleResponse {
    std::vector<Person> people;

    bool operator==(const PeopleResponse&) const = default;
    static constexpr auto fields = std::tuple{json::field("people", &PeopleResponse::people)};
};

}  // namespace parvela
