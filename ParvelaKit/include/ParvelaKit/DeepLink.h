#pragma once

#include <ParvelaKit/Url.h>

#include <optional>
#include <string>
#include <variant>

namespace parvela {

/// Text that another program hands over to become a task.
struct SharedContent {
    std::string title;                       ///< not empty after trimming
    std::optional<std::string> description;  ///< not empty

    bool operator==(const SharedContent&) const = default;
};

/// What a URL of the "parvela" scheme asks the application to do. Such URLs may come from anywhere: a malformed one is
/// none.
struct DeepLink {
    struct AddTask {
        SharedContent content;
        bool operator==(const AddTask&) const = default;
    };
    struct OpenTask {
        std::string key;  ///< such as "TSK-42"
        bool operator==(const OpenTask&) const = default;
    };
    struct OpenPath {
        std::string path;  ///< of the web app, perhaps with a query; begins with exactly one "/"
        bool operator==(const OpenPath&) const = default;
    };
    struct QuickAdd {
        bool operator==(const QuickAdd&) const = default;
    };

    std::variant<AddTask, OpenTask, OpenPath, QuickAdd> action;

    bool operator==(const DeepLink&) const = default;

    Url url() const;
    /// The first of several query items of one name counts.
    static std::optional<DeepLink> parse(const Url& url);
};

}  // namespace parvela
