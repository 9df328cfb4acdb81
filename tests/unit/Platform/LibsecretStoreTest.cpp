#include "PrivateBus.h"

#include <Platform/LibsecretStore.h>
#include <Platform/MainLoop.h>

#include <chrono>

namespace parvela {

void PrintTo(SecretStatus status, std::ostream* out) {
    *out << "SecretStatus " << static_cast<int>(status);
}

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using parvela::testing::PrivateBus;

constexpr const char* secretsName = "org.freedesktop.secrets";
const SecretItem token{.service = "app.parvela.token", .account = "127.0.0.1:3213"};

class LibsecretStoreTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { bus = new PrivateBus; }
    static void TearDownTestSuite() { delete bus; }

    void TearDown() override {
        keyring.end();
        bus->waitForOwner(secretsName, false);
        // Each test has its own keyring file.
        std::filesystem::remove_all(bus->folder() / "XDG_DATA_HOME");
    }

    void startKeyring() { keyring = bus->startKeyring(); }

    void lock() const {
        auto* const paths = g_variant_new_parsed("([objectpath '/org/freedesktop/secrets/collection/login'],)");
        ASSERT_TRUE(
            bus->call(secretsName, "/org/freedesktop/secrets", "org.freedesktop.Secret.Service", "Lock", paths));
    }

    Result<std::string, SecretStatus> read(const SecretItem& item) { return runUntilDone(store.read(item)); }
    SecretStatus update(const SecretItem& item, const std::string& secret) {
        return runUntilDone(store.update(item, secret));
    }
    SecretStatus add(const SecretItem& item, const std::string& secret) {
        return runUntilDone(store.add(item, secret, "Parvela API token"));
    }
    SecretStatus remove(const SecretItem& item) { return runUntilDone(store.remove(item)); }
    SecretStatus unlock(const SecretItem& item) { return runUntilDone(store.unlock(item)); }

    inline static PrivateBus* bus = nullptr;
    testing::Child keyring;
    LibsecretStore store{{.service = 2s, .question = 300ms}};
};

TEST_F(LibsecretStoreTest, keepsReplacesAndRemovesSecretsByTheirAttributes) {
    startKeyring();
    SecretItem other = token;
    other.account = "127.0.0.1:3214";
    EXPECT_EQ(read(token).error(), SecretStatus::notFound);
    EXPECT_EQ(update(token, "tk_1"), SecretStatus::notFound);
    EXPECT_EQ(remove(token), SecretStatus::notFound);

    const std::string secret = "tk_äöü \"quotes\" \n";
    EXPECT_EQ(add(token, secret), SecretStatus::success);
    EXPECT_EQ(read(token), secret);
    EXPECT_EQ(read(other).error(), SecretStatus::notFound);
    EXPECT_EQ(update(token, "tk_2"), SecretStatus::success);
    EXPECT_EQ(read(token), "tk_2");
    EXPECT_EQ(remove(token), SecretStatus::success);
    EXPECT_EQ(read(token).error(), SecretStatus::notFound);
}

TEST_F(LibsecretStoreTest, thePrivateAndTheSharedCopyAreApart) {
    startKeyring();
    SecretItem shared = token;
    shared.group = "app.parvela.shared";
    ASSERT_EQ(add(shared, "tk_shared"), SecretStatus::success);
    EXPECT_EQ(read(token).error(), SecretStatus::notFound);
    EXPECT_EQ(update(token, "x"), SecretStatus::notFound);
    ASSERT_EQ(add(token, "tk_private"), SecretStatus::success);
    EXPECT_EQ(read(shared), "tk_shared");
    EXPECT_EQ(update(token, "tk_new"), SecretStatus::success);
    EXPECT_EQ(read(shared), "tk_shared");
    EXPECT_EQ(remove(token), SecretStatus::success);
    EXPECT_EQ(read(shared), "tk_shared");
}

TEST_F(LibsecretStoreTest, theKeyringShowsTheLabel) {
    startKeyring();
    ASSERT_EQ(add(token, "tk_1"), SecretStatus::success);
    const auto found =
        bus->call(secretsName, "/org/freedesktop/secrets", "org.freedesktop.Secret.Service", "SearchItems",
                  g_variant_new_parsed("({'service': 'app.parvela.token', 'account': '127.0.0.1:3213'},)"));
    ASSERT_TRUE(found);
    const VariantPtr unlocked(g_variant_get_child_value(found.get(), 0));
    ASSERT_EQ(g_variant_n_children(unlocked.get()), 1U);
    const char* path = nullptr;
    g_variant_get_child(unlocked.get(), 0, "&o", &path);
    const auto label = bus->call(secretsName, path, "org.freedesktop.DBus.Properties", "Get",
                                 g_variant_new("(ss)", "org.freedesktop.Secret.Item", "Label"));
    ASSERT_TRUE(label);
    VariantPtr value;
    g_variant_get(label.get(), "(v)", value.out());
    EXPECT_STREQ(g_variant_get_string(value.get(), nullptr), "Parvela API token");
}

TEST_F(LibsecretStoreTest, aLockedKeyringAnswersAtOnceAndChangesNothing) {
    startKeyring();
    ASSERT_EQ(add(token, "tk_1"), SecretStatus::success);
    lock();
    const auto start = Clock::now();
    EXPECT_EQ(read(token).error(), SecretStatus::locked);
    EXPECT_LT(Clock::now() - start, 1s);
    // Nobody can answer the keyring's question on this bus.
    EXPECT_EQ(update(token, "tk_2"), SecretStatus::locked);
    EXPECT_EQ(remove(token), SecretStatus::locked);
    EXPECT_EQ(unlock(token), SecretStatus::locked);
    EXPECT_EQ(add({.service = "app.parvela.device", .account = "device-id"}, "x"), SecretStatus::locked);
}

TEST_F(LibsecretStoreTest, whatIsOpenOrNotThereNeedsNoUnlocking) {
    startKeyring();
    EXPECT_EQ(unlock(token), SecretStatus::success);
    ASSERT_EQ(add(token, "tk_1"), SecretStatus::success);
    EXPECT_EQ(unlock(token), SecretStatus::success);
}

TEST_F(LibsecretStoreTest, secretsOutliveTheKeyringProcess) {
    startKeyring();
    ASSERT_EQ(add(token, "tk_1"), SecretStatus::success);
    keyring.end();
    bus->waitForOwner(secretsName, false);
    EXPECT_EQ(read(token).error(), SecretStatus::noService);
    startKeyring();
    EXPECT_EQ(read(token), "tk_1");
}

TEST_F(LibsecretStoreTest, withoutAServiceEveryOperationSaysSo) {
    EXPECT_EQ(read(token).error(), SecretStatus::noService);
    EXPECT_EQ(update(token, "x"), SecretStatus::noService);
    EXPECT_EQ(add(token, "x"), SecretStatus::noService);
    EXPECT_EQ(remove(token), SecretStatus::noService);
    EXPECT_EQ(unlock(token), SecretStatus::noService);
}

GDBusMessage* swallowCalls(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer) {
    if (incoming && g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
        g_object_unref(message);
        return nullptr;
    }
    return message;
}

/// A program that owns a name on the bus and answers nothing.
class Silence {
public:
    explicit Silence(const char* name) : connection_(testing::connectAs(name)) {
        g_dbus_connection_add_filter(connection_.get(), swallowCalls, nullptr, nullptr);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr); }

private:
    Ref<GDBusConnection> connection_;
};

TEST_F(LibsecretStoreTest, aServiceThatNeverAnswersIsGivenUp) {
    const Silence service(secretsName);
    LibsecretStore impatient({.service = 100ms, .question = 100ms});
    const auto start = Clock::now();
    EXPECT_EQ(runUntilDone(impatient.read(token)).error(), SecretStatus::noService);
    EXPECT_EQ(runUntilDone(impatient.update(token, "x")), SecretStatus::noService);
    EXPECT_LT(Clock::now() - start, 2s);
}

TEST_F(LibsecretStoreTest, aQuestionThatNobodyAnswersIsLeftAlone) {
    const Silence prompter("org.gnome.keyring.SystemPrompter");
    startKeyring();
    ASSERT_EQ(add(token, "tk_1"), SecretStatus::success);
    lock();
    LibsecretStore impatient({.service = 200ms, .question = 100ms});
    const auto start = Clock::now();
    EXPECT_EQ(runUntilDone(impatient.update(token, "tk_2")), SecretStatus::locked);
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_EQ(read(token).error(), SecretStatus::locked) << "the keyring still runs";
}

}  // namespace
}  // namespace parvela
