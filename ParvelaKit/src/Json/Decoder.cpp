#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Records.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include <simdjson.h>

namespace parvela::json {
namespace {

using simdjson::dom::element;

template <Record T>
bool read(const element& json, T& value);

bool read(const element& json, std::string& value) {
    std::string_view text;
    if (json.get(text) != simdjson::SUCCESS) return false;
    value.assign(text);
    return true;
}

bool read(const element& json, bool& value) {
    return json.get(value) == simdjson::SUCCESS;
}

bool read(const element& json, double& value) {
    return json.get(value) == simdjson::SUCCESS;
}

bool read(const element& json, std::int64_t& value) {
    if (json.get(value) == simdjson::SUCCESS) return true;
    // 3.0 is an integer, as long as a double holds every integer around it.
    constexpr double exactLimit = 9007199254740992.0;
    double number = 0;
    if (json.get(number) != simdjson::SUCCESS || std::abs(number) > exactLimit || number != std::trunc(number)) {
        return false;
    }
    value = static_cast<std::int64_t>(number);
    return true;
}

template <TextEnum E>
bool read(const element& json, E& value) {
    std::string_view text;
    if (json.get(text) != simdjson::SUCCESS) return false;
    for (const EnumText<E>& entry : enumTexts(value)) {
        if (entry.text != text) continue;
        value = entry.value;
        return true;
    }
    return false;
}

template <class T>
bool read(const element& json, std::vector<T>& values);

template <class T>
bool read(const element& json, std::optional<T>& value) {
    if (json.is_null()) {
        value.reset();
        return true;
    }
    return read(json, value.emplace(T{}));
}

template <class T>
bool read(const element& json, Patch<T>& value) {
    if (json.is_null()) {
        value = Patch<T>::clear();
        return true;
    }
    T held{};
    if (!read(json, held)) return false;
    value = Patch<T>::set(std::move(held));
    return true;
}

template <class T>
constexpr bool mayBeAbsent = false;
template <class T>
constexpr bool mayBeAbsent<std::optional<T>> = true;
template <class T>
constexpr bool mayBeAbsent<Patch<T>> = true;

/// How one record type is read: its fields as a table that is indexed at run time.
template <class T>
struct Layout {
    static constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(T::fields)>>;
    static_assert(count <= 64, "the set of fields seen is kept in one word");

    struct Entry {
        std::string_view camelCase;
        std::string_view snakeCase;
        bool (*read)(const element&, T&);
    };

    template <std::size_t Index>
    static bool readField(const element& json, T& record) {
        return json::read(json, record.*std::get<Index>(T::fields).member);
    }

    static constexpr auto entries = []<std::size_t... Index>(std::index_sequence<Index...>) {
        return std::array<Entry, count>{Entry{std::get<Index>(T::fields).key.camelCase(),
                                              std::get<Index>(T::fields).key.snakeCase(), &readField<Index>}...};
    }(std::make_index_sequence<count>());

    static constexpr std::uint64_t required = []<std::size_t... Index>(std::index_sequence<Index...>) {
        return ((mayBeAbsent<std::remove_cvref_t<decltype(std::declval<T&>().*std::get<Index>(T::fields).member)>>
                     ? std::uint64_t{0}
                     : std::uint64_t{1} << Index) |
                ... | std::uint64_t{0});
    }(std::make_index_sequence<count>());

    static bool matches(std::size_t index, std::string_view key) {
        return entries[index].snakeCase == key || entries[index].camelCase == key;
    }
};

/// Which field each key of an object turned out to be. Objects of one list have their keys in the same order, whatever
/// that order is, so the order of the one before predicts the next and the search is for the first object only.
template <class T>
class KeyOrder {
public:
    /// The field that the key at `position` names, or the number of fields.
    std::size_t find(std::size_t position, std::string_view key) {
        using Fields = Layout<T>;
        if (position >= guesses_.size()) return search(key);
        std::size_t& guess = guesses_[position];
        if (guess < Fields::count && Fields::matches(guess, key)) return guess;
        if (const std::size_t found = search(key); found < Fields::count) return guess = found;
        return Fields::count;
    }

private:
    static std::size_t search(std::string_view key) {
        std::size_t index = 0;
        while (index < Layout<T>::count && !Layout<T>::matches(index, key)) ++index;
        return index;
    }

    std::array<std::size_t, Layout<T>::count> guesses_ = [] {
        std::array<std::size_t, Layout<T>::count> declared{};
        for (std::size_t i = 0; i < declared.size(); ++i) declared[i] = i;
        return declared;
    }();
};

template <Record T>
bool read(const element& json, T& record, KeyOrder<T>& order) {
    simdjson::dom::object object;
    if (json.get(object) != simdjson::SUCCESS) return false;
    std::uint64_t seen = 0;
    std::size_t position = 0;
    for (const auto field : object) {
        const std::size_t index = order.find(position++, field.key);
        if (index == Layout<T>::count) continue;
        if (!Layout<T>::entries[index].read(field.value, record)) return false;
        seen |= std::uint64_t{1} << index;
    }
    return (seen & Layout<T>::required) == Layout<T>::required;
}

template <Record T>
bool read(const element& json, T& record) {
    KeyOrder<T> order;
    return read(json, record, order);
}

template <class T>
bool read(const element& json, std::vector<T>& values) {
    simdjson::dom::array array;
    if (json.get(array) != simdjson::SUCCESS) return false;
    values.clear();
    // A hostile list of cheap elements must not reserve room for as many records.
    constexpr std::size_t mostReserved = std::size_t{16} * 1024 * 1024 / sizeof(T);
    values.reserve(std::min(array.size(), mostReserved));
    if constexpr (Record<T>) {
        KeyOrder<T> order;
        for (const element item : array) {
            if (!read(item, values.emplace_back(), order)) return false;
        }
    } else {
        for (const element item : array) {
            if (!read(item, values.emplace_back())) return false;
        }
    }
    return true;
}

/// Some servers put one before their answers (RFC 8259, section 8.1, lets readers ignore it).
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

simdjson::simdjson_result<element> parse(simdjson::dom::parser& parser, const std::string& document) {
    const std::size_t start = document.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    const bool needsCopy = document.capacity() - document.size() < simdjson::SIMDJSON_PADDING;
    return parser.parse(document.data() + start, document.size() - start, needsCopy);
}

}  // namespace

template <Record T>
std::optional<T> decode(const std::string& document) {
    simdjson::dom::parser parser;
    element root;
    T record;
    if (parse(parser, document).get(root) != simdjson::SUCCESS || !read(root, record)) return std::nullopt;
    return record;
}

std::string decodeErrorMessage(const std::string& body) {
    simdjson::dom::parser parser;
    simdjson::dom::object root;
    if (parse(parser, body).get(root) != simdjson::SUCCESS) return {};
    std::string message;
    for (const auto field : root) {
        if (field.key != "error") continue;
        message.clear();
        simdjson::dom::object error;
        if (field.value.get(error) != simdjson::SUCCESS) continue;
        for (const auto detail : error) {
            if (detail.key == "message" && !read(detail.value, message)) message.clear();
        }
    }
    return message;
}

template std::optional<Board> decode(const std::string&);
template std::optional<BoardDetail> decode(const std::string&);
template std::optional<BoardList> decode(const std::string&);
template std::optional<BoardSummary> decode(const std::string&);
template std::optional<BoardsResponse> decode(const std::string&);
template std::optional<ChangedResponse> decode(const std::string&);
template std::optional<ChecklistTick> decode(const std::string&);
template std::optional<CommentDraft> decode(const std::string&);
template std::optional<CommentResponse> decode(const std::string&);
template std::optional<HomeData> decode(const std::string&);
template std::optional<LabelTag> decode(const std::string&);
template std::optional<Me> decode(const std::string&);
template std::optional<NewTask> decode(const std::string&);
template std::optional<NotificationItem> decode(const std::string&);
template std::optional<NotificationMark> decode(const std::string&);
template std::optional<NotificationsResponse> decode(const std::string&);
template std::optional<OKResponse> decode(const std::string&);
template std::optional<PeopleResponse> decode(const std::string&);
template std::optional<Person> decode(const std::string&);
template std::optional<PushRegistration> decode(const std::string&);
template std::optional<PushRemoval> decode(const std::string&);
template std::optional<SearchResponse> decode(const std::string&);
template std::optional<TaskDetail> decode(const std::string&);
template std::optional<TaskDetail::Timer> decode(const std::string&);
template std::optional<TaskEdit> decode(const std::string&);
template std::optional<TaskPatch> decode(const std::string&);
template std::optional<TaskSummary> decode(const std::string&);
template std::optional<TasksResponse> decode(const std::string&);

}  // namespace parvela::json
