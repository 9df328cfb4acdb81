#include "AppDelegate.h"

#include <cstdlib>

#include <glib.h>

/// The application with an update feed from the environment, where builds for people have theirs built in.
int main(int argc, char** argv) {
    using namespace parvela;
    const char* const address = std::getenv("PARVELA_TEST_FEED");
    const char* const key = std::getenv("PARVELA_TEST_FEED_KEY");
    g_set_application_name("Parvela");
    AppDelegate delegate(UpdateFeed::from(address ? address : "", key ? key : ""));
    return delegate.run(argc, argv);
}
