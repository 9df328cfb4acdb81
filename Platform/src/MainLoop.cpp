#include <Platform/MainLoop.h>

#include <mutex>
#include <variant>

namespace parvela {

namespace {

using Action = std::function<void()>;

GSource* attach(GSource* source, GMainContext* context, Action action, GSourceFunc dispatch) {
    g_source_set_callback(source, dispatch, new Action(std::move(action)),
                          [](gpointer data) { delete static_cast<Action*>(data); });
    g_source_attach(source, context);
    return source;
}

gboolean callOnce(gpointer data) {
    (*static_cast<Action*>(data))();
    return G_SOURCE_REMOVE;
}

gboolean callAgain(gpointer data) {
    (*static_cast<Action*>(data))();
    return G_SOURCE_CONTINUE;
}

void runSoonOn(GMainContext* context, Action action) {
    GSource* const source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_unref(attach(source, context, std::move(action), callOnce));
}

}  // namespace

MainLoopTimer::MainLoopTimer(std::chrono::milliseconds interval, Action action, Kind kind)
    : source_(
          attach(g_timeout_source_new(
                     static_cast<guint>(std::clamp<std::chrono::milliseconds::rep>(interval.count(), 0, G_MAXUINT))),
                 g_main_context_get_thread_default(), std::move(action), kind == Kind::once ? callOnce : callAgain)) {
}

MainLoopTimer& MainLoopTimer::operator=(MainLoopTimer&& other) noexcept {
    reset();
    source_ = std::move(other.source_);
    return *this;
}

void MainLoopTimer::reset() noexcept {
    source_.reset();
}

bool MainLoopTimer::isActive() const noexcept {
    return source_ && !g_source_is_destroyed(source_.get());
}

void MainLoopTimer::SourceDeleter::operator()(GSource* source) const noexcept {
    g_source_destroy(source);
    g_source_unref(source);
}

void runSoon(Action action) {
    runSoonOn(g_main_context_get_thread_default(), std::move(action));
}

struct StopWatch::Shared {
    GMainContext* context = g_main_context_ref_thread_default();
    Action action;

    ~Shared() { g_main_context_unref(context); }
};

// The stop request may come from another thread, so it only posts; whether anybody still cares is looked up on arrival.
StopWatch::StopWatch(std::stop_token stop, Action action)
    : shared_(std::make_shared<Shared>()),
      callback_((shared_->action = std::move(action), std::move(stop)), [weak = std::weak_ptr(shared_)] {
          const auto shared = weak.lock();
          if (!shared) return;
          runSoonOn(shared->context, [weak] {
              if (const auto alive = weak.lock()) alive->action();
          });
      }) {
}

Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop) {
    const Deferred<std::monostate> over;
    const MainLoopTimer timer(duration, [over] { over.resolve({}); });
    const StopWatch watch(std::move(stop), [over] { over.resolve({}); });
    co_await over;
}

}  // namespace parvela
