#pragma once

#include "Model/AppModel.h"
#include "Model/Notifier.h"

#include <functional>
#include <memory>
#include <string>

namespace parvela {

/// Posts the "due today" notification once a day at the time that the user chose. A slot that passed while the machine
/// slept or the program was not running is made up for at the next launch or wake.
///
/// Held by a shared pointer: a summary being fetched keeps the scheduler alive until it is posted.
class DailySummaryScheduler : public std::enable_shared_from_this<DailySummaryScheduler> {
public:
    /// Calls the function once, when the wall clock reaches the moment (up to 30 seconds late) or has been set.
    /// Dropping the subscription takes the call back.
    using SetAlarm = std::function<Subscription(Instant, std::function<void()>)>;
    enum class Occasion { scheduled, requested };

    /// What became of a summary.
    struct Outcome {
        enum class Case { sent, notDue, notLinked, failed };
        Case kind = Case::notDue;
        std::string problem{};  ///< for the user, when it failed
    };

    DailySummaryScheduler(std::shared_ptr<AppModel> model, std::shared_ptr<const Clock> clock,
                          std::shared_ptr<Notifier> notifier, SetAlarm setAlarm);

    /// Sets the alarm for the next slot, and makes up for a missed one. Called at launch, after waking up, and when the
    /// setting, the clock or the time zone has changed.
    void reschedule();

    /// Fetches what is due and posts it. A scheduled summary is sent at most once a day and only while switched on; a
    /// requested one always. Without a link, or when the service fails, nothing is posted and nothing noted.
    Task<Outcome> send(Occasion occasion);

private:
    bool wasSent(const std::string& day) const;
    void noteSent(const std::string& day) const;
    Task<Outcome> fetchAndPost(CivilDate today);

    std::shared_ptr<AppModel> model_;
    std::shared_ptr<const Clock> clock_;
    std::shared_ptr<Notifier> notifier_;
    SetAlarm setAlarm_;
    Subscription alarm_;
    bool isSending_ = false;  // a scheduled one
};

}  // namespace parvela
