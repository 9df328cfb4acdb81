#include "Web/CertificateProblem.h"
#include "Web/CrashGuard.h"
#include "Web/PageRetry.h"

#include <chrono>

using namespace parvela;
using namespace std::chrono_literals;

TEST(CrashGuard, reloadsAPageThatDiesNowAndThenButNotOneThatDiesAtEveryLoad) {
    CrashGuard guard;
    const CrashGuard::TimePoint start{};
    EXPECT_TRUE(guard.mayReload(start));
    EXPECT_TRUE(guard.mayReload(start + 20s));
    EXPECT_FALSE(guard.mayReload(start + 40s));
    EXPECT_FALSE(guard.mayReload(start + 59s)) << "refused reloads count as well";
    EXPECT_TRUE(guard.mayReload(start + 200s)) << "what is long past is forgiven";

    CrashGuard patient;
    for (int hour = 0; hour < 24; ++hour) EXPECT_TRUE(patient.mayReload(start + std::chrono::hours{hour}));
}

TEST(PageRetry, asksLessAndLessOftenDownToTwiceAMinute) {
    auto delay = PageRetry::firstDelay;
    std::chrono::milliseconds whole{0};
    for (int attempt = 0; attempt < 100; ++attempt) {
        const auto next = PageRetry::nextDelay(delay);
        EXPECT_GE(next, delay);
        EXPECT_LE(next, PageRetry::longestDelay);
        whole += delay;
        delay = next;
    }
    EXPECT_EQ(delay, 30s);
    EXPECT_GT(whole, 45min) << "a hundred attempts are spread over most of an hour";
}

TEST(CertificateProblem, namesTheHostAndTheGravestReason) {
    const struct {
        int problems;
        const char* reason;
    } cases[] = {
        {G_TLS_CERTIFICATE_EXPIRED, "has expired"},
        {G_TLS_CERTIFICATE_UNKNOWN_CA, "signed by nobody whom this computer trusts"},
        {G_TLS_CERTIFICATE_BAD_IDENTITY | G_TLS_CERTIFICATE_UNKNOWN_CA, "belongs to another site"},
        {G_TLS_CERTIFICATE_NOT_ACTIVATED, "clock"},
        {G_TLS_CERTIFICATE_REVOKED | G_TLS_CERTIFICATE_EXPIRED, "was revoked"},
        {G_TLS_CERTIFICATE_INSECURE, "no longer safe"},
        {G_TLS_CERTIFICATE_GENERIC_ERROR, "could not be checked"},
    };
    for (const auto& [problems, reason] : cases) {
        const std::string message = certificateMessage("tasks.example", static_cast<GTlsCertificateFlags>(problems));
        EXPECT_THAT(message, testing::HasSubstr("tasks.example"));
        EXPECT_THAT(message, testing::HasSubstr(reason)) << problems;
    }
}
