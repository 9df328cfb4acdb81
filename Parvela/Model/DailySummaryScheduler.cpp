#include "Model/DailySummaryScheduler.h"

#include "Model/DailySummary.h"

#include <ParvelaKit/DeepLink.h>

#include <utility>

namespace parvela {

DailySummaryScheduler::DailySummaryScheduler(std::shared_ptr<AppModel> model, std::shared_ptr<const Clock> clock,
                                             std::shared_ptr<Notifier> notifier, SetAlarm setAlarm)
    : model_(std::move(model)),
      clock_(std::move(clock)),
      notifier_(std::move(notifier)),
      setAlarm_(std::move(setAlarm)) {
}

void DailySummaryScheduler::reschedule() {
    alarm_ = {};
    const Preferences& prefs = model_->session.prefs();
    if (!prefs.dailySummaryEnabled()) return;

    const auto minutes = prefs.dailySummaryMinutes();
    const auto today = clock_->today();
    auto slot = clock_->moment(today, minutes);
    if (slot <= clock_->now()) {
        if (prefs.dailySummaryLastSent() != today.text()) send(Occasion::scheduled).detach();
        slot = clock_->moment(today.addingDays(1), minutes);
    }
    alarm_ = setAlarm_(slot, [weak = weak_from_this()] {
        // Rescheduling notices a slot that has passed, and a clock that was set back before it.
        if (const auto self = weak.lock()) self->reschedule();
    });
}

Task<void> DailySummaryScheduler::send(Occasion occasion) {
    const auto self = shared_from_this();
    const auto today = clock_->today();
    const Preferences prefs = model_->session.prefs();
    if (occasion == Occasion::scheduled) {
        if (isSending_ || !prefs.dailySummaryEnabled() || prefs.dailySummaryLastSent() == today.text()) co_return;
        isSending_ = true;
    }

    auto making = model_->session.client();
    const auto api = co_await making;
    if (api) {
        TaskListOptions dueNow;
        dueNow.due = DueFilter::today;
        auto call = api->send<TasksResponse>(Endpoint::tasks(dueNow));
        const auto answer = co_await call;
        if (answer) {
            prefs.setDailySummaryLastSent(today.text());
            auto summary = DailySummary::of(answer->tasks, today);
            notifier_->post({std::move(summary.title), std::move(summary.body), "daily-summary-" + today.text(),
                             DeepLinkTarget{DeepLinkTarget::Link{DeepLink{DeepLink::OpenPath{"/my"}}.url()}}});
        }
    }
    if (occasion == Occasion::scheduled) isSending_ = false;
}

}  // namespace parvela
