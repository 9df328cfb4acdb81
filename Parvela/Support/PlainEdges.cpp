#include "Support/PlainEdges.h"

namespace parvela {

PlainEdges::PlainEdges(GdkDisplay* display)
    : display_(Ref<GdkDisplay>::ref(display)), style_(Ref<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    gtk_css_provider_load_from_resource(style_.get(), "/app/parvela/desktop/style-plain.css");
    compositedChanged_ = connect<void(GdkDisplay*, GParamSpec*)>(display, "notify::composited",
                                                                 [this](GdkDisplay*, GParamSpec*) { update(); });
    update();
}

PlainEdges::~PlainEdges() {
    gtk_style_context_remove_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(style_.get()));
}

void PlainEdges::update() {
    if (gdk_display_is_composited(display_.get())) {
        gtk_style_context_remove_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(style_.get()));
    } else {
        gtk_style_context_add_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(style_.get()),
                                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    }
}

}  // namespace parvela
