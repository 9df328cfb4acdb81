#pragma once

#include <ParvelaKit/SecretStore.h>

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace parvela::test {

/// A keyring in memory that writes down what it was asked, fails when told to, and can keep its callers waiting.
///
/// Calls are recorded as "read service account group", the group only when there is one.
class FakeSecretStore final : public SecretStore {
public:
    Task<Result<std::string, SecretStatus>> read(SecretItem item) override {
        auto call = begin("read", item);
        const auto status = co_await call;
        if (status != SecretStatus::success) co_return Failure(status);
        const auto found = secrets.find(nameOf(item));
        if (found == secrets.end()) co_return Failure(SecretStatus::notFound);
        co_return found->second;
    }
    Task<SecretStatus> update(SecretItem item, std::string secret) override {
        auto call = begin("update", item);
        const auto status = co_await call;
        if (status != SecretStatus::success) co_return status;
        const auto found = secrets.find(nameOf(item));
        if (found == secrets.end()) co_return SecretStatus::notFound;
        found->second = std::move(secret);
        co_return SecretStatus::success;
    }
    Task<SecretStatus> add(SecretItem item, std::string secret, std::string label) override {
        auto call = begin("add", item);
        const auto status = co_await call;
        if (status != SecretStatus::success) co_return status;
        secrets[nameOf(item)] = std::move(secret);
        labels[nameOf(item)] = std::move(label);
        co_return SecretStatus::success;
    }
    Task<SecretStatus> remove(SecretItem item) override {
        auto call = begin("remove", item);
        const auto status = co_await call;
        if (status != SecretStatus::success) co_return status;
        co_return secrets.erase(nameOf(item)) > 0 ? SecretStatus::success : SecretStatus::notFound;
    }
    Task<SecretStatus> unlock(SecretItem item) override {
        auto call = begin("unlock", item);
        const auto status = co_await call;
        co_return status;
    }

    static std::string nameOf(const SecretItem& item) {
        return item.service + " " + item.account + (item.group ? " " + *item.group : "");
    }

    /// From now on `operation` ("read", "update", "add" or "remove") ends with `status` for every item, or only for
    /// `item` when given as nameOf() writes it.
    void fail(const std::string& operation, SecretStatus status, const std::string& item = {}) {
        failures[operation + (item.empty() ? "" : " " + item)] = status;
    }
    /// Every call from now on waits until release() lets it go.
    void hold() { holding = true; }
    /// Lets the oldest waiting call go on.
    void releaseOne() {
        const auto gate = waiting.front();
        waiting.pop_front();
        gate.resolve(true);
    }
    /// Lets all waiting and later calls go on.
    void release() {
        holding = false;
        while (!waiting.empty()) releaseOne();
    }

    std::map<std::string, std::string> secrets;
    std::map<std::string, std::string> labels;
    std::vector<std::string> calls;
    std::map<std::string, SecretStatus> failures;
    std::deque<Deferred<bool>> waiting;
    bool holding = false;

private:
    /// Writes the call down and waits while calls are held. How it is to end.
    Task<SecretStatus> begin(std::string operation, SecretItem item) {
        const std::string name = operation + " " + nameOf(item);
        calls.push_back(name);
        auto status = SecretStatus::success;
        for (const auto& key : {operation, name}) {
            if (const auto found = failures.find(key); found != failures.end()) status = found->second;
        }
        if (holding) co_await waiting.emplace_back();
        co_return status;
    }
};

}  // namespace parvela::test
