#pragma once

#include <functional>
#include <memory>

namespace parvela {

/// Tells when the machine woke up from sleep: by logind, or else by the time that the clocks disagree about.
class SleepMonitor {
public:
    /// `onWake` is called in the main loop.
    explicit SleepMonitor(std::function<void()> onWake);
    SleepMonitor(const SleepMonitor&) = delete;
    SleepMonitor& operator=(const SleepMonitor&) = delete;
    ~SleepMonitor();

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace parvela
