#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <functional>

#include <adwaita.h>

namespace parvela {

/// An application that lets its owner act at launch once the toolkit has its display, but before style sheets and icons
/// are read: what takes long elsewhere can begin while they are. `act` is called in the first instance only, ahead of
/// the handlers of "startup", and must outlive the application's start.
Ref<AdwApplication> makeEarlyApplication(const char* id, GApplicationFlags flags, const char* resources,
                                         std::function<void()> act);

}  // namespace parvela
