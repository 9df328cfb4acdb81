#include "AppDelegate.h"

#include <glib.h>

int main(int argc, char** argv) {
    using namespace parvela;
    // Window managers and docks match windows to the desktop entry by the program's name.
    g_set_prgname(PARVELA_APP_ID);
    g_set_application_name("Parvela");
    AppDelegate delegate(UpdateFeed::ofThisBuild());
    return delegate.run(argc, argv);
}
