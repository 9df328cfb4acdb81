#include "Model/DailySummaryScheduler.h"

#include "Model/DailySummary.h"

#include <ParvelaKit/DeepLink.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <sstream>
#include <utility>
#include <vector>

namespace parvela {

namespace {

/// As far back as anybody sets a clock and forth again.
constexpr std::size_t daysRemembered = 16;
/// An alarm in the past would ring at once, again and again.
constexpr int mostDaysAhead = 4;
constexpr std::int64_t lastMinute = 24 * 60 - 1;

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

}  // namespace

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

    const auto minutes = std::clamp<std::int64_t>(prefs.dailySummaryMinutes(), 0, lastMinute);
    const auto today = clock_->today();
    auto slot = clock_->moment(today, minutes);
    if (slot <= clock_->now()) {
        if (!wasSent(today.text())) send(Occasion::scheduled).detach();
        for (int days = 1; days <= mostDaysAhead && slot <= clock_->now(); ++days) {
            slot = clock_->moment(today.addingDays(days), minutes);
        }
    }
    alarm_ = setAlarm_(slot, [weak = weak_from_this()] {
        // Rescheduling notices a slot that has passed, and a clock that was set back before it.
        if (const auto self = weak.lock()) self->reschedule();
    });
}

bool DailySummaryScheduler::wasSent(const std::string& day) const {
    const Preferences& prefs = model_->session.prefs();
    if (prefs.dailySummaryLastSent() == day) return true;
    const auto days = wordsOf(prefs.dailySummaryDaysSent().value_or(""));
    return std::ranges::find(days, day) != days.end();
}

void DailySummaryScheduler::noteSent(const std::string& day) const {
    const Preferences& prefs = model_->session.prefs();
    prefs.setDailySummaryLastSent(day);
    std::string days = day;
    std::size_t kept = 1;
    for (const std::string& earlier : wordsOf(prefs.dailySummaryDaysSent().value_or(""))) {
        if (earlier == day || kept == daysRemembered) continue;
        days += " " + earlier;
        ++kept;
    }
    prefs.setDailySummaryDaysSent(days);
}

Task<DailySummaryScheduler::Outcome> DailySummaryScheduler::send(Occasion occasion) {
    const auto self = shared_from_this();
    const auto today = clock_->today();
    if (occasion == Occasion::requested) {
        auto sending = fetchAndPost(today);
        auto outcome = co_await sending;
        co_return outcome;
    }
    if (isSending_ || !model_->session.prefs().dailySummaryEnabled() || wasSent(today.text())) co_return Outcome();
    isSending_ = true;
    auto sending = fetchAndPost(today);
    auto outcome = co_await sending;
    isSending_ = false;
    co_return outcome;
}

/// Called only while send() holds the scheduler.
Task<DailySummaryScheduler::Outcome> DailySummaryScheduler::fetchAndPost(CivilDate today) {
    auto making = model_->session.client();
    const auto api = co_await making;
    if (!api) co_return Outcome(Outcome::Case::notLinked, APIError::missingToken().message());

    TaskListOptions dueNow;
    dueNow.due = DueFilter::today;
    auto call = api->send<TasksResponse>(Endpoint::tasks(dueNow));
    const auto answer = co_await call;
    if (!answer) {
        const auto& error = answer.error().error();
        co_return Outcome(Outcome::Case::failed, error ? error->message() : std::string());
    }
    noteSent(today.text());
    auto summary = DailySummary::of(answer->tasks, today);
    notifier_->post({std::move(summary.title), std::move(summary.body), "daily-summary-" + today.text(),
                     DeepLinkTarget{DeepLinkTarget::Link{DeepLink{DeepLink::OpenPath{"/my"}}.url()}}});
    co_return Outcome(Outcome::Case::sent);
}

}  // namespace parvela
