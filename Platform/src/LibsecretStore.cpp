#include "AsyncCall.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Text.h>
#include <Platform/LibsecretStore.h>
#include <Platform/MainLoop.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <libsecret/secret.h>

namespace parvela {

namespace {

using Attributes = GLibPtr<GHashTable, g_hash_table_unref>;
using ValuePtr = GLibPtr<SecretValue, secret_value_unref>;
using Service = Ref<SecretService>;
using Collection = Ref<SecretCollection>;
using KeyringItem = Ref<::SecretItem>;
using KeyringItems = std::vector<KeyringItem>;

constexpr const char* groupAttribute = "group";

const SecretSchema& schema() {
    static const SecretSchema value = {"app.parvela.Secret",
                                       SECRET_SCHEMA_NONE,
                                       {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {groupAttribute, SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                       0,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr};
    return value;
}

Attributes attributesOf(const SecretItem& item) {
    Attributes table(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    const auto put = [&table](const char* name, const std::string& value) {
        g_hash_table_insert(table.get(), g_strdup(name), g_strdup(toUtf8(toUtf16(value)).c_str()));
    };
    put("service", item.service);
    put("account", item.account);
    if (item.group) put(groupAttribute, *item.group);
    return table;
}

ValuePtr valueOf(const std::string& secret) {
    return ValuePtr(secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain"));
}

SecretStatus statusOf(const GError& error) {
    if (g_error_matches(&error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED)) return SecretStatus::locked;
    if (g_error_matches(&error, SECRET_ERROR, SECRET_ERROR_NO_SUCH_OBJECT)) return SecretStatus::notFound;
    // How libsecret reports a dismissed question.
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) return SecretStatus::locked;
    if (g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
        g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
        g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY)) {
        return SecretStatus::noService;
    }
    return SecretStatus::failed;
}

/// What an operation and the one who waits for it share.
struct Attempt {
    bool abandoned = false;
    /// The keyring may be asking the user something.
    bool asking = false;
};
using AttemptPtr = std::shared_ptr<Attempt>;

Task<Result<Service, SecretStatus>> openService() {
    const auto waiting = startAsync([](GAsyncReadyCallback done, gpointer data) {
        secret_service_get(SECRET_SERVICE_OPEN_SESSION, nullptr, done, data);
    });
    const auto result = co_await waiting;
    auto service = Service::adopt(secret_service_get_finish(result.get(), nullptr));
    // Whatever went wrong, nobody answers as a secret service here.
    if (!service) co_return Failure(SecretStatus::noService);
    co_return service;
}

/// The keyring that new items go to; empty when there is none yet.
Task<Result<Collection, SecretStatus>> defaultCollection(Service service) {
    const auto waiting = startAsync([&service](GAsyncReadyCallback done, gpointer data) {
        secret_collection_for_alias(service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, done,
                                    data);
    });
    const auto result = co_await waiting;
    ErrorPtr error;
    auto collection = Collection::adopt(secret_collection_for_alias_finish(result.get(), error.out()));
    if (error) co_return Failure(statusOf(*error.get()));
    co_return collection;
}

enum class Secrets { skip, load };

/// Items with exactly these attributes, locked ones too. Asks nothing.
Task<Result<KeyringItems, SecretStatus>> search(Service service, SecretItem item, Secrets secrets) {
    const auto flags =
        static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | (secrets == Secrets::load ? SECRET_SEARCH_LOAD_SECRETS : 0));
    const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
        secret_service_search(service.get(), &schema(), attributesOf(item).get(), flags, nullptr, done, data);
    });
    const auto result = co_await waiting;
    ErrorPtr error;
    GList* const list = secret_service_search_finish(service.get(), result.get(), error.out());
    if (error) co_return Failure(statusOf(*error.get()));
    KeyringItems found;
    for (GList* link = list; link; link = link->next) {
        auto keyringItem = KeyringItem::adopt(static_cast<::SecretItem*>(link->data));
        // The service matches subsets: without a group it finds the shared items as well.
        const Attributes attributes(secret_item_get_attributes(keyringItem.get()));
        const bool shared = attributes && g_hash_table_contains(attributes.get(), groupAttribute);
        if (shared == item.group.has_value()) found.push_back(std::move(keyringItem));
    }
    g_list_free(list);
    co_return found;
}

/// Nothing found means "no such item" only when the keyring that would hold it is open: a locked one does not tell.
Task<SecretStatus> statusOfNothing(Service service) {
    auto task = defaultCollection(service);
    const auto collection = co_await task;
    if (!collection) co_return collection.error();
    co_return *collection&& secret_collection_get_locked(collection->get()) ? SecretStatus::locked
                                                                            : SecretStatus::notFound;
}

/// Lets the keyring ask for its password where needed.
Task<SecretStatus> unlock(Service service, std::vector<Ref<GDBusProxy>> objects, AttemptPtr attempt) {
    GList* list = nullptr;
    for (const auto& object : objects) list = g_list_prepend(list, object.get());
    attempt->asking = true;
    const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
        secret_service_unlock(service.get(), list, nullptr, done, data);
    });
    g_list_free(list);
    const auto result = co_await waiting;
    attempt->asking = false;
    ErrorPtr error;
    const gint unlocked = secret_service_unlock_finish(service.get(), result.get(), nullptr, error.out());
    if (error) co_return statusOf(*error.get());
    if (attempt->abandoned) co_return SecretStatus::locked;
    co_return unlocked == static_cast<gint>(objects.size()) ? SecretStatus::success : SecretStatus::locked;
}

template <class T>
std::vector<Ref<GDBusProxy>> asProxies(const std::vector<Ref<T>>& objects) {
    std::vector<Ref<GDBusProxy>> proxies;
    for (const auto& object : objects) proxies.push_back(Ref<GDBusProxy>::ref(object.template as<GDBusProxy>()));
    return proxies;
}

/// The matching items, unlocked; never an empty list.
Task<Result<KeyringItems, SecretStatus>> findUnlocked(Service service, SecretItem item, AttemptPtr attempt) {
    auto firstSearch = search(service, item, Secrets::skip);
    auto found = co_await firstSearch;
    if (!found) co_return Failure(found.error());
    if (found->empty()) {
        auto collectionTask = defaultCollection(service);
        const auto collection = co_await collectionTask;
        if (!collection) co_return Failure(collection.error());
        if (!*collection || !secret_collection_get_locked(collection->get())) co_return Failure(SecretStatus::notFound);
        auto unlocking = unlock(service, asProxies(std::vector{*collection}), attempt);
        const SecretStatus status = co_await unlocking;
        if (status != SecretStatus::success) co_return Failure(status);
        auto secondSearch = search(service, item, Secrets::skip);
        found = co_await secondSearch;
        if (!found) co_return Failure(found.error());
        if (found->empty()) co_return Failure(SecretStatus::notFound);
    }
    KeyringItems locked;
    for (const auto& keyringItem : *found) {
        if (secret_item_get_locked(keyringItem.get())) locked.push_back(keyringItem);
    }
    if (!locked.empty()) {
        auto unlocking = unlock(service, asProxies(locked), attempt);
        const SecretStatus status = co_await unlocking;
        if (status != SecretStatus::success) co_return Failure(status);
    }
    co_return std::move(*found);
}

Task<Result<std::string, SecretStatus>> readItem(Service service, SecretItem item) {
    auto searching = search(service, std::move(item), Secrets::load);
    const auto found = co_await searching;
    if (!found) co_return Failure(found.error());
    for (const auto& keyringItem : *found) {
        const ValuePtr value(secret_item_get_secret(keyringItem.get()));
        if (!value) continue;
        gsize length = 0;
        const char* const text = secret_value_get(value.get(), &length);
        co_return std::string(text, length);
    }
    if (!found->empty()) {
        co_return Failure(secret_item_get_locked(found->front().get()) ? SecretStatus::locked : SecretStatus::failed);
    }
    auto explaining = statusOfNothing(service);
    const SecretStatus status = co_await explaining;
    co_return Failure(status);
}

Task<SecretStatus> updateItem(Service service, SecretItem item, std::string secret, AttemptPtr attempt) {
    auto finding = findUnlocked(service, std::move(item), attempt);
    const auto found = co_await finding;
    if (!found) co_return found.error();
    // Two programs may have added the same item at once: keep all of them alike.
    for (const auto& keyringItem : *found) {
        const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
            secret_item_set_secret(keyringItem.get(), valueOf(secret).get(), nullptr, done, data);
        });
        const auto result = co_await waiting;
        ErrorPtr error;
        if (!secret_item_set_secret_finish(keyringItem.get(), result.get(), error.out()))
            co_return statusOf(*error.get());
    }
    co_return SecretStatus::success;
}

/// The keyring for new items, unlocked; made if there is none.
Task<Result<Collection, SecretStatus>> openCollection(Service service, AttemptPtr attempt) {
    auto finding = defaultCollection(service);
    auto collection = co_await finding;
    if (!collection) co_return Failure(collection.error());
    if (!*collection) {
        attempt->asking = true;
        const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
            secret_collection_create(service.get(), "Login", SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_CREATE_NONE,
                                     nullptr, done, data);
        });
        const auto result = co_await waiting;
        attempt->asking = false;
        ErrorPtr error;
        auto created = Collection::adopt(secret_collection_create_finish(result.get(), error.out()));
        if (error) co_return Failure(statusOf(*error.get()));
        if (!created || attempt->abandoned) co_return Failure(SecretStatus::locked);
        co_return created;
    }
    if (secret_collection_get_locked(collection->get())) {
        auto unlocking = unlock(service, asProxies(std::vector{*collection}), attempt);
        const SecretStatus status = co_await unlocking;
        if (status != SecretStatus::success) co_return Failure(status);
    }
    co_return std::move(*collection);
}

Task<SecretStatus> addItem(Service service, SecretItem item, std::string secret, std::string label,
                           AttemptPtr attempt) {
    auto opened = openCollection(service, attempt);
    const auto collection = co_await opened;
    if (!collection) co_return collection.error();
    // Without "replace": that would match the copy of a group as well.
    const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
        secret_item_create(collection->get(), &schema(), attributesOf(item).get(), label.c_str(), valueOf(secret).get(),
                           SECRET_ITEM_CREATE_NONE, nullptr, done, data);
    });
    const auto result = co_await waiting;
    ErrorPtr error;
    const auto created = KeyringItem::adopt(secret_item_create_finish(result.get(), error.out()));
    if (error) co_return statusOf(*error.get());
    co_return created ? SecretStatus::success : SecretStatus::failed;
}

Task<SecretStatus> removeItem(Service service, SecretItem item, AttemptPtr attempt) {
    auto finding = findUnlocked(service, std::move(item), attempt);
    const auto found = co_await finding;
    if (!found) co_return found.error();
    for (const auto& keyringItem : *found) {
        const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) {
            secret_item_delete(keyringItem.get(), nullptr, done, data);
        });
        const auto result = co_await waiting;
        ErrorPtr error;
        if (!secret_item_delete_finish(keyringItem.get(), result.get(), error.out())) co_return statusOf(*error.get());
    }
    co_return SecretStatus::success;
}

Task<SecretStatus> unlockItem(Service service, SecretItem item, AttemptPtr attempt) {
    auto finding = findUnlocked(service, std::move(item), attempt);
    const auto found = co_await finding;
    co_return found || found.error() == SecretStatus::notFound ? SecretStatus::success : found.error();
}

SecretStatus statusOf(SecretStatus status) {
    return status;
}

SecretStatus statusOf(const Result<std::string, SecretStatus>& result) {
    return result ? SecretStatus::success : result.error();
}

/// The outcome of an operation that failed so.
template <class T>
T failedWith(SecretStatus status) {
    if constexpr (std::is_same_v<T, SecretStatus>) {
        return status;
    } else {
        return Failure(status);
    }
}

template <class T>
using Operation = std::function<Task<T>(Service, AttemptPtr)>;

template <class T>
Task<T> withService(Operation<T> operation, AttemptPtr attempt) {
    auto opening = openService();
    const auto service = co_await opening;
    if (!service) co_return failedWith<T>(service.error());
    auto work = operation(*service, std::move(attempt));
    auto result = co_await work;
    co_return result;
}

/// A keyring that was restarted does not know the session that libsecret keeps, and fails; with a new session it may
/// not.
template <class T>
Task<T> withLiveSession(Operation<T> operation, AttemptPtr attempt) {
    auto first = withService<T>(operation, attempt);
    auto result = co_await first;
    if (statusOf(result) == SecretStatus::failed) {
        secret_service_disconnect();
        auto second = withService<T>(operation, attempt);
        result = co_await second;
    }
    co_return result;
}

template <class T>
Task<void> deliver(Task<T> work, Deferred<T> outcome) {
    auto result = co_await work;
    outcome.resolve(std::move(result));
}

/// Whether the keyring is given up by now: a service gets `patience.service`, a question to the user
/// `patience.question`.
class Watchdog {
public:
    Watchdog(LibsecretStore::Patience patience, AttemptPtr attempt, std::function<void(SecretStatus)> giveUp)
        : attempt_(std::move(attempt)), giveUp_(std::move(giveUp)) {
        timer_ = MainLoopTimer(patience.service, [this, patience] {
            if (!attempt_->asking) return stop(SecretStatus::noService);
            timer_ = MainLoopTimer(patience.question, [this] { stop(SecretStatus::locked); });
        });
    }

private:
    void stop(SecretStatus status) {
        attempt_->abandoned = true;
        // Whoever waits destroys this object.
        const auto giveUp = std::move(giveUp_);
        giveUp(status);
    }

    AttemptPtr attempt_;
    std::function<void(SecretStatus)> giveUp_;
    MainLoopTimer timer_;
};

/// The work's result, or that nobody answered in time; the work then goes on unobserved and writes nothing more once a
/// question is answered.
template <class T>
Task<T> within(LibsecretStore::Patience patience, Task<T> work, AttemptPtr attempt) {
    const Deferred<T> outcome;
    deliver(std::move(work), outcome).detach();
    const Watchdog watchdog(patience, std::move(attempt),
                            [outcome](SecretStatus status) { outcome.resolve(failedWith<T>(status)); });
    auto result = co_await outcome;
    co_return result;
}

template <class T>
Task<T> perform(LibsecretStore::Patience patience, Operation<T> operation) {
    const auto attempt = std::make_shared<Attempt>();
    return within(patience, withLiveSession<T>(std::move(operation), attempt), attempt);
}

}  // namespace

Task<Result<std::string, SecretStatus>> LibsecretStore::read(SecretItem item) {
    return perform<Result<std::string, SecretStatus>>(
        patience_, [item](Service service, const AttemptPtr&) { return readItem(std::move(service), item); });
}

Task<SecretStatus> LibsecretStore::update(SecretItem item, std::string secret) {
    return perform<SecretStatus>(patience_, [item, secret](Service service, AttemptPtr attempt) {
        return updateItem(std::move(service), item, secret, std::move(attempt));
    });
}

Task<SecretStatus> LibsecretStore::add(SecretItem item, std::string secret, std::string label) {
    return perform<SecretStatus>(patience_, [item, secret, label](Service service, AttemptPtr attempt) {
        return addItem(std::move(service), item, secret, label, std::move(attempt));
    });
}

Task<SecretStatus> LibsecretStore::remove(SecretItem item) {
    return perform<SecretStatus>(patience_, [item](Service service, AttemptPtr attempt) {
        return removeItem(std::move(service), item, std::move(attempt));
    });
}

Task<SecretStatus> LibsecretStore::unlock(SecretItem item) {
    return perform<SecretStatus>(patience_, [item](Service service, AttemptPtr attempt) {
        return unlockItem(std::move(service), item, std::move(attempt));
    });
}

}  // namespace parvela
