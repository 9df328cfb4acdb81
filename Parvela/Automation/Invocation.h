#pragma once

#include <ParvelaKit/ParvelaIntents.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include <gio/gio.h>

namespace parvela {

/// How many calls from other programs may be under way at once. More are refused, so that a program that floods costs
/// no memory.
class CallGate {
public:
    static constexpr std::size_t mostCalls = 16;

    /// A call under way; counts until it is destroyed.
    using Ticket = std::shared_ptr<void>;

    /// None when there are too many.
    Ticket enter() {
        if (count_.use_count() > static_cast<long>(mostCalls)) return nullptr;
        return count_;
    }
    bool isIdle() const { return count_.use_count() == 1; }

private:
    std::shared_ptr<int> count_ = std::make_shared<int>(0);
};

/// One call from another program, to be answered once. It is answered with an error when nobody does.
class Invocation {
public:
    Invocation(GDBusMethodInvocation* invocation, CallGate::Ticket ticket) noexcept
        : invocation_(invocation), ticket_(std::move(ticket)) {}
    Invocation(Invocation&& other) noexcept
        : invocation_(std::exchange(other.invocation_, nullptr)), ticket_(std::move(other.ticket_)) {}
    Invocation& operator=(Invocation&&) = delete;
    ~Invocation();

    /// For what goes on after the answer, and is a call under way until then.
    CallGate::Ticket ticket() const { return ticket_; }

    /// A floating tuple, which is consumed; null for one without values.
    void answer(GVariant* values);
    /// `name` is what follows "app.parvela.Error.".
    void fail(std::string_view name, const std::string& message);
    void fail(const IntentError& error);

private:
    GDBusMethodInvocation* invocation_;
    CallGate::Ticket ticket_;
};

}  // namespace parvela
