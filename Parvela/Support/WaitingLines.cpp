#include "Support/WaitingLines.h"

#include <Platform/OfflineQueueEnvironment.h>

#include <chrono>
#include <utility>

#include <fmt/format.h>
#include <gio/gio.h>

namespace parvela {

namespace {

/// A network that comes up announces itself several times.
constexpr std::chrono::seconds networkPatience{1};

std::string counted(std::size_t count, const char* singular, const char* plural) {
    return count == 1 ? singular : fmt::format("{} {}", count, plural);
}

}  // namespace

WaitingLines::WaitingLines(std::shared_ptr<AppModel> model, std::shared_ptr<const Clock> clock,
                           std::function<void(const std::string&)> report)
    : model_(std::move(model)),
      clock_(std::move(clock)),
      report_(std::move(report)),
      queue_(offlineQueueEnvironment(*clock_)),
      seen_(queue_.status().get()),
      haveWaited_(seen_.waiting > 0) {
    status_ = queue_.status().observe([this](const OfflineQueueStatus& status) { statusChanged(status); });
    if (seen_.notice) report_(*seen_.notice);
    network_ = connect<void(GNetworkMonitor*, gboolean)>(
        g_network_monitor_get_default(), "network-changed",
        [this](GNetworkMonitor*, gboolean) { networkSettles_ = MainLoopTimer(networkPatience, [this] { tryNow(); }); });
}

Task<void> WaitingLines::renewClient() {
    const auto self = shared_from_this();
    const auto renewal = ++renewals_;
    auto making = model_->session.client();
    auto api = co_await making;
    if (renewal == renewals_) queue_.setClient(std::move(api));
}

void WaitingLines::statusChanged(const OfflineQueueStatus& status) {
    const auto before = std::exchange(seen_, status);
    if (status.notice && status.notice != before.notice) report_(*status.notice);
    if (status.failed > before.failed) {
        report_(counted(status.failed - before.failed, "A waiting line", "waiting lines") + " could not be added.");
    }
    if (status.nextTry && *status.nextTry > clock_->now()) haveWaited_ = true;
    if (before.waiting + before.sending > 0 && status.waiting + status.sending == 0 && status.failed <= before.failed) {
        // What was added at once is shown where it was typed. A list that is damaged or gone has added nothing.
        if (std::exchange(haveWaited_, false) && !status.notice) report_("The lines that waited were added.");
        model_->tasksChanged();
    }
}

}  // namespace parvela
