#pragma once

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/OfflineQueue.h>

#include <string>

namespace parvela {

/// One sentence about the lines that are not on their boards yet, such as "3 lines wait. Next try in 2 min." Empty when
/// there are none.
std::string queueText(const OfflineQueueStatus& status, Instant now);

}  // namespace parvela
