#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/Records.h>

namespace parvela {
namespace {

constexpr std::string_view minimalSummary =
    R"({"id":"t1","key":"TSK-1","title":"Brief","board":"Work","board_id":"b1","list":"To do","list_id":"l1",)"
    R"("assignees":[],"priority":"none","labels":[],"done":false)";

std::string summaryWith(std::string_view more) {
    return std::string(minimalSummary) + std::string(more) + "}";
}

TEST(RecordDecoding, readsEitherSpellingOfAKeyInAnyOrder) {
    const auto summary = json::decode<TaskSummary>(
        R"({"done":true,"labels":["l"],"priority":"high","assignees":["a","b"],"listId":"l1","list":"To do","boardId":"b1",)"
        R"("board":"Work","title":"Größe \ud83d\udc4d","key":"TSK-1","id":"t1","due_date":"2026-06-12","dueTime":"17:30",)"
        R"("label_tags":[{"tone":"red","id":"l","name":"Urgent"}]})");
    ASSERT_TRUE(summary);
    const TaskSummary expected{.id = "t1",
                               .key = "TSK-1",
                               .title = "Größe 👍",
                               .board = "Work",
                               .boardId = "b1",
                               .list = "To do",
                               .listId = "l1",
                               .assignees = {"a", "b"},
                               .priority = "high",
                               .labels = {"l"},
                               .dueDate = "2026-06-12",
                               .dueTime = "17:30",
                               .done = true,
                               .labelTags = std::vector<LabelTag>{{"l", "Urgent", "red"}}};
    EXPECT_EQ(*summary, expected);

    const auto detail = json::decode<BoardDetail>(
        R"({"id":"b","name":"n","description":"","icon":"i","private":true,"completionListId":"l9","lists":[],"labels":[],)"
        R"("people":[],"open":1,"done":2,"overdue":3})");
    ASSERT_TRUE(detail);
    EXPECT_EQ(detail->completionListId, "l9");
    EXPECT_TRUE(detail->isPrivate);
}

TEST(RecordDecoding, objectsOfOneListMayOrderTheirKeysDifferently) {
    const auto people = json::decode<PeopleResponse>(
        R"({"people":[{"id":"1","name":"A","color":"c"},{"color":"c","name":"B","id":"2"},{"x":0,"name":"C","y":[],"id":"3",)"
        R"("color":"c","role":"owner"},{"name":"D","id":"4","color":"c","a":1,"b":1,"c":1,"d":1,"e":1,"email":"d@x"}]})");
    ASSERT_TRUE(people);
    std::string read;
    for (const Person& person : people->people) read += person.id + person.name + person.role.value_or("-") + " ";
    EXPECT_EQ(read, "1A- 2B- 3Cowner 4D- ");
    EXPECT_EQ(people->people.back().email, "d@x");
}

TEST(RecordDecoding, acceptsWhatTheRulesAllow) {
    const struct {
        const char* why;
        std::string json;
    } cases[] = {
        {"absent optionals", summaryWith("")},
        {"null optionals",
         summaryWith(R"(,"due_date":null,"due_time":null,"url":null,"description":null,"label_tags":null)")},
        {"unknown keys", summaryWith(R"(,"extra":{"a":[1,{"b":null}]},"due__date":7,"Title":1,"":0)")},
        {"a repeated key", summaryWith(R"(,"title":"Brief")")},
        {"white space around", " \n\t" + summaryWith("") + "\r\n "},
        {"escaped keys", summaryWith(R"(,"\u0074itle":"Brief")")},
    };
    const auto expected = json::decode<TaskSummary>(summaryWith(""));
    ASSERT_TRUE(expected);
    for (const auto& test : cases) EXPECT_EQ(json::decode<TaskSummary>(test.json), expected) << test.why;

    EXPECT_EQ(json::decode<TaskSummary>(summaryWith(R"(,"title":"Second")"))->title, "Second");
    EXPECT_EQ(json::decode<TaskSummary>(summaryWith(R"(,"url":"/t/1","url":null)"))->url, std::nullopt);
    EXPECT_TRUE(json::decode<OKResponse>("{}"));
}

TEST(RecordDecoding, refusesWhatIsNotTheRecord) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const struct {
        const char* why;
        std::string json;
    } cases[] = {
        {"nothing", ""},
        {"blanks", "  "},
        {"another type", "[]"},
        {"null", "null"},
        {"cut short", std::string(minimalSummary)},
        {"something behind", summaryWith("") + "x"},
        {"a second document", summaryWith("") + summaryWith("")},
        {"a missing key", R"({"id":"t1"})"},
        {"a required null", summaryWith(R"(,"title":null)")},
        {"a number for a text", summaryWith(R"(,"title":3)")},
        {"a text for a truth value", summaryWith(R"(,"done":"true")")},
        {"a number for a truth value", summaryWith(R"(,"done":1)")},
        {"a text for a list", summaryWith(R"(,"labels":"a")")},
        {"a wrong element", summaryWith(R"(,"labels":["a",1])")},
        {"a null element", summaryWith(R"(,"labels":[null])")},
        {"an incomplete nested record", summaryWith(R"(,"label_tags":[{"id":"1"}])")},
        {"a wrong value that is overridden", summaryWith(R"(,"title":3,"title":"Brief")")},
        {"invalid UTF-8", summaryWith(",\"url\":\"\xff\"")},
        {"invalid UTF-8 below an unknown key", summaryWith(",\"x\":\"\xc3\"")},
        {"half a surrogate pair", summaryWith(R"(,"url":"\ud83d")")},
        {"a raw line break in a text", summaryWith(",\"url\":\"a\nb\"")},
        {"a fault below an unknown key", summaryWith(R"(,"x":[1 2])")},
        {"nesting without end", summaryWith(",\"x\":" + deep)},
        {"nesting that never closes", summaryWith(",\"x\":" + std::string(1'000'000, '['))},
        {"a trailing comma", summaryWith(",")},
    };
    for (const auto& test : cases) EXPECT_FALSE(json::decode<TaskSummary>(test.json)) << test.why;
}

TEST(RecordDecoding, readsIntegersExactlyOrNotAtAll) {
    const std::pair<const char*, std::int64_t> cases[] = {
        {"0", 0},
        {"-7", -7},
        {"3.0", 3},
        {"3e2", 300},
        {"-0.0", 0},
        {"9007199254740992.0", 9007199254740992},
        {"9223372036854775807", 9223372036854775807},
    };
    const auto read = [](const std::string& text) -> std::optional<std::int64_t> {
        const auto record = json::decode<ChangedResponse>(R"({"changed":)" + text + "}");
        return record ? std::optional(record->changed) : std::nullopt;
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(read(text), expected) << text;
    for (const char* text : {"9223372036854775808", "9223372036854775808.0", "1e300", "1e999", "3.5", "true", "\"3\"",
                             "null", "NaN", "03"}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
    EXPECT_EQ(json::decode<TaskDetail::Timer>(R"({"started_at":1781222400000})")->startedAt, 1781222400000.0);
    EXPECT_FALSE(json::decode<TaskDetail::Timer>(R"({"started_at":true})"));
}

TEST(RecordDecoding, findsTheMessageOfAnErrorBody) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"error":{"message":"No such list."}})", "No such list."},
        {R"({"x":[],"error":{"code":3,"message":"a\nb"}})", "a\nb"},
        {R"({"error":{"message":"a"},"error":{"message":"b"}})", "b"},
    };
    for (const auto& [body, message] : cases) EXPECT_EQ(json::decodeErrorMessage(body), message) << body;
    for (const char* body :
         {R"({"error":{"message":null}})", R"({"error":{"message":5}})", R"({"error":{"message":"a","message":{}}})",
          R"({"error":"plain"})", R"({"error":{}})", R"({"message":"outside"})", R"([{"error":{"message":"a"}}])",
          R"({"error":{"message":"cut)", "<html>Bad gateway</html>", "{\"error\":{\"message\":\"\xff\"}}", ""}) {
        EXPECT_EQ(json::decodeErrorMessage(body), "") << body;
    }
}

/// Decoding what was encoded gives the record back, so every key is written as it is read.
template <class T>
void expectRoundTrip(const T& record, std::string_view text) {
    EXPECT_EQ(json::encode(record), text);
    EXPECT_EQ(json::decode<T>(json::encode(record)), record) << text;
}

TEST(RecordEncoding, writesSortedKeysInTheServicesSpelling) {
    expectRoundTrip(NewTask{.board = "b1",
                            .title = "Brief \"x\"\n",
                            .assignees = std::vector<std::string>{"p1"},
                            .dueDate = "2026-06-12",
                            .dueTime = "17:30",
                            .priority = "high"},
                    R"({"assignees":["p1"],"board":"b1","due_date":"2026-06-12","due_time":"17:30","priority":"high",)"
                    R"("title":"Brief \"x\"\n"})");
    expectRoundTrip(PushRegistration{.token = "t", .bundleId = "app.x"},
                    R"({"bundleId":"app.x","environment":"production","platform":"macos","token":"t"})");
    expectRoundTrip(TaskPatch{.done = true}, R"({"done":true})");
    expectRoundTrip(NotificationMark{.ids = {"a"}, .read = false}, R"({"all":false,"ids":["a"],"read":false})");
    expectRoundTrip(
        BoardDetail{.id = "b", .isPrivate = true, .completionListId = "l9", .lists = {{"l1", "To do", 1, 2}}},
        R"({"completionListId":"l9","description":"","done":0,"icon":"","id":"b","labels":[],)"
        R"("lists":[{"id":"l1","name":"To do","open":1,"total":2}],"name":"","open":0,"overdue":0,"people":[],)"
        R"("private":true})");
    expectRoundTrip(
        HomeData{.today = "2026-06-12", .counts = {.doneToday = 4}},
        R"({"boards":[],"counts":{"done_today":4,"later":0,"overdue":0,"today":0,"upcoming":0},"due_today":[],)"
        R"("later":[],"me":{"color":"","email":"","id":"","name":""},"overdue":[],"today":"2026-06-12","unread":0,)"
        R"("upcoming":[],"workspace":{"id":"","name":"","plan":"","role":""}})");
    expectRoundTrip(
        NotificationItem{.id = "n", .at = 1781222400000.0, .task = NotificationItem::TaskRef{.boardId = "b"}},
        R"({"at":1781222400000.0,"id":"n","kind":"","read":false,)"
        R"("task":{"board":"","board_id":"b","done":false,"id":"","key":"","title":""},"text":""})");
    EXPECT_EQ(json::encode(CommentDraft{"a\xff"}), "{\"body\":\"a\uFFFD\"}");
}

TEST(RecordEncoding, anEditKeepsClearsOrSetsEachField) {
    expectRoundTrip(TaskEdit{}, "{}");
    expectRoundTrip(TaskEdit{.title = Patch<std::string>::set("New")}, R"({"title":"New"})");
    expectRoundTrip(TaskEdit{.dueDate = Patch<std::string>::clear()}, R"({"due_date":null})");
    expectRoundTrip(TaskEdit{.assignees = Patch<std::vector<std::string>>::set({}), .done = Patch<bool>::set(false)},
                    R"({"assignees":[],"done":false})");
    EXPECT_FALSE(json::decode<PushRegistration>(
        R"({"bundle_id":"app.x","environment":"staging","platform":"macos","token":"t"})"));
    EXPECT_TRUE(json::decode<PushRegistration>(
        R"({"bundle_id":"app.x","environment":"sandbox","platform":"macos","token":"t"})"));
}

}  // namespace
}  // namespace parvela
