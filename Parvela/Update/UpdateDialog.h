#pragma once

#include <ParvelaKit/AppVersion.h>
#include <ParvelaKit/Appcast.h>

#include <functional>
#include <string>

#include <gtk/gtk.h>

namespace parvela {

enum class UpdateChoice { later, skip, download };

/// A dialog, not shown yet, that offers a version with its notes. `parent` may be null. Closing it means later. Like
/// every window it belongs to GTK until it is closed.
GtkWindow* newUpdateOffer(GtkWindow* parent, const appcast::Offer& offer, const AppVersion& current,
                          std::function<void(UpdateChoice)> chosen);

/// A dialog, not shown yet, that only tells something.
GtkWindow* newUpdateAnswer(GtkWindow* parent, const std::string& heading, const std::string& body);

}  // namespace parvela
