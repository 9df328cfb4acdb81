#include "AppDelegate.h"

#include <malloc.h>

#include <glib.h>

int main(int argc, char** argv) {
    using namespace parvela;
    // What a burst needed goes back to the system. By default the limits would grow with the largest block ever freed.
    constexpr int largestKeptBlock = 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, largestKeptBlock);
    mallopt(M_TRIM_THRESHOLD, largestKeptBlock);
    g_set_application_name("Parvela");
    AppDelegate delegate(UpdateFeed::ofThisBuild());
    return delegate.run(argc, argv);
}
