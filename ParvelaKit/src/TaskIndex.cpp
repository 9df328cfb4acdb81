#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/TaskIndex.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <compare>
#include <utility>

namespace parvela {

namespace {

/// Without case, accents and differences of width: "Zoë" and "ＺＯＥ" are "zoe".
std::string folded(std::string_view text) {
    if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        return asciiLowercased(text);
    }
    const CharPtr normal(g_utf8_normalize(text.data(), static_cast<gssize>(text.size()), G_NORMALIZE_ALL));
    if (!normal) return {};  // no UTF-8, which nobody can type
    std::string result;
    for (const char* at = normal.get(); *at != '\0'; at = g_utf8_next_char(at)) {
        if (g_unichar_type(g_utf8_get_char(at)) == G_UNICODE_NON_SPACING_MARK) continue;
        result.append(at, static_cast<std::size_t>(g_utf8_next_char(at) - at));
    }
    return lowercased(result);
}

std::vector<std::string> wordsOf(std::string_view search) {
    std::vector<std::string> words;
    if (search.size() > TaskIndex::longestSearch) return words;
    const std::string text = folded(search);
    std::size_t start = 0;
    while (start < text.size() && words.size() < TaskIndex::mostWords) {
        const std::size_t end = std::min(text.find_first_of(" \t\n\r", start), text.size());
        if (end > start) words.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return words;
}

bool containsAll(std::string_view text, const std::vector<std::string>& words) {
    return std::ranges::all_of(words, [&](const std::string& word) { return text.contains(word); });
}

bool beginsAWord(std::string_view text, std::string_view word) {
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        const auto before = at == 0 ? ' ' : text[at - 1];
        if (!g_ascii_isalnum(before) && static_cast<unsigned char>(before) < 0x80) return true;
    }
    return false;
}

/// Less is better.
struct Rank {
    int fit;
    bool done;
    std::string_view due;
    std::size_t place;

    auto operator<=>(const Rank&) const = default;
};

}  // namespace

void TaskIndex::replace(const std::vector<TaskSummary>& tasks, std::vector<BoardEntity> boards) {
    clear();
    tasks_.reserve(std::min(tasks.size(), mostTasks));
    for (const TaskSummary& task : tasks) {
        if (tasks_.size() == mostTasks) break;
        tasks_.push_back(known(task));
    }
    for (BoardEntity& board : boards) {
        std::string text = folded(board.name);
        boards_.push_back({std::move(board), std::move(text)});
    }
}

TaskIndex::Task TaskIndex::known(const TaskSummary& task) {
    const std::string_view title = std::string_view(task.title).substr(0, longestTitle);
    const char* end = nullptr;
    (void)g_utf8_validate(title.data(), static_cast<gssize>(title.size()), &end);
    Task known{.entry = {task.key, std::string(title.data(), end), task.board, task.dueDate, task.dueTime, task.done},
               .key = folded(task.key),
               .title = folded(std::string_view(title.data(), end)),
               .text = {}};
    known.text = known.key + "\n" + known.title + "\n" + folded(task.board);
    return known;
}

void TaskIndex::put(const TaskSummary& task) {
    const auto found = std::ranges::find(tasks_, task.key, [](const Task& one) { return one.entry.key; });
    if (found != tasks_.end()) {
        *found = known(task);
    } else if (tasks_.size() < mostTasks) {
        tasks_.push_back(known(task));
    }
}

void TaskIndex::clear() {
    tasks_.clear();
    boards_.clear();
}

std::vector<const TaskIndex::Entry*> TaskIndex::tasks(std::string_view search, std::size_t most) const {
    const auto words = wordsOf(search);
    if (words.empty()) return {};
    std::string phrase;
    for (const std::string& word : words) phrase += (phrase.empty() ? "" : " ") + word;

    std::vector<std::pair<Rank, const Entry*>> found;
    for (const Task& task : tasks_) {
        if (!containsAll(task.text, words)) continue;
        int fit = 3;
        if (task.key == phrase) {
            fit = 0;
        } else if (task.title.starts_with(phrase)) {
            fit = 1;
        } else if (std::ranges::all_of(words, [&](const std::string& word) { return beginsAWord(task.text, word); })) {
            fit = 2;
        }
        // "~" comes after every digit: no date is later than any.
        const std::string_view due = task.entry.dueDate ? std::string_view(*task.entry.dueDate) : "~";
        found.emplace_back(Rank{fit, task.entry.done, due, found.size()}, &task.entry);
    }
    const auto count = static_cast<std::ptrdiff_t>(std::min(most, found.size()));
    std::ranges::partial_sort(found, found.begin() + count, {}, [](const auto& one) { return one.first; });
    std::vector<const Entry*> best;
    for (auto match = found.begin(); match != found.begin() + count; ++match) best.push_back(match->second);
    return best;
}

std::vector<const BoardEntity*> TaskIndex::boards(std::string_view search, std::size_t most) const {
    const auto words = wordsOf(search);
    std::vector<const BoardEntity*> found;
    if (words.empty()) return found;
    for (const NamedBoard& board : boards_) {
        if (found.size() == most) break;
        if (containsAll(board.text, words)) found.push_back(&board.entity);
    }
    return found;
}

const TaskIndex::Entry* TaskIndex::task(std::string_view key) const {
    const auto found =
        std::ranges::find(tasks_, key, [](const Task& task) -> std::string_view { return task.entry.key; });
    return found == tasks_.end() ? nullptr : &found->entry;
}

const BoardEntity* TaskIndex::board(std::string_view id) const {
    const auto found =
        std::ranges::find(boards_, id, [](const NamedBoard& board) -> std::string_view { return board.entity.id; });
    return found == boards_.end() ? nullptr : &found->entity;
}

}  // namespace parvela
