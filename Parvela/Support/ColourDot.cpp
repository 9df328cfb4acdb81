#include "Support/ColourDot.h"

#include <ParvelaKit/GLibPtr.h>

#include <memory>
#include <numbers>

#include <gdk/gdk.h>

namespace parvela {

namespace {

constexpr int imageSize = 16;  // pixels, as the icons of menus
constexpr double radius = 5;
constexpr GdkRGBA neutral{0.6F, 0.6F, 0.6F, 1.0F};

GdkRGBA colourOf(const std::string& colorHex) {
    GdkRGBA colour;
    return colorHex.size() == 7 && colorHex.front() == '#' && gdk_rgba_parse(&colour, colorHex.c_str()) ? colour
                                                                                                        : neutral;
}

}  // namespace

std::string colourDot(const std::string& colorHex) {
    using Surface = GLibPtr<cairo_surface_t, cairo_surface_destroy>;
    using Context = GLibPtr<cairo_t, cairo_destroy>;
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, imageSize, imageSize));
    {
        const Context context(cairo_create(surface.get()));
        const GdkRGBA colour = colourOf(colorHex);
        gdk_cairo_set_source_rgba(context.get(), &colour);
        cairo_arc(context.get(), imageSize / 2.0, imageSize / 2.0, radius, 0, 2 * std::numbers::pi);
        cairo_fill(context.get());
    }
    std::string png;
    cairo_surface_write_to_png_stream(
        surface.get(),
        [](void* text, const unsigned char* bytes, unsigned int length) {
            static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), length);
            return CAIRO_STATUS_SUCCESS;
        },
        &png);
    return png;
}

}  // namespace parvela
