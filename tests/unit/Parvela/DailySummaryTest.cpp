#include "Model/DailySummary.h"
#include "Model/DailySummaryScheduler.h"
#include "support/LinkedDevice.h"

#include <map>
#include <set>

namespace parvela {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* dueRoute = "GET /api/v1/tasks?due=today";

TaskSummary dueTask(const std::string& title, const std::string& dueDate, bool done = false) {
    return {.title = title, .dueDate = dueDate, .done = done};
}

TEST(DailySummary, countsOpenTasksAndNamesTheFirstThree) {
    const CivilDate today{2026, 6, 10};
    const std::string now = "2026-06-10";
    const std::string past = "2026-06-09";
    const struct {
        std::vector<TaskSummary> tasks;
        DailySummary expected;
    } cases[] = {
        {{}, {"Nothing due today", "Your Parvela list is clear."}},
        {{dueTask("a", past, true)}, {"Nothing due today", "Your Parvela list is clear."}},
        {{dueTask("a", now), dueTask("b", now, true)}, {"1 task due today", "a"}},
        {{dueTask("a", now), dueTask("b", now), dueTask("c", now), dueTask("d", now)},
         {"4 tasks due today", "a\nb\nc\nand 1 more"}},
        {{dueTask("a", past), dueTask("b", now), dueTask("c", now), dueTask("d", now), dueTask("e", past)},
         {"5 tasks due today", "a\nb\nc\nand 2 more\n2 overdue"}},
    };
    for (const auto& [tasks, expected] : cases) {
        const auto summary = DailySummary::of(tasks, today);
        EXPECT_EQ(summary.title, expected.title);
        EXPECT_EQ(summary.body, expected.body);
    }
}

class RecordingNotifier final : public Notifier {
public:
    Task<void> requestAuthorization() override { co_return; }
    void post(UserNotification notification) override { posted.push_back(std::move(notification)); }

    std::vector<UserNotification> posted;
};

/// The clock starts at 09:00 UTC on 2026-06-10; the summary is set to 09:30 unless a test says otherwise.
class DailySummarySchedulerTest : public testing::Test, protected test::LinkedDevice {
protected:
    DailySummarySchedulerTest() {
        prefs.setDailySummaryEnabled(true);
        prefs.setDailySummaryMinutes(9 * 60 + 30);
    }

    std::shared_ptr<DailySummaryScheduler> makeScheduler() {
        AppModelEnvironment environment{clock, std::make_shared<NotificationCentre>(), [](const auto&) {}, [] {}};
        const auto setAlarm = [this](Instant when, std::function<void()> action) {
            alarm = when;
            auto kept = std::make_shared<std::function<void()>>(std::move(action));
            ring = kept;
            return Subscription(kept);
        };
        return std::make_shared<DailySummaryScheduler>(AppModel::create(session(), environment), clock, notifier,
                                                       setAlarm);
    }

    void expectFetch() { network.answer(dueRoute, 200, R"({"today":"2026-06-10","tasks":[]})"); }
    void ringAlarm() {
        if (const auto action = ring.lock()) (*action)();
    }
    std::vector<std::string> posted() const {
        std::vector<std::string> identifiers;
        for (const auto& each : notifier->posted) identifiers.push_back(each.identifier);
        return identifiers;
    }

    const Instant start = clock->now();
    std::shared_ptr<RecordingNotifier> notifier = std::make_shared<RecordingNotifier>();
    Instant alarm{};
    std::weak_ptr<std::function<void()>> ring;
    std::shared_ptr<DailySummaryScheduler> scheduler = makeScheduler();
};

TEST_F(DailySummarySchedulerTest, sendsAtTheSlotAndThenWaitsForTomorrow) {
    scheduler->reschedule();
    EXPECT_EQ(alarm, start + 30min);
    EXPECT_THAT(posted(), IsEmpty());

    clock->advance(30min);
    expectFetch();
    ringAlarm();
    EXPECT_THAT(posted(), ElementsAre("daily-summary-2026-06-10"));
    EXPECT_EQ(std::get<DeepLinkTarget::Link>(notifier->posted[0].target->target).url.text(), "parvela://open?path=/my");
    EXPECT_EQ(alarm, start + 24h + 30min);
    ringAlarm();
    EXPECT_EQ(notifier->posted.size(), 1U);
}

TEST_F(DailySummarySchedulerTest, makesUpForAMissedSlotOnceADay) {
    prefs.setDailySummaryMinutes(8 * 60);
    expectFetch();
    scheduler->reschedule();
    EXPECT_THAT(posted(), ElementsAre("daily-summary-2026-06-10"));
    EXPECT_EQ(alarm, start + 23h);
    scheduler->reschedule();
    makeScheduler()->reschedule();
    EXPECT_EQ(notifier->posted.size(), 1U);
}

TEST_F(DailySummarySchedulerTest, twoOccasionsAtOnceSendOneSummary) {
    prefs.setDailySummaryMinutes(8 * 60);
    const auto answer = network.hold(dueRoute);
    scheduler->reschedule();
    scheduler->reschedule();
    answer.resolve(network.ok(R"({"tasks":[]})"));
    EXPECT_EQ(network.requests().size(), 1U);
    EXPECT_EQ(notifier->posted.size(), 1U);
}

TEST_F(DailySummarySchedulerTest, aFailureIsSilentAndTriedAgainAtTheNextOccasion) {
    prefs.setDailySummaryMinutes(8 * 60);
    network.fail(dueRoute, TransportError::unreachable);
    scheduler->reschedule();
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_EQ(prefs.dailySummaryLastSent(), std::nullopt);
    expectFetch();
    scheduler->reschedule();
    EXPECT_EQ(notifier->posted.size(), 1U);
}

TEST_F(DailySummarySchedulerTest, aClockSetBackDoesNotSendBeforeTheSlot) {
    scheduler->reschedule();
    clock->advance(-2h);
    ringAlarm();
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_EQ(alarm, start + 30min);
}

TEST_F(DailySummarySchedulerTest, theNextSlotIsNeverInThePast) {
    prefs.setDailySummaryMinutes(8 * 60);
    clock->momentsAhead = 26h;
    expectFetch();
    scheduler->reschedule();
    EXPECT_EQ(alarm, start + 21h);
}

TEST_F(DailySummarySchedulerTest, aClockSetToOtherDaysAndBackSendsEachDayOnce) {
    prefs.setDailySummaryMinutes(8 * 60);
    for (const auto days : {0, -1, 1, -2, 2, 0}) {
        clock->time = start + days * 24h;
        network.answer(dueRoute, 200, R"({"tasks":[]})");
        makeScheduler()->reschedule();  // what was sent is known after a new launch too
    }
    EXPECT_THAT(posted(),
                ElementsAre("daily-summary-2026-06-10", "daily-summary-2026-06-09", "daily-summary-2026-06-11",
                            "daily-summary-2026-06-08", "daily-summary-2026-06-12"));
}

TEST_F(DailySummarySchedulerTest, aJourneyThroughTimeZonesSendsOnEveryDateOnce) {
    const std::map<int, std::chrono::hours> flights{{5, 14h}, {30, -10h}, {33, 2h}, {70, -12h}, {71, 14h}, {100, 0h}};
    std::set<std::string> reached;
    for (int hour = 0; hour < 150; ++hour) {
        clock->time = start + hour * 1h;
        network.answer(dueRoute, 200, R"({"tasks":[]})");
        if (const auto flight = flights.find(hour); flight != flights.end() || hour == 0) {
            if (hour > 0) clock->zone = flight->second;
            scheduler->reschedule();
        } else if (clock->time >= alarm) {
            ringAlarm();
        }
        if (clock->now() >= clock->moment(clock->today(), 9 * 60 + 30)) {
            reached.insert("daily-summary-" + clock->today().text());
        }
    }
    EXPECT_THAT(posted(), testing::UnorderedElementsAreArray(reached));
}

TEST_F(DailySummarySchedulerTest, aYearOfDaysLeavesASmallNote) {
    for (int day = 0; day < 365; ++day) {
        clock->time = start + day * 24h + 1h;
        expectFetch();
        scheduler->reschedule();
    }
    EXPECT_EQ(notifier->posted.size(), 365U);
    EXPECT_LT(prefs.dailySummaryDaysSent()->size(), 200U);
}

TEST_F(DailySummarySchedulerTest, aTimeOutsideTheDayIsTakenForItsEdge) {
    prefs.setDailySummaryMinutes(100'000);
    scheduler->reschedule();
    EXPECT_EQ(alarm, start + 15h - 1min);
    prefs.setDailySummaryMinutes(-1);
    expectFetch();
    scheduler->reschedule();
    EXPECT_EQ(alarm, start + 15h);
}

TEST_F(DailySummarySchedulerTest, switchedOffOrNotLinkedNothingIsSent) {
    prefs.setDailySummaryMinutes(8 * 60);
    prefs.setDailySummaryEnabled(false);
    scheduler->reschedule();
    EXPECT_TRUE(ring.expired());
    prefs.setDailySummaryEnabled(true);
    unlink();
    scheduler->reschedule();
    EXPECT_THAT(network.requests(), IsEmpty());
}

TEST_F(DailySummarySchedulerTest, aRequestedSummaryIsSentEveryTime) {
    prefs.setDailySummaryEnabled(false);
    using Outcome = DailySummaryScheduler::Outcome;
    const auto request = [this] { return scheduler->send(DailySummaryScheduler::Occasion::requested).result(); };
    for (int i = 0; i < 2; ++i) {
        expectFetch();
        EXPECT_EQ(request().kind, Outcome::Case::sent);
    }
    EXPECT_EQ(notifier->posted.size(), 2U);
    network.fail(dueRoute, TransportError::unreachable);
    const auto failed = request();
    EXPECT_EQ(failed.kind, Outcome::Case::failed);
    EXPECT_NE(failed.problem, "");
    unlink();
    EXPECT_EQ(request().kind, Outcome::Case::notLinked);
}

}  // namespace
}  // namespace parvela
