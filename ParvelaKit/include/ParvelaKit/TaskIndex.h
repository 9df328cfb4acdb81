#pragma once

#include <ParvelaKit/ParvelaIntents.h>
#include <ParvelaKit/Records/Tasks.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// The tasks and boards that are known on this machine, to be found by a few letters. Nothing is asked of the service.
///
/// Words are found without regard to case and accents, each anywhere in a task's key, title or board, in any order.
/// Tasks come in the order of how well they match: the key itself, a title that begins with the words, words that begin
/// words, the rest; then open ones first, then those due earlier.
class TaskIndex {
public:
    /// More are not kept, nor are letters of a title beyond `longestTitle` bytes.
    static constexpr std::size_t mostTasks = 20'000;
    static constexpr std::size_t longestTitle = 1024;
    /// Longer searches find nothing; further words are ignored.
    static constexpr std::size_t longestSearch = 1024;
    static constexpr std::size_t mostWords = 8;

    struct Entry {
        std::string key;
        std::string title;
        std::string board;
        std::optional<std::string> dueDate;
        std::optional<std::string> dueTime;
        bool done = false;

        bool operator==(const Entry&) const = default;
    };

    void replace(const std::vector<TaskSummary>& tasks, std::vector<BoardEntity> boards);
    /// Adds one task, or changes the one with its key.
    void put(const TaskSummary& task);
    void clear();
    std::size_t size() const noexcept { return tasks_.size(); }

    /// The best `most` matches. The pointers hold until the index changes.
    std::vector<const Entry*> tasks(std::string_view search, std::size_t most) const;
    std::vector<const BoardEntity*> boards(std::string_view search, std::size_t most) const;
    const Entry* task(std::string_view key) const;
    const BoardEntity* board(std::string_view id) const;

private:
    struct Task {
        Entry entry;
        std::string key, title, text;  ///< as they are compared; `text` holds all that is searched
    };
    struct NamedBoard {
        BoardEntity entity;
        std::string text;
    };

    static Task known(const TaskSummary& task);

    std::vector<Task> tasks_;
    std::vector<NamedBoard> boards_;
};

}  // namespace parvela
