#include <ParvelaKit/PageZoom.h>

#include <algorithm>
#include <cmath>

namespace parvela {

namespace {

double stepped(double zoom, double step) {
    if (!std::isfinite(zoom)) return PageZoom::actualSize;
    return std::clamp(std::round((zoom + step) * 10) / 10, PageZoom::minimum, PageZoom::maximum);
}

}  // namespace

double PageZoom::larger(double zoom) {
    return stepped(zoom, 0.1);
}

double PageZoom::smaller(double zoom) {
    return stepped(zoom, -0.1);
}

}  // namespace parvela
