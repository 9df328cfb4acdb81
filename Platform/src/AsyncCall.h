#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Task.h>

#include <memory>

#include <gio/gio.h>

namespace parvela {

/// Starts an asynchronous GIO call; its result arrives in the Deferred.
///
///     const auto waiting = startAsync([&](GAsyncReadyCallback done, gpointer data) { g_bus_get(…, done, data); });
///     const auto result = co_await waiting;
template <class Start>
Deferred<Ref<GAsyncResult>> startAsync(Start start) {
    using Waiting = Deferred<Ref<GAsyncResult>>;
    const Waiting waiting;
    start(
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Waiting> held(static_cast<Waiting*>(data));
            held->resolve(Ref<GAsyncResult>::ref(result));
        },
        new Waiting(waiting));
    return waiting;
}

}  // namespace parvela
