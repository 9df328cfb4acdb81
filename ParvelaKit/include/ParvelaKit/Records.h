#pragma once

/// Every record exchanged with the service. Records are plain values; json::decode and json::encode turn them from and
/// into JSON by their own field lists.

#include <ParvelaKit/Records/Boards.h>
#include <ParvelaKit/Records/Home.h>
#include <ParvelaKit/Records/Notifications.h>
#include <ParvelaKit/Records/Patch.h>
#include <ParvelaKit/Records/People.h>
#include <ParvelaKit/Records/Requests.h>
#include <ParvelaKit/Records/TaskDetail.h>
#include <ParvelaKit/Records/Tasks.h>
