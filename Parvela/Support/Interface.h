#pragma once

#include <ParvelaKit/GLibPtr.h>

#include <string>

#include <gtk/gtk.h>

namespace parvela {

/// One layout of the application's resources, built.
class Interface {
public:
    explicit Interface(const std::string& file)
        : builder_(Ref<GtkBuilder>::adopt(gtk_builder_new_from_resource(("/app/parvela/desktop/" + file).c_str()))) {}

    /// The object of that id. A name that the layout does not have is a programming error.
    template <class T>
    T* get(const char* id) const {
        GObject* const object = gtk_builder_get_object(builder_.get(), id);
        if (!object) g_error("no object \"%s\" in the layout", id);
        return reinterpret_cast<T*>(object);
    }

private:
    Ref<GtkBuilder> builder_;
};

}  // namespace parvela
