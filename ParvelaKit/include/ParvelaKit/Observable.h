#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace parvela {

/// Keeps one observer registered; destroying it ends the observation. May outlive the observed value.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> token) : token_(std::move(token)) {}

private:
    std::shared_ptr<void> token_;
};

/// A value that tells its readers when it changes. Setting an equal value is silent. Single-threaded.
template <class T>
class Observable {
public:
    Observable() = default;
    explicit Observable(T value) : value_(std::move(value)) {}
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    const T& get() const noexcept { return value_; }

    void set(T value) {
        if (value == value_) return;
        value_ = std::move(value);
        notify();
    }

    /// Calls `observer` after each change, until the subscription goes. Observers may subscribe, unsubscribe and set.
    [[nodiscard]] Subscription observe(std::function<void(const T&)> observer) const {
        auto entry = std::make_shared<std::function<void(const T&)>>(std::move(observer));
        observers_.push_back(entry);
        return Subscription(std::move(entry));
    }

private:
    using Observer = std::weak_ptr<std::function<void(const T&)>>;

    void notify() {
        std::erase_if(observers_, [](const Observer& observer) { return observer.expired(); });
        const auto current = observers_;
        for (const Observer& observer : current) {
            if (auto call = observer.lock()) (*call)(value_);
        }
    }

    T value_{};
    mutable std::vector<Observer> observers_;  // who watches is no part of the value
};

}  // namespace parvela
