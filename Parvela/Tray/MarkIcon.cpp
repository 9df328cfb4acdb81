#include "Tray/MarkIcon.h"

#include <ParvelaKit/GLibPtr.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

namespace parvela {

namespace {

constexpr const char* markResource = "/app/parvela/desktop/icons/scalable/actions/parvela-mark-symbolic.svg";
/// What symbolic icons are drawn in, and the theme replaces.
constexpr std::string_view symbolicColour = "#2e3436";
constexpr std::string_view lightColour = "#f6f5f4";
constexpr std::array<int, 5> sizes{16, 22, 24, 32, 48};

Ref<GdkPixbuf> draw(const std::string& svg, int size) {
    const auto loader = Ref<GdkPixbufLoader>::adopt(gdk_pixbuf_loader_new_with_type("svg", nullptr));
    if (!loader) return nullptr;
    gdk_pixbuf_loader_set_size(loader.get(), size, size);
    const auto* const bytes = reinterpret_cast<const guchar*>(svg.data());
    const bool written = gdk_pixbuf_loader_write(loader.get(), bytes, svg.size(), nullptr);
    // A loader must be closed whether it was fed or not.
    const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr);
    GdkPixbuf* const drawn = written && closed ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
    const bool isUsable = drawn && gdk_pixbuf_get_n_channels(drawn) == 4 && gdk_pixbuf_get_width(drawn) == size &&
                          gdk_pixbuf_get_height(drawn) == size;
    return isUsable ? Ref<GdkPixbuf>::ref(drawn) : nullptr;
}

TrayIcon argb(GdkPixbuf* image, int size) {
    TrayIcon icon{.size = size, .pixels = {}};
    const guchar* const pixels = gdk_pixbuf_read_pixels(image);
    const int stride = gdk_pixbuf_get_rowstride(image);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const guchar* const rgba = pixels + static_cast<std::ptrdiff_t>(y) * stride + 4 * x;
            icon.pixels.insert(icon.pixels.end(), {rgba[3], rgba[0], rgba[1], rgba[2]});
        }
    }
    return icon;
}

}  // namespace

std::vector<TrayIcon> markIcons(MarkTone tone) {
    const BytesPtr resource(g_resources_lookup_data(markResource, G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
    if (!resource) return {};
    gsize length = 0;
    const auto* const bytes = static_cast<const char*>(g_bytes_get_data(resource.get(), &length));
    std::string svg(bytes, length);
    const bool isLight = tone == MarkTone::light;
    // Where the panel has the other colour, the rim keeps the mark visible.
    const std::string paint =
        fmt::format("{}\" stroke=\"{}\" stroke-opacity=\"0.6\" stroke-width=\"1.6\" paint-order=\"stroke",
                    isLight ? lightColour : symbolicColour, isLight ? symbolicColour : lightColour);
    for (auto at = svg.find(symbolicColour); at != std::string::npos;
         at = svg.find(symbolicColour, at + paint.size())) {
        svg.replace(at, symbolicColour.size(), paint);
    }
    std::vector<TrayIcon> icons;
    for (const int size : sizes) {
        if (const auto image = draw(svg, size)) icons.push_back(argb(image.get(), size));
    }
    return icons;
}

}  // namespace parvela
