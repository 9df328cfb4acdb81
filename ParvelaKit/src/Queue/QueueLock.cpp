#include "Queue/QueueLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace parvela {

QueueLock::Attempt QueueLock::take() {
    if (isHeld()) return Attempt::alreadyHeld;
    const int descriptor = ::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) return Attempt::unavailable;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        const int reason = errno;
        ::close(descriptor);
        errno = reason;
        return reason == EWOULDBLOCK ? Attempt::refused : Attempt::unavailable;
    }
    descriptor_ = descriptor;
    return Attempt::taken;
}

void QueueLock::release() noexcept {
    if (const int descriptor = std::exchange(descriptor_, -1); descriptor >= 0) ::close(descriptor);
}

}  // namespace parvela
