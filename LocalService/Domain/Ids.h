#pragma once

#include <algorithm>
#include <charconv>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace parvela::service {

/// The word in front of a public id, usable as a template argument.
template <std::size_t N>
struct IdPrefix {
    char text[N]{};
    constexpr IdPrefix(const char (&literal)[N]) { std::copy_n(literal, N, text); }
    constexpr std::string_view view() const { return {text, N - 1}; }
};

/// A row's number, typed by what it numbers. Outside the service it is text such as "brd_12".
template <IdPrefix Prefix>
struct Id {
    std::int64_t value = 0;

    auto operator<=>(const Id&) const = default;

    std::string text() const { return std::string(Prefix.view()) + "_" + std::to_string(value); }

    static std::optional<Id> parse(std::string_view text) {
        constexpr auto prefix = Prefix.view();
        if (text.size() < prefix.size() + 2 || !text.starts_with(prefix) || text[prefix.size()] != '_') return {};
        return fromDigits(text.substr(prefix.size() + 1));
    }

    /// Plain digits without a sign or a leading zero, so that each row has one name only.
    static std::optional<Id> fromDigits(std::string_view digits) {
        if (digits.empty() || digits.front() < '1' || digits.front() > '9') return {};
        Id id;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id.value);
        if (error != std::errc{} || end != digits.data() + digits.size()) return {};
        return id;
    }
};

using BoardId = Id<"brd">;
using ChecklistId = Id<"chk">;
using CommentId = Id<"cmt">;
using FileId = Id<"fil">;
using ItemId = Id<"itm">;
using LabelId = Id<"lbl">;
using ListId = Id<"lst">;
using NotificationId = Id<"ntf">;
using PersonId = Id<"usr">;
using TaskId = Id<"tsk">;
using TokenId = Id<"tok">;
using WorkspaceId = Id<"wsp">;

/// The key that people see and type, such as "TSK-42". It carries the same number as the task's id.
inline std::string taskKey(TaskId id) {
    return "TSK-" + std::to_string(id.value);
}

/// Reads a task's key (in any case) or its id.
inline std::optional<TaskId> parseTaskReference(std::string_view text) {
    if (auto id = TaskId::parse(text)) return id;
    if (text.size() < 5 || text[3] != '-') return {};
    const auto lower = [&](std::size_t i) { return static_cast<char>(text[i] | 0x20); };
    if (lower(0) != 't' || lower(1) != 's' || lower(2) != 'k') return {};
    return TaskId::fromDigits(text.substr(4));
}

}  // namespace parvela::service
