#include "support/TemporaryFolder.h"

#include <Platform/JsonDefaultsStore.h>

#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace parvela {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

class JsonDefaultsStoreTest : public ::testing::Test {
protected:
    JsonDefaultsStore open() {
        return JsonDefaultsStore(file, [this](const std::string& message) { failures.push_back(message); });
    }

    void write(const std::string& content) const {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }

    std::string content() const {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : fs::directory_iterator(file.parent_path())) result.push_back(entry.path().filename());
        return result;
    }

    test::TemporaryFolder folder;
    fs::path file = folder.path() / "config" / "parvela" / "defaults.json";
    std::vector<std::string> failures;
};

TEST_F(JsonDefaultsStoreTest, everyValueComesBackExactlyAfterARestart) {
    using Limits = std::numeric_limits<std::int64_t>;
    const std::vector<std::pair<std::string, StoredValue>> values = {
        {"yes", true},
        {"no", false},
        {"zero", std::int64_t{0}},
        {"least", Limits::min()},
        {"greatest", Limits::max()},
        {"whole double", 4.0},
        {"third", 1.0 / 3.0},
        {"tiny", 5e-324},
        {"minus zero", -0.0},
        {"infinite", -HUGE_VAL},
        {"empty", std::string()},
        {"text", std::string("Zoë 😀 \"quoted\"\n\t\\ \x01")},
        {"NUL", std::string("a\0b", 3)},
        {"bytes as text", std::string("\xFF\xFE")},
        {"no bytes", Data{}},
        {"bytes", Data{std::string("\0\xFF{}", 4)}},
        {"linkedAPI|http://localhost:3100", std::string("http://127.0.0.1:3213")},
        {"key ü", std::int64_t{1}},
    };
    {
        auto store = open();
        for (const auto& [key, value] : values) store.set(key, value);
        store.set("nan", std::nan(""));
    }
    const auto store = open();
    for (const auto& [key, value] : values) {
        EXPECT_EQ(store.get(key), value) << key;
    }
    EXPECT_TRUE(std::signbit(std::get<double>(*store.get("minus zero"))));
    EXPECT_TRUE(std::isnan(std::get<double>(*store.get("nan"))));
    EXPECT_EQ(store.get("absent"), std::nullopt);
    EXPECT_EQ(store.warning(), std::nullopt);
    EXPECT_THAT(failures, ElementsAre());
}

TEST_F(JsonDefaultsStoreTest, theFileIsPrivateAndAlone) {
    open().set("a", true);
    struct stat info{};
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
    ASSERT_EQ(stat(file.parent_path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U);
    EXPECT_THAT(names(), UnorderedElementsAre("defaults.json", "defaults.json.lock"));
}

TEST_F(JsonDefaultsStoreTest, entriesWrittenByHandAreReadAndForeignOnesKept) {
    write(R"({"ParvelaAppURL": "http://localhost:3100", "hotKeyCode": 49, "ratio": 1e3, "list": [1, {"x": null}], )"
          R"("odd": {"data": "not base64!"}, "huge": 18446744073709551615})");
    auto store = open();
    EXPECT_EQ(store.get("ParvelaAppURL"), StoredValue("http://localhost:3100"));
    EXPECT_EQ(store.get("hotKeyCode"), StoredValue(std::int64_t{49}));
    EXPECT_EQ(store.get("ratio"), StoredValue(1000.0));
    for (const char* key : {"list", "odd", "huge"}) EXPECT_EQ(store.get(key), std::nullopt) << key;
    store.remove("ratio");
    EXPECT_EQ(store.get("ratio"), std::nullopt);
    const std::string after = content();
    EXPECT_THAT(after, HasSubstr("\"x\": null"));
    EXPECT_THAT(after, HasSubstr("not base64!"));
    EXPECT_THAT(after, HasSubstr("18446744073709551615"));
    EXPECT_THAT(after, ::testing::Not(HasSubstr("ratio")));
}

TEST_F(JsonDefaultsStoreTest, aDamagedFileIsKeptAsideAndNamed) {
    const std::string damaged[] = {"",
                                   "{\"a\": tru",
                                   "[1, 2]",
                                   "\xFF\xFE",
                                   std::string(200'000, '['),
                                   "{\"big\": \"" + std::string(9'000'000, 'x') + "\"}"};
    int number = 0;
    for (const std::string& bytes : damaged) {
        write(bytes);
        auto store = open();
        const fs::path kept = file.string() + ".damaged-" + std::to_string(++number);
        EXPECT_EQ(store.get("a"), std::nullopt);
        ASSERT_TRUE(store.warning().has_value());
        EXPECT_THAT(*store.warning(), HasSubstr(kept.string()));
        EXPECT_EQ(fs::file_size(kept), bytes.size());
        store.set("a", std::int64_t{number});
        EXPECT_EQ(open().get("a"), StoredValue(std::int64_t{number}));
    }
    EXPECT_THAT(failures, ElementsAre());
}

TEST_F(JsonDefaultsStoreTest, aHandEditGoneWrongLosesNothingThatWasKnown) {
    auto store = open();
    store.set("board", std::string("b1"));
    write("{\"board\": \"b2\"");
    EXPECT_EQ(store.get("board"), StoredValue("b1"));
    store.set("page", std::string("/home"));
    EXPECT_EQ(open().get("board"), StoredValue("b1"));
    EXPECT_TRUE(fs::exists(file.string() + ".damaged-1"));
}

TEST_F(JsonDefaultsStoreTest, severalWritersChangeTheirOwnKeysOnly) {
    auto app = open();
    auto command = open();
    app.set("window", std::string("w1"));
    command.set("serverMode", std::string("local"));
    EXPECT_EQ(app.get("serverMode"), StoredValue("local"));
    app.set("window", std::string("w2"));
    command.remove("serverMode");
    EXPECT_EQ(command.get("window"), StoredValue("w2"));
    EXPECT_EQ(app.get("serverMode"), std::nullopt);
}

TEST_F(JsonDefaultsStoreTest, keysWithTheSameBeginningAreFound) {
    auto app = open();
    auto command = open();
    app.set("permission|b", true);
    command.set("permission|a", false);
    command.set("page", true);
    EXPECT_THAT(app.keys("permission|"), ElementsAre("permission|a", "permission|b"));
    const JsonDefaultsStore::Batch notWrittenYet(app);
    app.set("permission|c", true);
    app.remove("permission|a");
    EXPECT_THAT(app.keys("permission|"), ElementsAre("permission|b", "permission|c"));
    EXPECT_THAT(app.keys("none"), ElementsAre());
}

TEST_F(JsonDefaultsStoreTest, writersAtTheSameTimeLoseNothing) {
    constexpr int writers = 4;
    constexpr int keys = 25;
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer) {
        const pid_t child = fork();
        if (child == 0) {
            int failed = 0;
            JsonDefaultsStore store(file, [&failed](const std::string&) { ++failed; });
            for (int key = 0; key < keys; ++key) store.set(std::to_string(writer * keys + key), std::int64_t{key});
            _exit(failed);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    const auto store = open();
    for (int key = 0; key < writers * keys; ++key) EXPECT_NE(store.get(std::to_string(key)), std::nullopt) << key;
}

TEST_F(JsonDefaultsStoreTest, aBatchIsWrittenOnceAndAtItsEnd) {
    auto store = open();
    store.set("first", true);
    struct stat before{};
    ASSERT_EQ(stat(file.c_str(), &before), 0);
    {
        const JsonDefaultsStore::Batch batch(store);
        store.set("a", true);
        store.set("b", true);
        store.remove("first");
        EXPECT_EQ(store.get("a"), StoredValue(true));
        EXPECT_EQ(store.get("first"), std::nullopt);
        struct stat during{};
        ASSERT_EQ(stat(file.c_str(), &during), 0);
        EXPECT_EQ(during.st_ino, before.st_ino);
    }
    EXPECT_THAT(content(),
                ::testing::AllOf(HasSubstr("\"a\""), HasSubstr("\"b\""), ::testing::Not(HasSubstr("first"))));
}

TEST_F(JsonDefaultsStoreTest, aValueSetAgainIsNotWrittenAgain) {
    auto store = open();
    store.set("a", std::int64_t{5});
    struct stat before{};
    ASSERT_EQ(stat(file.c_str(), &before), 0);
    store.set("a", std::int64_t{5});
    store.remove("b");
    struct stat after{};
    ASSERT_EQ(stat(file.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    store.set("a", 5.0);
    EXPECT_EQ(open().get("a"), StoredValue(5.0));
}

TEST_F(JsonDefaultsStoreTest, whatCouldNotBeWrittenIsReportedAndWrittenLater) {
    auto store = open();
    store.set("a", std::int64_t{1});
    // A folder in the draft's place makes every write fail, for root too.
    const fs::path obstacle = file.string() + ".new";
    fs::create_directory(obstacle);
    store.set("a", std::int64_t{2});
    store.set("b", std::int64_t{3});
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_THAT(failures.front(), HasSubstr("couldn't be saved to"));
    EXPECT_EQ(store.get("a"), StoredValue(std::int64_t{2}));
    EXPECT_EQ(open().get("a"), StoredValue(std::int64_t{1})) << "the old file stands whole";

    fs::remove(obstacle);
    store.set("c", std::int64_t{4});
    const auto later = open();
    EXPECT_EQ(later.get("a"), StoredValue(std::int64_t{2}));
    EXPECT_EQ(later.get("b"), StoredValue(std::int64_t{3}));
    EXPECT_EQ(later.get("c"), StoredValue(std::int64_t{4}));
}

TEST_F(JsonDefaultsStoreTest, aLockThatIsNeverReleasedDoesNotBlock) {
    auto store = open();
    store.set("a", std::int64_t{1});
    const int lock = ::open((file.string() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    store.set("a", std::int64_t{2});
    EXPECT_EQ(failures.size(), 1U);
    EXPECT_EQ(store.get("a"), StoredValue(std::int64_t{2}));
    close(lock);
}

TEST_F(JsonDefaultsStoreTest, whatIsNoFileIsLeftAlone) {
    fs::create_directories(file.parent_path());
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    auto store = open();
    EXPECT_TRUE(store.warning().has_value());
    store.set("a", true);
    EXPECT_EQ(failures.size(), 1U);
    EXPECT_TRUE(fs::is_fifo(file));
}

TEST_F(JsonDefaultsStoreTest, aLinkedFileStaysALink) {
    const fs::path target = folder.path() / "dotfiles.json";
    std::ofstream(target) << "{}";
    fs::create_directories(file.parent_path());
    fs::create_symlink(target, file);
    open().set("a", true);
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_THAT(content(), HasSubstr("\"a\": true"));
}

}  // namespace
}  // namespace parvela
