#include "WordsCommand.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/Text.h>
#include <Platform/MainLoop.h>
#include <Platform/XdgPaths.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace parvela {

namespace {

using namespace std::chrono_literals;
using Json = nlohmann::json;

constexpr std::chrono::milliseconds freshness = 60s;
constexpr std::chrono::milliseconds patience = 1s;
constexpr std::size_t mostWords = 2000;  // of a kind
constexpr std::size_t longestWord = 250;
constexpr std::size_t longestMeaning = 100;  // in characters
constexpr std::uintmax_t largestFile = 4 * 1024 * 1024;

std::filesystem::path file() {
    return XdgPaths::current().cache / "words.json";
}

/// What was kept for this site: an object with a time and two lists of pairs; null when there is nothing.
Json kept(const std::string& site) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file(), error);
    if (error || size > largestFile) return nullptr;
    CharPtr text;
    gsize length = 0;
    if (!g_file_get_contents(file().c_str(), text.out(), &length, nullptr)) return nullptr;
    Json content = Json::parse(text.get(), text.get() + length, nullptr, false);
    const bool fits = content.is_object() && content.value("site", Json()) == site && content["at"].is_number_integer();
    return fits ? content : Json();
}

void keep(const Json& content) {
    if (ensurePrivateFolder(file().parent_path())) return;
    const std::string text = content.dump(-1, ' ', false, Json::error_handler_t::replace);
    constexpr int ownerOnly = 0600;
    // Without it the next completion asks again.
    (void)g_file_set_contents_full(file().c_str(), text.data(), static_cast<gssize>(text.size()),
                                   G_FILE_SET_CONTENTS_CONSISTENT, ownerOnly, nullptr);
}

/// What nobody would complete is left out, so that all of it fits into a file that is read again.
void add(Json& list, const std::string& word, const std::string& meaning) {
    if (list.size() == mostWords || word.size() > longestWord) return;
    list.push_back(Json::array({word, firstCharacters(meaning, longestMeaning)}));
}

Task<std::optional<Json>> ask(ParvelaSession session, std::stop_token stop) {
    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api) {
        // A keyring that is locked or silent may still hold the token that they came with.
        if (api.error() == SecretStatus::notFound) forgetWords();
        co_return std::nullopt;
    }
    auto asking = api->send<BoardsResponse>(Endpoint::boards(), stop);
    auto listing = api->send<TasksResponse>(Endpoint::tasks(), stop);
    const auto boards = co_await asking;
    const auto tasks = co_await listing;
    if (!boards || !tasks) co_return std::nullopt;
    Json content{{"boards", Json::array()}, {"keys", Json::array()}};
    for (const Board& board : boards->boards) add(content["boards"], board.name, board.id);
    for (const TaskSummary& task : tasks->tasks) {
        if (!task.done) add(content["keys"], task.key, task.title);
    }
    co_return content;
}

Task<void> deliver(Task<std::optional<Json>> asking, Deferred<std::optional<Json>> outcome) {
    auto answer = co_await asking;
    outcome.resolve(std::move(answer));
}

/// None when the keyring or the service does not answer in time.
Task<std::optional<Json>> askInTime(ParvelaSession session) {
    std::stop_source stop;
    const Deferred<std::optional<Json>> outcome;
    deliver(ask(std::move(session), stop.get_token()), outcome).detach();
    const MainLoopTimer limit(patience, [stop, outcome]() mutable {
        stop.request_stop();
        outcome.resolve(std::nullopt);
    });
    auto answer = co_await outcome;
    co_return answer;
}

void show(const Json& words, const Console& console) {
    if (!words.is_array()) return;
    for (const Json& word : words) {
        if (!word.is_array() || word.size() != 2 || !word[0].is_string() || !word[1].is_string()) continue;
        console.pair(word[0].get_ref<const std::string&>(), word[1].get_ref<const std::string&>());
    }
}

}  // namespace

ExitStatus showWords(const std::string& kind, const CommandSession& session, const Console& console) {
    const std::string site = session.session.server().apiURL.text();
    const auto now = session.clock->now().time_since_epoch();
    Json content = kept(site);
    const bool isFresh =
        content.is_object() &&
        std::chrono::abs(now - std::chrono::milliseconds(content["at"].get<std::int64_t>())) < freshness;
    if (!isFresh) {
        if (auto answer = runUntilDone(askInTime(session.session))) {
            content = std::move(*answer);
            content["site"] = site;
            content["at"] = now.count();
            keep(content);
        } else if (!std::filesystem::exists(file())) {
            return ExitStatus::success;
        }
    }
    if (content.is_object()) show(content.value(kind, Json()), console);
    return ExitStatus::success;
}

void forgetWords() {
    std::error_code error;
    std::filesystem::remove(file(), error);
}

}  // namespace parvela
