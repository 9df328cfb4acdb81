#include "Support/EarlyApplication.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

struct EarlyApplication {
    AdwApplication parent;
    std::function<void()>* act;
};

struct EarlyApplicationClass {
    AdwApplicationClass parent;
};

gpointer parentClass = nullptr;

void startup(GApplication* application) {
    // Window managers and docks match windows to the desktop entry by the program's name. Until here it was what people
    // type, for the help.
    g_set_prgname(g_application_get_application_id(application));
    if (!gtk_init_check()) {
        fmt::print(stderr, "parvela: There is no display. Parvela's window needs a desktop session.\n");
        std::exit(EXIT_FAILURE);
    }
    (*reinterpret_cast<EarlyApplication*>(application)->act)();
    G_APPLICATION_CLASS(parentClass)->startup(application);
}

void finalize(GObject* application) {
    delete reinterpret_cast<EarlyApplication*>(application)->act;
    G_OBJECT_CLASS(parentClass)->finalize(application);
}

void initializeClass(gpointer self, gpointer) {
    parentClass = g_type_class_peek_parent(self);
    G_APPLICATION_CLASS(self)->startup = startup;
    G_OBJECT_CLASS(self)->finalize = finalize;
}

GType earlyApplicationType() {
    static const GType type =
        g_type_register_static_simple(ADW_TYPE_APPLICATION, "ParvelaEarlyApplication", sizeof(EarlyApplicationClass),
                                      initializeClass, sizeof(EarlyApplication), nullptr, GTypeFlags{});
    return type;
}

}  // namespace

Ref<AdwApplication> makeEarlyApplication(const char* id, GApplicationFlags flags, const char* resources,
                                         std::function<void()> act) {
    auto application = Ref<AdwApplication>::adopt(
        ADW_APPLICATION(g_object_new(earlyApplicationType(), "application-id", id, "flags", flags,  //
                                     "resource-base-path", resources, nullptr)));
    reinterpret_cast<EarlyApplication*>(application.get())->act =
        std::make_unique<std::function<void()>>(std::move(act)).release();
    return application;
}

}  // namespace parvela
