#pragma once

#include <filesystem>

namespace parvela {

/// The right to send queued lines, held by at most one program at a time. The system drops it when the holder ends,
/// however it ends.
class QueueLock {
public:
    explicit QueueLock(std::filesystem::path file) : file_(std::move(file)) {}
    QueueLock(const QueueLock&) = delete;
    QueueLock& operator=(const QueueLock&) = delete;
    ~QueueLock() { release(); }

    enum class Attempt {
        taken,        ///< held from now on
        alreadyHeld,  ///< by this object
        refused,      ///< another program holds it
        unavailable,  ///< nobody can have it here; errno says why
    };

    Attempt take();
    void release() noexcept;
    bool isHeld() const noexcept { return descriptor_ >= 0; }

private:
    std::filesystem::path file_;
    int descriptor_ = -1;
};

}  // namespace parvela
